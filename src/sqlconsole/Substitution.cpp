#include "sqlconsole/Substitution.h"

namespace {

bool isNameChar(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'$' || c == u'#'; }

QString shown(const QString& name, const QString& value) {
  return QStringLiteral("DEFINE %1 = \"%2\" (CHAR)").arg(name.leftJustified(15), value);
}

} // namespace

QString Substitution::substitute(QStringView line, QChar prefix, const Ask& ask) {
  if (prefix.isNull())
    return line.toString();
  QString result;
  qsizetype i = 0;
  while (i < line.size()) {
    const qsizetype at = line.indexOf(prefix, i);
    if (at < 0)
      break;
    result += line.mid(i, at - i);
    const bool keep = at + 1 < line.size() && line[at + 1] == prefix;
    qsizetype end = at + (keep ? 2 : 1);
    const qsizetype nameStart = end;
    while (end < line.size() && isNameChar(line[end]))
      ++end;
    if (end == nameStart) {
      result += line.mid(at, end - at);
      i = end;
      continue;
    }
    const QString name = line.mid(nameStart, end - nameStart).toString();
    if (end < line.size() && line[end] == u'.')
      ++end;
    std::optional<QString> value = m_values.value(name.toUpper());
    if (!m_values.contains(name.toUpper())) {
      value = ask(name);
      if (keep)
        m_values.insert(name.toUpper(), value.value_or(QString()));
    }
    result += value.value_or(QString());
    i = end;
  }
  result += line.mid(i);
  return result;
}

QString Substitution::define(QStringView arguments, QString& error) {
  arguments = arguments.trimmed();
  if (arguments.isEmpty()) {
    QStringList lines;
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
      lines += shown(it.key(), it.value());
    return lines.join(u'\n');
  }
  const qsizetype equals = arguments.indexOf(u'=');
  const QString name = arguments.left(equals).trimmed().toString().toUpper();
  if (equals < 0) {
    if (!m_values.contains(name))
      error = QStringLiteral("SP2-0135: symbol %1 is UNDEFINED").arg(arguments.toString());
    return error.isEmpty() ? shown(name, m_values.value(name)) : QString();
  }
  QStringView value = arguments.mid(equals + 1).trimmed();
  if (value.size() >= 2 && (value.front() == u'\'' || value.front() == u'"') && value.back() == value.front())
    value = value.mid(1, value.size() - 2);
  m_values.insert(name, value.toString());
  return {};
}

void Substitution::undefine(const QStringList& names) {
  for (const QString& name : names)
    m_values.remove(name.toUpper());
}
