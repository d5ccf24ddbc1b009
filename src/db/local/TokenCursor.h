#pragma once

#include "db/OraError.h"
#include "db/local/SqlLexer.h"

// Walks the tokens of one statement for the statement parsers; running into something
// unexpected is the syntax error Oracle would give for it.
class TokenCursor final {
public:
  explicit TokenCursor(const std::vector<SqlToken>& tokens, size_t pos = 0) : m_t(tokens), m_pos(pos) {}

  const SqlToken& peek(size_t ahead = 0) const { return m_pos + ahead < m_t.size() ? m_t[m_pos + ahead] : m_t.back(); }
  const SqlToken& next() { return m_t[m_pos < m_t.size() - 1 ? m_pos++ : m_pos]; }
  bool atEnd() const { return peek().kind == SqlToken::Kind::End; }
  size_t pos() const { return m_pos; }
  void seek(size_t pos) { m_pos = pos; }
  const std::vector<SqlToken>& tokens() const { return m_t; }

  bool accept(QStringView s) {
    if (!peek().is(s))
      return false;
    ++m_pos;
    return true;
  }
  void expect(QStringView s, int error = 933) {
    if (!accept(s))
      fail(error);
  }
  QString name(int error = 903) {
    if (!peek().isName())
      fail(error);
    return next().name();
  }
  // [owner.]name; owner is "" when not written.
  std::pair<QString, QString> qualifiedName(int error = 903) {
    QString first = name(error);
    if (accept(u"."))
      return {first, name(error)};
    return {QString(), first};
  }
  // Skips a balanced parenthesised group starting at the current "(".
  void skipGroup() {
    int depth = 0;
    do {
      if (atEnd())
        fail(907);
      if (peek().is(u"("))
        ++depth;
      else if (peek().is(u")"))
        --depth;
      ++m_pos;
    } while (depth > 0);
  }
  // The source text of tokens [from, to) in sql.
  QString source(const QString& sql, size_t from, size_t to) const {
    if (from >= to)
      return {};
    const int start = m_t[from].pos;
    const int end = m_t[to - 1].pos + m_t[to - 1].length;
    return sql.mid(start, end - start);
  }

  [[noreturn]] static void fail(int error) { throw OraError(error, textOf(error)); }
  static QString textOf(int error);

private:
  const std::vector<SqlToken>& m_t;
  size_t m_pos;
};
