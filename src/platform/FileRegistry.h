#pragma once

#include "platform/RegistryBackend.h"

#include <QString>

// Ordinary settings: one INI-style file per key path under a configuration folder
// (SOFTWARE\JVK\DBSWEEP\Settings -> <folder>/SOFTWARE/JVK/DBSWEEP/Settings.ini). Every change is a
// read-modify-write under a lock file, saved through a temporary file and a rename, so two
// processes writing at once lose nothing and a reader never sees half a file. Files and folders
// are readable by their owner only: the store holds the last logon. A change waits up to
// lockWaitMs for another process's lock before it fails.
class FileRegistry final : public RegistryBackend {
public:
  explicit FileRegistry(QString folder, int lockWaitMs = 10000);

  std::optional<RegValue> read(quint32 root, const QString& keyPath, const QString& name) override;
  void write(quint32 root, const QString& keyPath, const QString& name, const QString& value) override;
  void remove(quint32 root, const QString& keyPath, const QString& name) override;

  // The file holding a key path, or "" when the path cannot name a file (empty or ".." parts).
  QString fileFor(const QString& keyPath) const;

private:
  // The text of path, or nothing when there is no such file. A file that is there but cannot be
  // read is a failure: taking it for empty would lose its values at the next change.
  std::optional<QString> readText(const QString& path) const;
  void change(const QString& keyPath, const QString& name, const std::optional<QString>& value);

  QString m_folder;
  int m_lockWaitMs;
};
