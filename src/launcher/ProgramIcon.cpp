#include "launcher/ProgramIcon.h"

#include <QDir>
#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

namespace {

// The first word of a desktop entry's Exec line, without quotes.
QString execProgram(const QString& exec) {
  const QString line = exec.trimmed();
  if (line.startsWith(u'"'))
    return line.section(u'"', 1, 1);
  return line.section(u' ', 0, 0);
}

// The Exec program and the Icon of a desktop entry file's main group; empty when either is missing.
std::pair<QString, QString> execAndIcon(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    return {};
  QString exec;
  QString icon;
  bool mainGroup = false;
  while (!file.atEnd()) {
    const QString line = QString::fromUtf8(file.readLine()).trimmed();
    if (line.startsWith(u'['))
      mainGroup = line == QLatin1String("[Desktop Entry]");
    else if (mainGroup && line.startsWith(QLatin1String("Exec=")))
      exec = execProgram(line.mid(5));
    else if (mainGroup && line.startsWith(QLatin1String("Icon=")))
      icon = line.mid(5).trimmed();
  }
  if (exec.isEmpty() || icon.isEmpty())
    return {};
  return {exec, icon};
}

// Icon names by program, from every desktop entry the desktop knows, read once: the user may
// change a path letter by letter and each change asks again.
const QHash<QString, QString>& desktopIcons() {
  static const QHash<QString, QString> icons = [] {
    QHash<QString, QString> found;
    for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
      for (const QFileInfo& file : QDir(folder).entryInfoList({QStringLiteral("*.desktop")}, QDir::Files)) {
        const auto [program, icon] = execAndIcon(file.filePath());
        if (program.isEmpty())
          continue;
        // Keyed by full path when the entry gives one, and by bare name either way; the first
        // entry found wins, as the menus list the user's own entries first.
        if (!found.contains(program))
          found.insert(program, icon);
        if (!found.contains(QFileInfo(program).fileName()))
          found.insert(QFileInfo(program).fileName(), icon);
      }
    }
    return found;
  }();
  return icons;
}

QIcon themeIcon(const QString& name) {
  if (QFileInfo(name).isAbsolute())
    return QFileInfo::exists(name) ? QIcon(name) : QIcon();
  QIcon icon = QIcon::fromTheme(name);
  if (icon.isNull()) {
    for (const QString& suffix : {QStringLiteral(".png"), QStringLiteral(".svg"), QStringLiteral(".xpm")}) {
      const QString pixmap = QStringLiteral("/usr/share/pixmaps/") + name + suffix;
      if (QFileInfo::exists(pixmap))
        return QIcon(pixmap);
    }
  }
  return icon;
}

} // namespace

QIcon ProgramIcon(const QString& program) {
  if (program.trimmed().isEmpty())
    return {};
  const QString path = program.contains(u'/') ? program : QStandardPaths::findExecutable(program);
  const QFileInfo file(path);
  if (path.isEmpty() || !file.exists())
    return {};
  const QHash<QString, QString>& icons = desktopIcons();
  for (const QString& key : {file.absoluteFilePath(), file.fileName()}) {
    const auto it = icons.constFind(key);
    if (it == icons.constEnd())
      continue;
    const QIcon icon = themeIcon(*it);
    if (!icon.isNull())
      return icon;
  }
  return QFileIconProvider().icon(file);
}
