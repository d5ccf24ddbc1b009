#include "db/local/SessionWatch.h"
#include "db/local/OracleDate.h"

#include "db/OraError.h"
#include "db/local/Catalogue.h"
#include "db/local/Sqlite.h"
#include "platform/SystemInfo.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QSysInfo>

#include <unistd.h>

namespace {

constexpr auto WatchInterval = std::chrono::milliseconds(250);

QString programName() {
  const QString app = QCoreApplication::applicationFilePath();
  return app.isEmpty() ? QStringLiteral("dbsweep") : QFileInfo(app).fileName();
}

} // namespace

SessionWatch::SessionWatch(const QString& catalogueFile, sqlite3* side, const QString& user,
                           std::function<void()> onKilled)
    : m_side(side), m_onKilled(std::move(onKilled)) {
  removeDeadSessions(side);
  sqliteExec(side, QStringLiteral("BEGIN IMMEDIATE"));
  try {
    const qint64 serial = Catalogue::nextCounter(side, QStringLiteral("SERIAL#"));
    sqliteExec(side,
               QStringLiteral("INSERT INTO CAT.sessions(serial, username, osuser, machine, program, pid, logon_time) "
                              "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)"),
               {serial, user, processOwnerLogonName(), QSysInfo::machineHostName(), programName(), qlonglong(getpid()),
                OracleDate::now()});
    m_sid = sqlite3_last_insert_rowid(side);
    sqliteExec(side, QStringLiteral("COMMIT"));
  } catch (...) {
    sqlite3_exec(side, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  m_thread = std::thread(&SessionWatch::watch, this, catalogueFile);
}

SessionWatch::~SessionWatch() {
  {
    std::lock_guard lock(m_stopMutex);
    m_stop = true;
  }
  m_stopSignal.notify_all();
  m_thread.join();
  try {
    sqliteExec(m_side, QStringLiteral("DELETE FROM CAT.sessions WHERE sid = ?1"), {m_sid});
  } catch (const SqliteFailure&) {
    // Another process cleans the row up once it sees this process has gone.
  }
}

void SessionWatch::watch(QString catalogueFile) {
  sqlite3* db = nullptr;
  if (sqlite3_open_v2(catalogueFile.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    sqlite3_close(db);
    return;
  }
  sqlite3_busy_timeout(db, 200);
  std::unique_lock lock(m_stopMutex);
  while (!m_stopSignal.wait_for(lock, WatchInterval, [this] { return m_stop; })) {
    try {
      const QVariant killed = sqliteValue(db, QStringLiteral("SELECT killed FROM sessions WHERE sid = ?1"), {m_sid});
      if (killed.toInt() == 1) {
        m_killed = true;
        m_onKilled();
        break;
      }
    } catch (const SqliteFailure&) {
      // A busy catalogue: look again next time.
    }
  }
  sqlite3_close(db);
}

void SessionWatch::removeDeadSessions(sqlite3* side) {
  QList<qint64> dead;
  {
    SqliteStmt rows(side, QStringLiteral("SELECT sid, pid FROM CAT.sessions"));
    while (rows.step()) {
      if (!processIsRunning(rows.column(1).toLongLong()))
        dead << rows.column(0).toLongLong();
    }
  }
  for (qint64 sid : dead)
    sqliteExec(side, QStringLiteral("DELETE FROM CAT.sessions WHERE sid = ?1"), {sid});
}

void SessionWatch::kill(sqlite3* side, qint64 sid, qint64 serial, qint64 ownSid) {
  if (sid == ownSid)
    throw OraError(27, QStringLiteral("cannot kill current session"));
  removeDeadSessions(side);
  sqliteExec(side, QStringLiteral("UPDATE CAT.sessions SET killed = 1 WHERE sid = ?1 AND serial = ?2 AND killed = 0"),
             {sid, serial});
  if (sqlite3_changes(side) == 0)
    throw OraError(30, QStringLiteral("User session ID does not exist."));
}
