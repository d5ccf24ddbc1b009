#include "app/HostList.h"

#include "db/local/DemoInstance.h"
#include "db/local/LocalEngine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

const QString TnsFile = QStringLiteral("tnsnames.ora");

// Only spaces count as padding around an alias, as only a leading space marks a line as a
// continuation; a tab stays part of the text.
QString trimSpaces(const QString& text) {
  qsizetype first = 0;
  qsizetype last = text.size();
  while (first < last && text.at(first) == u' ')
    ++first;
  while (last > first && text.at(last - 1) == u' ')
    --last;
  return text.mid(first, last - first);
}

QString aliasOf(const QString& line) {
  const qsizetype equals = line.indexOf(QStringLiteral(" ="));
  if (equals < 0)
    return QString();
  QString alias = trimSpaces(line.left(equals));
  const qsizetype dot = alias.indexOf(u'.');
  if (dot >= 0)
    alias = trimSpaces(alias.left(dot));
  return alias;
}

QStringList localInstanceNames(const QString& dataFolder) {
  QStringList names;
  if (!dataFolder.isEmpty()) {
    // Hidden folders are left out: the demo is built in a hidden sibling and renamed into place.
    const QDir instances(dataFolder + QStringLiteral("/instances"));
    for (const QString& name : instances.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
      if (LocalEngine::instanceExists(instances.filePath(name)))
        names.append(name);
    }
  }
  if (!names.contains(DemoInstance::Name))
    names.append(DemoInstance::Name);
  std::sort(names.begin(), names.end());
  return names;
}

} // namespace

QStringList ReadTnsNames(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return {};
  QStringList aliases;
  QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
  // The text after the last LF is a line only when it holds something.
  if (lines.last().isEmpty())
    lines.removeLast();
  for (QString line : lines) {
    if (line.endsWith(u'\r'))
      line.chop(1);
    if (line.isEmpty() || line.startsWith(u' ') || line.startsWith(u'#'))
      continue;
    aliases.append(aliasOf(line));
  }
  return aliases;
}

QStringList LoadHostList(const QString& oracleHome, const QString& tnsAdmin, const QString& dataFolder) {
  QStringList hosts;
  QString firstFile;
  if (!tnsAdmin.isEmpty()) {
    const QFileInfo file(tnsAdmin + u'/' + TnsFile);
    if (file.isFile()) {
      firstFile = file.canonicalFilePath();
      hosts += ReadTnsNames(file.filePath());
    }
  }
  if (QDir::isAbsolutePath(oracleHome) && QFileInfo(oracleHome).isDir()) {
    const QFileInfo file(oracleHome + QStringLiteral("/network/admin/") + TnsFile);
    // TNS_ADMIN often points into the home itself; that is one file, not two.
    if (file.isFile() && file.canonicalFilePath() != firstFile)
      hosts += ReadTnsNames(file.filePath());
  }
  for (const QString& name : localInstanceNames(dataFolder))
    hosts.append(QStringLiteral("local:") + name);
  return hosts;
}
