#pragma once

#include "browser/NameMasters.h"
#include "browser/TextTable.h"
#include "common/CommandArgs.h"
#include "jobs/clsTimer.h"
#include "settings/clsREG.h"

#include <QString>

#include <atomic>
#include <memory>

class OraSession;
class OraDatabase;

// Everything the windows share, in one object that main() creates and hands to each window by
// reference. A test builds a fresh one.
struct BDBSWEEP final {
  static inline const QString NotConnectedText = QStringLiteral("オラクルに接続していません。");

  // The connection: replaced only by a successful logon, so a failed one keeps the old.
  std::shared_ptr<OraSession> gSession;
  std::shared_ptr<OraDatabase> gDatabase;

  // The current or last attempted logon; gUser is also the owner every catalogue query asks for.
  QString gHost;
  QString gUser;
  QString gPassword;
  // What the main window's lblOra shows: the user and host of the last logon attempt.
  QString gLogonCaption = QStringLiteral("User:\r\nHost:");

  QString gOracleHome;
  QString gOo4oVersionText;
  QString gOracleVersionText = NotConnectedText;
  QString gWindowsUser;
  CommandArgs gCommandArgs;

  // The SQL a job, the data button or the export prepared last, and its filter part (or
  // "TRUNCATE" / "DROP" after those jobs).
  QString gLastSql;
  QString gLastWhere;
  // While a job of any window runs: the windows share the one connection, so no second job starts.
  bool gJobRunning = false;
  // The timer of the last job, new at every press of a job button.
  std::unique_ptr<clsTimer> gJobTimer;

  std::unique_ptr<clsREG> gRegistry;

  // Catalogue tables, rebuilt by their loaders; row r matches grid row r.
  TextTable gTables{2};
  TextTable gColumns{2};
  TextTable gColumnInfo{5};
  TextTable gTargets{2};
  TextTable gIndexes{2};
  TextTable gIndexColumns{2};

  // The name-master files, read once at start-up.
  NameMasters gNameMasters;

  // The table whose columns the field grid shows; "" makes the next table chosen load afresh.
  QString gCurTableID;
  QString gCurTableName;

  // Hand-over between windows.
  QString gInfoTable;
  QString gInfoTableName;
  QString gPickedValue;
  QString gPickColumnID;
  QString gPickColumnName;
  QString gColSearchName;
  // Set by the progress window's stop button while a delete or drop job runs; read between
  // tables and rows.
  std::atomic<bool> gCancelRequested = false;
};
