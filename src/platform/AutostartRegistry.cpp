#include "platform/AutostartRegistry.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace {

// Desktop-entry string escapes, plus "%%" for a literal percent sign in an Exec line.
QString escapeExec(const QString& value) {
  QString out;
  for (QChar c : value) {
    switch (c.unicode()) {
    case u'\\': out += u"\\\\"; break;
    case u'\n': out += u"\\n"; break;
    case u'\t': out += u"\\t"; break;
    case u'\r': out += u"\\r"; break;
    case u'%': out += u"%%"; break;
    default: out += c;
    }
  }
  return out;
}

QString unescapeExec(const QString& text) {
  QString out;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c == u'\\' && i + 1 < text.size()) {
      const QChar e = text[++i];
      out += e == u'n'   ? QChar(u'\n')
             : e == u't' ? QChar(u'\t')
             : e == u'r' ? QChar(u'\r')
             : e == u's' ? QChar(u' ')
                         : e;
    } else if (c == u'%' && i + 1 < text.size() && text[i + 1] == u'%') {
      out += c;
      ++i;
    } else {
      out += c;
    }
  }
  return out;
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
      return RegValue{RegValue::Type::Text, unescapeExec(line.mid(5)), 0};
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
                            .arg(name, escapeExec(value));
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
