#pragma once

#include <QString>

#include <initializer_list>
#include <vector>

// One token of Oracle SQL. Words keep their spelling (upper() folds them, as Oracle folds
// unquoted names); strings hold their value with '' unescaped; "(+)" is one symbol whatever the
// blanks inside it.
struct SqlToken final {
  enum class Kind { Word, Quoted, String, Number, Symbol, Bind, End };

  Kind kind = Kind::End;
  QString text;
  int pos = 0;    // offset in the statement text
  int length = 0; // length in the statement text
  int line = 1;

  QString upper() const { return kind == Kind::Word ? text.toUpper() : text; }
  // A word (any case) or a symbol equal to s.
  bool is(QStringView s) const {
    return (kind == Kind::Word && QStringView(text).compare(s, Qt::CaseInsensitive) == 0) ||
           (kind == Kind::Symbol && QStringView(text) == s);
  }
  bool isOneOf(std::initializer_list<QStringView> words) const {
    for (QStringView w : words)
      if (is(w))
        return true;
    return false;
  }
  // A name: a word or a double-quoted identifier.
  bool isName() const { return kind == Kind::Word || kind == Kind::Quoted; }
  // The name as Oracle stores it: unquoted words upper case, quoted ones as written.
  QString name() const { return kind == Kind::Word ? text.toUpper() : text; }
};

// Splits a statement into tokens, skipping blanks and comments; the list always ends with an
// End token. Raises OraError for an unterminated string (ORA-01756) or quoted name (ORA-01740)
// and for a character SQL cannot hold (ORA-00911).
std::vector<SqlToken> tokenizeSql(const QString& sql);

// Whether tokens [begin, end) hold a word or symbol equal to s.
bool containsToken(const std::vector<SqlToken>& tokens, size_t begin, size_t end, QStringView s);
// end, moved back before any End tokens and clamped to the list: where a rewrite's input stops.
size_t withoutEndTokens(const std::vector<SqlToken>& tokens, size_t begin, size_t end);
