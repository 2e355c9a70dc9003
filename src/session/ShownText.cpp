#include "session/ShownText.h"

namespace vx {

namespace {

// Controls, the line and paragraph separators and the marks that change the direction of what
// follows (a name could otherwise display as something else than it is).
bool needsEscape(char32_t c) {
    return c < 0x20 || (c >= 0x7f && c <= 0x9f) || c == 0x061c || c == 0x200e || c == 0x200f ||
           (c >= 0x2028 && c <= 0x202e) || (c >= 0x2066 && c <= 0x2069) || c == 0xfeff;
}

QString escapeOf(char32_t c) {
    switch (c) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        break;
    }
    if (c <= 0xff)
        return QStringLiteral("\\x%1").arg(uint(c), 2, 16, QLatin1Char('0'));
    return QStringLiteral("\\u%1").arg(uint(c), 4, 16, QLatin1Char('0'));
}

} // namespace

QString shownText(const QString& value, qsizetype limit) {
    QString shown;
    shown.reserve(std::min(value.size(), limit) + 8);
    qsizetype characters = 0;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (characters >= limit)
            return shown + QChar(0x2026);
        const char32_t c = value.at(i).unicode();
        if (value.at(i).isHighSurrogate() && i + 1 < value.size() &&
            value.at(i + 1).isLowSurrogate()) {
            shown += value.mid(i, 2); // nothing above the basic plane needs an escape
            ++i;
        } else if (value.at(i).isSurrogate()) {
            shown += escapeOf(c); // half a pair is no character
        } else if (needsEscape(c)) {
            shown += escapeOf(c);
        } else {
            shown += value.at(i);
        }
        ++characters;
    }
    return shown;
}

} // namespace vx
