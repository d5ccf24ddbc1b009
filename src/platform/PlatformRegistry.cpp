#include "platform/PlatformRegistry.h"

#include <QDir>

PlatformRegistry::PlatformRegistry(const Folders& folders, const QProcessEnvironment& env)
    : m_files(folders.config), m_autostart(folders.autostart), m_oracle(env) {}

PlatformRegistry::Folders PlatformRegistry::foldersFrom(const QProcessEnvironment& env) {
  QString configHome = env.value(QStringLiteral("XDG_CONFIG_HOME"));
  if (configHome.isEmpty())
    configHome = env.value(QStringLiteral("HOME"), QDir::homePath()) + QStringLiteral("/.config");
  QString config = env.value(QStringLiteral("DBSWEEP_CONFIG_DIR"));
  if (config.isEmpty())
    config = configHome + QStringLiteral("/dbsweep");
  return {config, configHome + QStringLiteral("/autostart")};
}

RegistryBackend* PlatformRegistry::backendFor(quint32 root, const QString& keyPath) {
  if (root != HKeyLocalMachine)
    return nullptr;
  if (keyPath.compare(u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", Qt::CaseInsensitive) == 0)
    return &m_autostart;
  if (keyPath.startsWith(u"SOFTWARE\\ORACLE\\", Qt::CaseInsensitive) ||
      keyPath.compare(u"SOFTWARE\\ORACLE", Qt::CaseInsensitive) == 0)
    return &m_oracle;
  return &m_files;
}

std::optional<RegValue> PlatformRegistry::read(quint32 root, const QString& keyPath, const QString& name) {
  auto* b = backendFor(root, keyPath);
  return b ? b->read(root, keyPath, name) : std::nullopt;
}

void PlatformRegistry::write(quint32 root, const QString& keyPath, const QString& name, const QString& value) {
  if (auto* b = backendFor(root, keyPath))
    b->write(root, keyPath, name, value);
}

void PlatformRegistry::remove(quint32 root, const QString& keyPath, const QString& name) {
  if (auto* b = backendFor(root, keyPath))
    b->remove(root, keyPath, name);
}
