#pragma once

#include "db/script/ScriptItem.h"
#include "db/script/SqlScanner.h"

#include <QList>

// Cuts a script into what SQL*Plus would do with it, one line at a time so that standard input
// can be run as it is typed. A statement ends with ';' at the end of a line or with a line
// holding only '/'; a '/' with no statement being typed runs the previous one again, as in
// SQL*Plus. Between statements, REMARK, PROMPT, SET, SPOOL, WHENEVER and EXIT/QUIT lines are
// SQL*Plus commands.
class ScriptReader final {
public:
  void addLine(QStringView line);
  // End of input.
  void finish();
  QList<ScriptItem> takeItems();

  // After EXIT or QUIT (or finish) the remaining input is not read.
  bool stopped() const { return m_stopped; }
  // True while a statement is being typed.
  bool inStatement() const { return !m_text.isEmpty() || !m_scanner.inCode(); }
  // The line of the statement being typed that the next input line will be, counted from 1.
  int nextStatementLine() const { return m_text.isEmpty() ? 1 : m_line - m_startLine + 2; }
  int lineNumber() const { return m_line; }

  static QList<ScriptItem> read(QStringView script);

private:
  bool runCommand(QStringView line);
  bool inPlsqlUnit();
  void clearStatement();
  // Ends the statement being typed; queues it when `run`, else only keeps it for a later '/'.
  void endStatement(bool run);
  QList<ScriptItem> itemsOfStatement() const;
  int lineAt(qsizetype offset) const;
  void queue(ScriptItem::Kind kind, const QString& text, int line);

  SqlScanner m_scanner;
  QString m_text;
  QList<bool> m_code;
  // The first words of the statement being typed, read up to m_wordsEnd of m_text; m_readTo is
  // how long m_text was at the last look, and reading goes on only when it stopped at that end.
  QStringList m_words;
  qsizetype m_wordsEnd = 0;
  qsizetype m_readTo = 0;
  int m_line = 0;
  int m_startLine = 0;
  QList<ScriptItem> m_items;
  QList<ScriptItem> m_previous;
  bool m_stopped = false;
};
