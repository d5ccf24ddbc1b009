#include "sqlconsole/ConsoleOutput.h"

#include <QFileInfo>

void ConsoleOutput::print(const QString& text) {
  if (m_terminal)
    m_out << text;
  if (m_spool.isOpen())
    m_spool.write(text.toUtf8());
}

void ConsoleOutput::error(const QString& line) {
  // What went to standard output so far comes first on a terminal that shows both.
  m_out.flush();
  m_err << line << '\n';
  m_err.flush();
  if (m_spool.isOpen())
    m_spool.write((line + u'\n').toUtf8());
}

void ConsoleOutput::spoolOnly(const QString& text) {
  if (m_spool.isOpen())
    m_spool.write(text.toUtf8());
}

void ConsoleOutput::flush() {
  m_out.flush();
  m_err.flush();
  if (m_spool.isOpen())
    m_spool.flush();
}

QString ConsoleOutput::spool(const QString& name, bool append) {
  spoolOff();
  m_spool.setFileName(QFileInfo(name).suffix().isEmpty() ? name + QStringLiteral(".lst") : name);
  if (m_spool.open(QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate)))
    return {};
  return QStringLiteral("SP2-0606: Cannot create SPOOL file \"%1\"").arg(m_spool.fileName());
}

bool ConsoleOutput::spoolOff() {
  if (!m_spool.isOpen())
    return false;
  m_spool.close();
  return true;
}
