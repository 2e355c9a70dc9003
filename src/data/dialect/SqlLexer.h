#pragma once

#include <QString>
#include <VXUILib/vxdata_export.h>
#include <vector>

namespace vx::dialect {

// One piece of an SQL text. Joining the texts of all tokens gives the text back unchanged, so
// a rewrite edits only the tokens it means to and leaves literals and comments alone.
struct VXDATA_EXPORT SqlToken {
    enum Kind { Space, Comment, Word, QuotedName, String, Number, DateLiteral, Symbol };
    Kind kind = Symbol;
    QString text;

    bool isSignificant() const { return kind != Space && kind != Comment; }
    bool isWord(QStringView word) const {
        return kind == Word && QStringView(text).compare(word, Qt::CaseInsensitive) == 0;
    }
    bool isSymbol(QStringView symbol) const { return kind == Symbol && text == symbol; }
    bool isName() const { return kind == Word || kind == QuotedName; }
    // The identifier without its brackets or quotes.
    QString name() const;
};

using SqlTokens = std::vector<SqlToken>;

// Leaves nothing of the token in the joined text.
inline void eraseToken(SqlToken& token) {
    token.kind = SqlToken::Space;
    token.text.clear();
}

VXDATA_EXPORT SqlTokens tokenize(const QString& sql);
QString joinTokens(const SqlTokens& tokens);

// Writes an identifier so that any engine reads it back as given.
QString quoteName(const QString& name);

} // namespace vx::dialect
