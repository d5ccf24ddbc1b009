#include "platform/AutostartRegistry.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace {

bool escapedInQuotes(QChar c) { return c == u'"' || c == u'`' || c == u'$' || c == u'\\'; }

// The value is the program to start, and Exec= holds a command line: the program is quoted as one
// argument, so that a folder with a blank, a quote or a '$' in its name still starts. The line is
// then escaped as any desktop-entry string, which doubles the backslashes the quoting added.
QString execLine(const QString& program) {
  QString quoted = QStringLiteral("\"");
  for (QChar c : program) {
    if (escapedInQuotes(c))
      quoted += u'\\';
    quoted += c;
    if (c == u'%') // a field code's "%%" stands for one percent sign, quoted or not
      quoted += c;
  }
  quoted += u'"';
  QString line;
  for (QChar c : quoted) {
    switch (c.unicode()) {
    case u'\\': line += u"\\\\"; break;
    case u'\n': line += u"\\n"; break;
    case u'\t': line += u"\\t"; break;
    case u'\r': line += u"\\r"; break;
    default: line += c;
    }
  }
  return line;
}

// Undoes the desktop-entry string escapes. An escape the format does not define stays as it is:
// a hand-written "\"" is meant for the command-line quoting that comes next.
QString unescapeString(QStringView text) {
  QString out;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    const QChar e = c == u'\\' && i + 1 < text.size() ? text[i + 1] : QChar();
    const QChar plain = e == u'\\'  ? QChar(u'\\')
                        : e == u's' ? QChar(u' ')
                        : e == u'n' ? QChar(u'\n')
                        : e == u't' ? QChar(u'\t')
                        : e == u'r' ? QChar(u'\r')
                                    : QChar();
    if (plain.isNull()) {
      out += c;
    } else {
      out += plain;
      ++i;
    }
  }
  return out;
}

// The program of a command line with its quotes undone, followed by anything written after it.
// A line without quotes (entries from before the program was quoted) reads as it stands.
QString unquoteExec(QStringView line) {
  QString out;
  qsizetype rest = 0;
  if (line.startsWith(u'"')) {
    qsizetype i = 1;
    for (; i < line.size() && line[i] != u'"'; ++i) {
      if (line[i] == u'\\' && i + 1 < line.size() && escapedInQuotes(line[i + 1]))
        ++i;
      out += line[i];
    }
    rest = qMin(i + 1, line.size());
  }
  out += line.sliced(rest);
  return out.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

bool validName(const QString& name) { return !name.isEmpty() && !name.contains(u'/') && name != u"." && name != u".."; }

} // namespace

AutostartRegistry::AutostartRegistry(QString folder) : m_folder(std::move(folder)) {}

QString AutostartRegistry::existingFile(const QString& name) const {
  const QString wanted = name + QStringLiteral(".desktop");
  const auto files = QDir(m_folder).entryList({QStringLiteral("*.desktop")}, QDir::Files);
  for (const QString& f : files)
    if (f.compare(wanted, Qt::CaseInsensitive) == 0)
      return m_folder + u'/' + f;
  return {};
}

std::optional<RegValue> AutostartRegistry::read(quint32, const QString&, const QString& name) {
  if (!validName(name))
    return std::nullopt;
  const QString path = existingFile(name);
  if (path.isEmpty())
    return std::nullopt;
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly))
    throw RegistryError::of(f, m_folder);
  bool inEntry = false;
  const auto lines = QString::fromUtf8(f.readAll()).split(u'\n');
  for (QString line : lines) {
    line = line.trimmed();
    if (line.startsWith(u'['))
      inEntry = line == u"[Desktop Entry]";
    else if (inEntry && line.startsWith(u"Exec="))
      return RegValue{RegValue::Type::Text, unquoteExec(unescapeString(QStringView(line).sliced(5))), 0};
  }
  return std::nullopt;
}

void AutostartRegistry::write(quint32, const QString&, const QString& name, const QString& value) {
  if (!validName(name))
    return;
  QString path = existingFile(name);
  if (path.isEmpty()) {
    if (!QDir().mkpath(m_folder))
      throw RegistryError{QStringLiteral("cannot create the folder %1").arg(m_folder), m_folder};
    path = m_folder + u'/' + name + QStringLiteral(".desktop");
  }
  const QString entry = QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n"
                                       "X-GNOME-Autostart-enabled=true\n")
                            .arg(name, execLine(value));
  QSaveFile out(path);
  if (!out.open(QIODevice::WriteOnly) || out.write(entry.toUtf8()) < 0 || !out.commit())
    throw RegistryError::of(out, m_folder);
}

void AutostartRegistry::remove(quint32, const QString&, const QString& name) {
  if (!validName(name))
    return;
  QFile f(existingFile(name));
  if (!f.fileName().isEmpty() && !f.remove())
    throw RegistryError::of(f, m_folder);
}
