#pragma once

#include <QProcessEnvironment>
#include <QString>

// Where the backends find their files: embedded instances live under
// <dataFolder>/instances/NAME; the Oracle client library is looked for in oracleClientFolder,
// programFolder, the system's search and <oracleHome>/lib.
struct DbEnvironment final {
  QString dataFolder;
  // The files local:demo is built from; empty means the "demo" folder in programFolder.
  QString demoFolder = {};
  QString oracleClientFolder = {};
  QString oracleHome = {};
  QString loaderSearch = {};
  // Rows an Oracle query fetches per round trip, at most.
  int fetchRows = 500;
  // The executable's folder, which is read but never written.
  QString programFolder = {};
  // The settings folder: local:demo's name-master files are put there when missing.
  QString settingsFolder = {};

  // $DBSWEEP_DATA_DIR, else $XDG_DATA_HOME/dbsweep (~/.local/share/dbsweep); $DBSWEEP_DEMO_DIR;
  // $DBSWEEP_ORACLE_CLIENT, $ORACLE_HOME, $LD_LIBRARY_PATH; $DBSWEEP_FETCH_ROWS (1 to 100000).
  // The process environment does not tell the program's and settings folders: the caller
  // fills them in.
  static DbEnvironment from(const QProcessEnvironment& env);
};
