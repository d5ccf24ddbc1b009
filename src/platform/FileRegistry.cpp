#include "platform/FileRegistry.h"

#include "platform/RegistryFile.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>

namespace {

constexpr auto OwnerOnly = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto OwnerOnlyFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

// Creates every missing folder on the way to path, each readable by the owner only.
bool makeFolders(const QString& path) {
  QDir dir(path);
  if (dir.exists())
    return true;
  if (!makeFolders(QFileInfo(dir.absolutePath()).path()))
    return false;
  return QDir().mkdir(dir.absolutePath(), OwnerOnlyFolder) || dir.exists();
}

} // namespace

FileRegistry::FileRegistry(QString folder, int lockWaitMs) : m_folder(std::move(folder)), m_lockWaitMs(lockWaitMs) {}

std::optional<QString> FileRegistry::readText(const QString& path) const {
  QFile f(path);
  if (!f.exists())
    return std::nullopt;
  if (!f.open(QIODevice::ReadOnly))
    throw RegistryError::of(f, m_folder);
  const QByteArray bytes = f.readAll();
  if (f.error() != QFileDevice::NoError)
    throw RegistryError::of(f, m_folder);
  return QString::fromUtf8(bytes);
}

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
  const QString folder = QFileInfo(path).path();
  if (!makeFolders(folder))
    throw RegistryError{QStringLiteral("cannot create the folder %1").arg(folder), m_folder};

  // Another process may be changing the same file: the lock makes read-modify-write one step.
  QLockFile lock(path + QStringLiteral(".lock"));
  lock.setStaleLockTime(30000);
  if (!lock.tryLock(m_lockWaitMs))
    throw RegistryError{lock.error() == QLockFile::LockFailedError
                            ? QStringLiteral("the file %1 stays locked by another program").arg(path)
                            : QStringLiteral("cannot create the lock file of %1").arg(path),
                        m_folder};

  RegistryFile file = RegistryFile::parse(readText(path).value_or(QString()));
  if (value)
    file.set(name, *value);
  else if (!file.remove(name))
    return;

  QSaveFile out(path);
  if (!out.open(QIODevice::WriteOnly))
    throw RegistryError::of(out, m_folder);
  out.setPermissions(OwnerOnly);
  if (out.write(file.serialize(keyPath).toUtf8()) < 0 || !out.commit())
    throw RegistryError::of(out, m_folder);
}
