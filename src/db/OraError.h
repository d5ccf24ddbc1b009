#pragma once

#include <QString>

#include <exception>

// A database error as Oracle reports it: the number and the text, shown as
// "ORA-00942: table or view does not exist". Number 0 is a failure before any server was
// reached (no client library, say): its text is the whole message.
class OraError final : public std::exception {
public:
  OraError(int number, QString text) : m_number(number), m_text(std::move(text)), m_what(message().toUtf8()) {}

  int number() const { return m_number; }
  const QString& text() const { return m_text; }
  QString message() const {
    return m_number == 0 ? m_text : QStringLiteral("ORA-%1: %2").arg(m_number, 5, 10, QChar(u'0')).arg(m_text);
  }
  const char* what() const noexcept override { return m_what.constData(); }

private:
  int m_number;
  QString m_text;
  QByteArray m_what;
};
