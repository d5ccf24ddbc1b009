#pragma once

#include "db/DbEnvironment.h"

#include <QString>

// Where the program finds things outside itself. main() fills it from the process; a test
// points every folder into a temporary one.
struct AppEnvironment final {
  // The executable's folder: the companion program and the name-master files live here.
  QString programFolder;
  // The settings store's folder; name-master files are looked for here too, because an
  // installed copy cannot write to its own folder.
  QString settingsFolder;
  // $TNS_ADMIN: the first tnsnames.ora looked at.
  QString tnsAdmin;
  DbEnvironment db;
};
