#pragma once

#include "db/local/Sqlite.h"

#include <QFile>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

// A session's row in the catalogue, and the watch that notices when another session kills it:
// a killed session must give up its locks within about a second even while its user does
// nothing, so a small thread looks at the row a few times a second and calls onKilled.
//
// Its next call must fail at once, so each call asks too (killedNow). Reading the row costs
// several microseconds of file locking, a good part of a small call, so every kill also counts
// up a number in a file of the instance that each session maps into memory: a call reads its
// row only when that number has moved since it last looked.
class SessionWatch final {
public:
  // folder is the instance's; side its catalogue connection, attached as CAT.
  SessionWatch(const QString& folder, sqlite3* side, const QString& user, std::function<void()> onKilled);
  ~SessionWatch();
  SessionWatch(const SessionWatch&) = delete;
  SessionWatch& operator=(const SessionWatch&) = delete;

  qint64 sid() const { return m_sid; }
  // Whether the kill has been seen, by the watch or by killedNow.
  bool killed() const { return m_killed; }
  // True once the session has been killed, by any kill that has returned to its killer. Uses
  // the side connection, so only from the session's own calls; a catalogue too busy to answer
  // counts as not killed yet.
  bool killedNow();

  // Removes the rows of sessions whose process has ended.
  static void removeDeadSessions(sqlite3* side);
  // Marks session sid,serial as killed: ORA-00027 for this one, ORA-00030 for an unknown one.
  void kill(qint64 sid, qint64 serial);

private:
  void watch(QString catalogueFile);
  std::atomic_ref<quint64> kills() const { return std::atomic_ref<quint64>(*m_kills); }

  sqlite3* m_side;
  qint64 m_sid = 0;
  QFile m_killsFile;
  quint64* m_kills = nullptr; // in m_killsFile, mapped
  quint64 m_killsSeen = 0;
  std::unique_ptr<SqliteStmt> m_ownRow;
  std::function<void()> m_onKilled;
  std::atomic<bool> m_killed{false};
  std::mutex m_stopMutex;
  std::condition_variable m_stopSignal;
  bool m_stop = false;
  std::thread m_thread;
};
