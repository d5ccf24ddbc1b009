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
const QString KillsFile = QStringLiteral("sessions.kills");

QString programName() {
  const QString app = QCoreApplication::applicationFilePath();
  return app.isEmpty() ? QStringLiteral("dbsweep") : QFileInfo(app).fileName();
}

} // namespace

SessionWatch::SessionWatch(const QString& folder, sqlite3* side, const QString& user, std::function<void()> onKilled)
    : m_side(side), m_killsFile(folder + u'/' + KillsFile), m_onKilled(std::move(onKilled)) {
  // Growing a file that already has its size changes nothing, so sessions starting together
  // cannot undo each other's work; the number starts at 0. (The size is asked of a QFileInfo: a
  // QFile remembers the size it saw, and map() would then take the grown file for a short one.)
  if (!m_killsFile.open(QIODevice::ReadWrite) ||
      (QFileInfo(m_killsFile.fileName()).size() < qint64(sizeof(quint64)) && !m_killsFile.resize(sizeof(quint64))) ||
      !(m_kills = reinterpret_cast<quint64*>(m_killsFile.map(0, sizeof(quint64)))))
    throw SqliteFailure{SQLITE_CANTOPEN, m_killsFile.fileName() + QStringLiteral(": ") + m_killsFile.errorString()};
  // Read before the row exists, so that no kill of this session can come before it.
  m_killsSeen = kills().load();
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
    m_ownRow = std::make_unique<SqliteStmt>(side, QStringLiteral("SELECT killed FROM CAT.sessions WHERE sid = ?1"));
  } catch (...) {
    sqlite3_exec(side, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  m_thread = std::thread(&SessionWatch::watch, this, folder + u'/' + Catalogue::FileName);
}

SessionWatch::~SessionWatch() {
  {
    std::lock_guard lock(m_stopMutex);
    m_stop = true;
  }
  m_stopSignal.notify_all();
  m_thread.join();
  m_ownRow.reset();
  try {
    sqliteExec(m_side, QStringLiteral("DELETE FROM CAT.sessions WHERE sid = ?1"), {m_sid});
  } catch (const SqliteFailure&) {
    // Another process cleans the row up once it sees this process has gone.
  }
}

bool SessionWatch::killedNow() {
  const quint64 now = kills().load();
  if (m_killed || now == m_killsSeen)
    return m_killed;
  try {
    m_ownRow->bind(1, m_sid);
    const bool killed = m_ownRow->step() && m_ownRow->column(0).toInt() == 1;
    m_ownRow->reset();
    m_killsSeen = now;
    if (killed)
      m_killed = true;
  } catch (const SqliteFailure&) {
    // The watch looks again within a quarter of a second.
  }
  return m_killed;
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

void SessionWatch::kill(qint64 sid, qint64 serial) {
  if (sid == m_sid)
    throw OraError(27, QStringLiteral("cannot kill current session"));
  removeDeadSessions(m_side);
  sqliteExec(m_side, QStringLiteral("UPDATE CAT.sessions SET killed = 1 WHERE sid = ?1 AND serial = ?2 AND killed = 0"),
             {sid, serial});
  if (sqlite3_changes(m_side) == 0)
    throw OraError(30, QStringLiteral("User session ID does not exist."));
  // After the change is committed: a session that sees the new number sees the change too.
  kills().fetch_add(1);
}
