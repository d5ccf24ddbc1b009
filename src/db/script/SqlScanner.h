#pragma once

#include <QList>
#include <QString>

// Follows the lexical state of SQL fed one line at a time (string literals, q'[...]' literals,
// quoted names, comments), so that a ';' or '/' that belongs to the statement can be told from
// the same character inside quotes or comments.
class SqlScanner final {
public:
  struct Line {
    // The line with every comment character turned into a space, so positions stay where the
    // user typed them; optimizer hints (/*+ ... */) are kept as written.
    QString text;
    // Per character: true where it is SQL itself, outside literals, quoted names and comments.
    QList<bool> code;
  };

  Line feed(QStringView line);
  // False while a literal, quoted name or block comment is still open at the end of a line.
  bool inCode() const { return m_state == State::Code; }
  void reset() { m_state = State::Code; }

private:
  enum class State { Code, Quote, AltQuote, QuotedName, Comment, Hint };

  State m_state = State::Code;
  QChar m_altClose;
};
