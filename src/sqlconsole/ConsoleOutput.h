#pragma once

#include <QFile>
#include <QTextStream>

// Where the console writes: the terminal's standard output and error, and the spool file while
// SPOOL is on, which gets both, in the order they came, as SQL*Plus's spool file does.
class ConsoleOutput final {
public:
  ConsoleOutput(QTextStream& out, QTextStream& err) : m_out(out), m_err(err) {}

  void print(const QString& text);
  void printLine(const QString& line) { print(line + u'\n'); }
  void error(const QString& line);
  // What the terminal shows already, such as typed lines, for the spool file.
  void spoolOnly(const QString& text);
  void flush();

  // SET TERMOUT OFF: output goes to the spool file only; errors are still shown.
  void setTerminal(bool on) { m_terminal = on; }

  // SPOOL name [APPEND]: name.lst when name has no extension. Returns an error text.
  QString spool(const QString& name, bool append);
  // SPOOL OFF; false when nothing was spooled.
  bool spoolOff();
  // The file being spooled to, or empty.
  QString spoolFile() const { return m_spool.isOpen() ? m_spool.fileName() : QString(); }

private:
  QTextStream& m_out;
  QTextStream& m_err;
  QFile m_spool;
  bool m_terminal = true;
};
