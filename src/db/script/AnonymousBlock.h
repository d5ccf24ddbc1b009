#pragma once

#include "db/script/ScriptItem.h"

#include <QList>

// An anonymous block ([DECLARE] BEGIN ... END;) whose body is nothing but SQL statements: whoever
// runs the script runs those one by one. Anything PL/SQL proper (declarations, assignments, IF,
// loops, nested blocks, exception handlers) is refused before any of it runs, as a compile error
// would.
class AnonymousBlock final {
public:
  // text and code come from SqlScanner; text starts on script line firstLine.
  AnonymousBlock(const QString& text, const QList<bool>& code, int firstLine);

  // The block's statements followed by a BlockEnd, or a single Failure carrying the error.
  QList<ScriptItem> items() const;

private:
  qsizetype skipSpace(qsizetype from) const;
  // The next ';' that is SQL itself (not inside a literal), or the end of the text.
  qsizetype nextSemicolon(qsizetype from) const;
  int lineAt(qsizetype offset) const;
  QList<ScriptItem> refuse(qsizetype offset, const QString& error) const;
  QList<ScriptItem> refuseSymbol(qsizetype offset) const;

  QString m_text;
  QList<bool> m_code;
  int m_firstLine;
  qsizetype m_start = 0;
};
