#pragma once

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QStringList>

#include <atomic>
#include <mutex>
#include <thread>

// What the randomized runs share: how long and from which seed they run, a watchdog for an input
// that never finishes, and the edits that turn a seed input into a mutant.
namespace Fuzz {

// DBSWEEP_FUZZ_SECONDS, else 60.
int runSeconds();
// DBSWEEP_FUZZ_SEED, else a fresh one. Printed with the length of the run, so a failing run can
// be repeated.
quint32 runSeed();
// Qt Test stops a test function after five minutes; a long run is meant to take longer. Call
// before QTest::qExec.
void allowLongRun();

// One to four edits of parts: a part removed, doubled, swapped with another, one of
// `interesting` put before it, one of its characters changed into any other, or the list cut
// there.
void editParts(QStringList& parts, QRandomGenerator& random, const QStringList& interesting);

// Aborts the process when one input runs longer than the limit, naming it: a hang would
// otherwise end only at the test's time-out, without saying on what.
class Watchdog final {
public:
  explicit Watchdog(int limitSeconds);
  ~Watchdog();
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  void begin(const QString& input);
  void end();

private:
  const qint64 m_limitMs;
  QElapsedTimer m_clock;
  std::mutex m_lock;
  QString m_input;
  std::atomic<qint64> m_startedMs{-1};
  std::atomic<bool> m_done{false};
  std::thread m_thread;
};

} // namespace Fuzz
