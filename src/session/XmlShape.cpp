#include "session/XmlShape.h"

#include "data/Error.h"

#include <QXmlStreamReader>

namespace vx {
namespace {

void walk(QXmlStreamReader& reader, const QString& name) {
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > MaxXmlDepth)
                throw Error(ErrorNumber::Unspecified,
                            QStringLiteral("The form definition \"%1\" nests elements more than "
                                           "%2 levels deep (line %3).")
                                .arg(name)
                                .arg(MaxXmlDepth)
                                .arg(reader.lineNumber()));
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::DTD:
            if (!reader.entityDeclarations().isEmpty())
                throw Error(ErrorNumber::Unspecified,
                            QStringLiteral("The form definition \"%1\" declares entities of its "
                                           "own, which form definitions do not use.")
                                .arg(name));
            break;
        default:
            break;
        }
    }
    // Not well-formed documents are left to the document builder, which describes them.
}

} // namespace

void requireSafeXmlShape(const QByteArray& bytes, const QString& name) {
    QXmlStreamReader reader(bytes);
    walk(reader, name);
}

void requireSafeXmlShape(const QString& text, const QString& name) {
    QXmlStreamReader reader(text);
    walk(reader, name);
}

} // namespace vx
