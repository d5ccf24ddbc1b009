#pragma once

#include "db/OraDatabase.h"
#include "db/local/LocalEngine.h"

#include <QTemporaryDir>

// A throw-away embedded instance for a benchmark; every user's password is "pw".
struct BenchInstance {
  QTemporaryDir dir;
  QString folder = dir.path() + QStringLiteral("/bench");

  BenchInstance() { LocalEngine::createInstance(folder, QStringLiteral("pw")); }
  OraDatabase logOn(const QString& user) const {
    return OraDatabase(LocalEngine::connect(folder, user, QStringLiteral("pw")));
  }
};
