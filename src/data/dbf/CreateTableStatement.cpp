#include "data/dbf/CreateTableStatement.h"

#include "data/Error.h"

#include <QRegularExpression>
#include <QSet>

namespace vx::dbf {

namespace {

Error syntaxError(const QString& why, const QString& sql) {
    return Error(ErrorNumber::SyntaxError,
                 QStringLiteral("Syntax error in CREATE TABLE: %1 (%2)").arg(why, sql));
}

bool isName(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return pattern.match(text).hasMatch();
}

// Splits at the commas outside parentheses.
QStringList splitDefinitions(const QString& text) {
    QStringList parts;
    QString current;
    int depth = 0;
    for (const QChar c : text) {
        if (c == u'(')
            ++depth;
        else if (c == u')')
            --depth;
        if (c == u',' && depth == 0) {
            parts << current.trimmed();
            current.clear();
        } else {
            current += c;
        }
    }
    parts << current.trimmed();
    return parts;
}

FieldDescriptor parseColumn(const QString& definition, const QString& sql) {
    static const QRegularExpression pattern(QStringLiteral(
        R"(^([A-Za-z_][A-Za-z0-9_]*)\s+([A-Za-z]+)\s*(?:\(\s*(\d+)\s*(?:,\s*(\d+)\s*)?\))?$)"));
    const auto match = pattern.match(definition);
    if (!match.hasMatch())
        throw syntaxError(QStringLiteral("cannot read the column \"%1\"").arg(definition), sql);

    FieldDescriptor field;
    field.name = match.captured(1);
    if (field.name.size() > MaxFieldNameLength)
        throw syntaxError(QStringLiteral("the field name %1 is longer than %2 characters")
                              .arg(field.name)
                              .arg(MaxFieldNameLength),
                          sql);
    const QString type = match.captured(2).toUpper();
    const bool sized = !match.captured(3).isEmpty();
    const int size = match.captured(3).toInt();
    const bool withDecimals = !match.captured(4).isEmpty();
    const int decimals = match.captured(4).toInt();
    auto noSize = [&] {
        if (sized)
            throw syntaxError(QStringLiteral("type %1 of %2 takes no size").arg(type, field.name),
                              sql);
    };

    if (type == u"NUMERIC" || type == u"N") {
        field.type = 'N';
        field.length = sized ? size : DefaultNumericWidth;
        field.decimals = sized ? decimals : DefaultNumericDecimals;
        if (field.length < 1 || field.length > 20 ||
            (withDecimals && (field.decimals > field.length - 2 || field.decimals > 19)))
            throw syntaxError(
                QStringLiteral("field %1 has an invalid width or decimals").arg(field.name), sql);
    } else if (type == u"CHAR" || type == u"C") {
        field.type = 'C';
        if (!sized || withDecimals || size < 1 || size > 254)
            throw syntaxError(
                QStringLiteral("field %1 needs a width from 1 to 254").arg(field.name), sql);
        field.length = size;
    } else if (type == u"DATE" || type == u"D") {
        noSize();
        field.type = 'D';
        field.length = 8;
    } else if (type == u"MEMO" || type == u"M") {
        noSize();
        field.type = 'M';
        field.length = 4;
    } else if (type == u"BOOL" || type == u"LOGICAL" || type == u"L") {
        noSize();
        field.type = 'L';
        field.length = 1;
    } else {
        throw syntaxError(QStringLiteral("unknown type %1 for field %2").arg(type, field.name),
                          sql);
    }
    return field;
}

} // namespace

bool CreateTableStatement::looksLikeOne(const QString& sql) {
    static const QRegularExpression pattern(QStringLiteral(R"(^\s*CREATE\s+TABLE\b)"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern.match(sql).hasMatch();
}

CreateTableStatement CreateTableStatement::parse(const QString& sql) {
    static const QRegularExpression pattern(
        QStringLiteral(R"(^\s*CREATE\s+TABLE\s+([^\s(]+)\s*\((.*)\)\s*;?\s*$)"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const auto match = pattern.match(sql);
    if (!match.hasMatch())
        throw syntaxError(QStringLiteral("expected CREATE TABLE name(column type, ...)"), sql);

    CreateTableStatement statement;
    statement.table = match.captured(1);
    if (!isName(statement.table))
        throw syntaxError(QStringLiteral("invalid table name %1").arg(statement.table), sql);

    QList<FieldDescriptor> fields;
    QSet<QString> names;
    for (const QString& definition : splitDefinitions(match.captured(2))) {
        const FieldDescriptor field = parseColumn(definition, sql);
        if (names.contains(field.name.toLower()))
            throw syntaxError(QStringLiteral("field name %1 is duplicated").arg(field.name), sql);
        names.insert(field.name.toLower());
        fields << field;
    }
    if (fields.size() > 255)
        throw syntaxError(QStringLiteral("a table holds at most 255 fields"), sql);
    statement.layout = TableLayout(fields);
    if (statement.layout.recordLength() > 65500)
        throw syntaxError(QStringLiteral("the record is too long"), sql);
    return statement;
}

} // namespace vx::dbf
