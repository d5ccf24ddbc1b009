#pragma once

#include "platform/RegistryBackend.h"

// The start-up entries of the desktop session: value NAME is the XDG autostart file NAME.desktop,
// whose Exec= line holds the value, the program to start, quoted. Deleting the value removes the
// file.
class AutostartRegistry final : public RegistryBackend {
public:
  explicit AutostartRegistry(QString folder);

  std::optional<RegValue> read(quint32 root, const QString& keyPath, const QString& name) override;
  void write(quint32 root, const QString& keyPath, const QString& name, const QString& value) override;
  void remove(quint32 root, const QString& keyPath, const QString& name) override;

private:
  QString existingFile(const QString& name) const;

  QString m_folder;
};
