#pragma once

#include <QProcessEnvironment>
#include <QString>

// Where the backends find their files: embedded instances live under
// <dataFolder>/instances/NAME.
struct DbEnvironment final {
  QString dataFolder;
  // The files local:demo is built from; empty means the "demo" folder next to the program.
  QString demoFolder = {};

  // $DBSWEEP_DATA_DIR, else $XDG_DATA_HOME/dbsweep (~/.local/share/dbsweep); $DBSWEEP_DEMO_DIR.
  static DbEnvironment from(const QProcessEnvironment& env);
};
