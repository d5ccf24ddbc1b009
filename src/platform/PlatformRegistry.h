#pragma once

#include "platform/AutostartRegistry.h"
#include "platform/FileRegistry.h"
#include "platform/OracleClientRegistry.h"

// The settings store of this platform: the Run key goes to the desktop's autostart entries, the
// Oracle keys to the installed client, everything else to the file store. Only the local
// machine root exists; other roots read as absent and ignore writes.
class PlatformRegistry final : public RegistryBackend {
public:
  struct Folders {
    QString config;    // the file store
    QString autostart; // XDG autostart entries
  };

  PlatformRegistry(const Folders& folders, const QProcessEnvironment& env);

  // $DBSWEEP_CONFIG_DIR, else $XDG_CONFIG_HOME/dbsweep (~/.config/dbsweep); autostart in
  // $XDG_CONFIG_HOME/autostart.
  static Folders foldersFrom(const QProcessEnvironment& env);

  std::optional<RegValue> read(quint32 root, const QString& keyPath, const QString& name) override;
  void write(quint32 root, const QString& keyPath, const QString& name, const QString& value) override;
  void remove(quint32 root, const QString& keyPath, const QString& name) override;

private:
  RegistryBackend* backendFor(quint32 root, const QString& keyPath);

  FileRegistry m_files;
  AutostartRegistry m_autostart;
  OracleClientRegistry m_oracle;
};
