#include "platform/FileRegistry.h"

#include "platform/RegistryFile.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>

namespace {

constexpr auto OwnerOnly = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto OwnerOnlyFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
constexpr int LockWaitMs = 10000;

std::optional<QString> readText(const QString& path) {
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly))
    return std::nullopt;
  return QString::fromUtf8(f.readAll());
}

[[noreturn]] void fail(const QFileDevice& f) { throw RegistryError{static_cast<int>(f.error()), f.errorString()}; }

// Creates every missing folder on the way to path, each readable by the owner only.
void makeFolders(const QString& path) {
  QDir dir(path);
  if (dir.exists())
    return;
  makeFolders(QFileInfo(dir.absolutePath()).path());
  if (!QDir().mkdir(dir.absolutePath(), OwnerOnlyFolder) && !dir.exists())
    throw RegistryError{static_cast<int>(QFileDevice::WriteError),
                        QStringLiteral("Cannot create the folder %1").arg(path)};
}

} // namespace

FileRegistry::FileRegistry(QString folder) : m_folder(std::move(folder)) {}

QString FileRegistry::fileFor(const QString& keyPath) const {
  const QStringList parts = keyPath.split(u'\\');
  for (const QString& p : parts)
    if (p.isEmpty() || p == u"." || p == u".." || p.contains(u'/'))
      return {};
  return m_folder + u'/' + parts.join(u'/') + QStringLiteral(".ini");
}

std::optional<RegValue> FileRegistry::read(quint32 root, const QString& keyPath, const QString& name) {
  const QString path = fileFor(keyPath);
  if (root != HKeyLocalMachine || path.isEmpty())
    return std::nullopt;
  const auto text = readText(path);
  if (!text)
    return std::nullopt;
  const RegistryFile file = RegistryFile::parse(*text);
  const auto* entry = file.find(name);
  if (!entry)
    return std::nullopt;
  return entry->value;
}

void FileRegistry::write(quint32 root, const QString& keyPath, const QString& name, const QString& value) {
  if (root == HKeyLocalMachine)
    change(keyPath, name, value);
}

void FileRegistry::remove(quint32 root, const QString& keyPath, const QString& name) {
  if (root == HKeyLocalMachine)
    change(keyPath, name, std::nullopt);
}

void FileRegistry::change(const QString& keyPath, const QString& name, const std::optional<QString>& value) {
  const QString path = fileFor(keyPath);
  if (path.isEmpty())
    return;
  if (!value && !QFile::exists(path))
    return;
  makeFolders(QFileInfo(path).path());

  // Another process may be changing the same file: the lock makes read-modify-write one step.
  QLockFile lock(path + QStringLiteral(".lock"));
  lock.setStaleLockTime(30000);
  if (!lock.tryLock(LockWaitMs))
    throw RegistryError{static_cast<int>(lock.error()),
                        QStringLiteral("The settings file %1 stays locked by another program").arg(path)};

  RegistryFile file = RegistryFile::parse(readText(path).value_or(QString()));
  if (value)
    file.set(name, *value);
  else if (!file.remove(name))
    return;

  QSaveFile out(path);
  if (!out.open(QIODevice::WriteOnly))
    fail(out);
  out.setPermissions(OwnerOnly);
  if (out.write(file.serialize(keyPath).toUtf8()) < 0)
    fail(out);
  if (!out.commit())
    fail(out);
}
