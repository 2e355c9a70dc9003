#include "data/SqlQuoting.h"

#include "data/Error.h"

namespace vx {

namespace {

// The name as the refusal shows it: controls as their code, at most 60 characters.
QString shownName(const QString& name) {
    QString shown;
    for (const QChar c : name.left(60)) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            shown += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            shown += c;
    }
    return name.size() > 60 ? shown + QChar(0x2026) : shown;
}

} // namespace

QString sqlTextLiteral(const QString& text) {
    if (text.contains(QChar(u'\0')))
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The text \"%1\" cannot be searched for: it holds a null "
                                   "character.")
                        .arg(shownName(text)));
    QString doubled = text;
    doubled.replace(u'\'', QStringLiteral("''"));
    return u'\'' + doubled + u'\'';
}

QString bracketedName(const QString& name) {
    for (const QChar c : name) {
        if (c == u']' || c == u'[' || c.unicode() < 0x20 || c.unicode() == 0x7f)
            throw Error(ErrorNumber::InvalidArgument,
                        QStringLiteral("The name \"%1\" cannot be used as a table or column "
                                       "name: it holds \"%2\".")
                            .arg(shownName(name), c.unicode() < 0x20 || c.unicode() == 0x7f
                                                      ? QStringLiteral("a control character")
                                                      : QString(c)));
    }
    return u'[' + name + u']';
}

} // namespace vx
