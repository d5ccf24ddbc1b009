#pragma once

#include "platform/RegistryBackend.h"

#include <QProcessEnvironment>

// The Oracle client's installation, seen read-only through the keys an installed client would
// have: ALL_HOMES\LAST_HOME is "0" and HOME0\ORACLE_HOME is the client folder, when ORACLE_HOME
// is set or an Instant Client folder (one holding libclntsh.so*) is on the library path. With
// no client every value is absent. Writes and deletes change nothing, as on a key the user may
// not modify.
class OracleClientRegistry final : public RegistryBackend {
public:
  explicit OracleClientRegistry(const QProcessEnvironment& env);

  std::optional<RegValue> read(quint32 root, const QString& keyPath, const QString& name) override;
  void write(quint32, const QString&, const QString&, const QString&) override {}
  void remove(quint32, const QString&, const QString&) override {}

  // The client folder, or "" when there is none.
  static QString findClientHome(const QProcessEnvironment& env);

private:
  QString m_home;
};
