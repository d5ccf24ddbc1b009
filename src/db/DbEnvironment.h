#pragma once

#include <QProcessEnvironment>
#include <QString>

// Where the backends find their files: embedded instances live under
// <dataFolder>/instances/NAME.
struct DbEnvironment final {
  QString dataFolder;

  // $DBSWEEP_DATA_DIR, else $XDG_DATA_HOME/dbsweep (~/.local/share/dbsweep).
  static DbEnvironment from(const QProcessEnvironment& env);
};
