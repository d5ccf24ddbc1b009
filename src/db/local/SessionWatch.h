#pragma once

#include <QString>

#include <sqlite3.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

// A session's row in the catalogue, and the watch that notices when another session kills it:
// a killed session must give up its locks within about a second even while its user does
// nothing, so a small thread looks at the row a few times a second and calls onKilled.
class SessionWatch final {
public:
  SessionWatch(const QString& catalogueFile, sqlite3* side, const QString& user, std::function<void()> onKilled);
  ~SessionWatch();
  SessionWatch(const SessionWatch&) = delete;
  SessionWatch& operator=(const SessionWatch&) = delete;

  qint64 sid() const { return m_sid; }
  bool killed() const { return m_killed; }

  // Removes the rows of sessions whose process has ended.
  static void removeDeadSessions(sqlite3* side);
  // Marks session sid,serial as killed: ORA-00027 for one's own, ORA-00030 for an unknown one.
  static void kill(sqlite3* side, qint64 sid, qint64 serial, qint64 ownSid);

private:
  void watch(QString catalogueFile);

  sqlite3* m_side;
  qint64 m_sid = 0;
  std::function<void()> m_onKilled;
  std::atomic<bool> m_killed{false};
  std::mutex m_stopMutex;
  std::condition_variable m_stopSignal;
  bool m_stop = false;
  std::thread m_thread;
};
