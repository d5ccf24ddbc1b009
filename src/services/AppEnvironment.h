#pragma once

#include "db/DbEnvironment.h"

#include <QString>

// Where the program finds things outside itself. main() fills it from the process; a test
// points every folder into a temporary one.
// The program's folder (db.programFolder) holds the companion program and the name-master
// files; the settings folder (db.settingsFolder) holds name-master files too, because an
// installed copy cannot write to its own folder.
struct AppEnvironment final {
  // $TNS_ADMIN: the first tnsnames.ora looked at.
  QString tnsAdmin;
  DbEnvironment db;
};
