#include "FuzzRun.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

int Fuzz::runSeconds() {
  const int seconds = qEnvironmentVariableIntValue("DBSWEEP_FUZZ_SECONDS");
  return seconds > 0 ? seconds : 60;
}

quint32 Fuzz::runSeed() {
  const quint32 seed = qEnvironmentVariableIsSet("DBSWEEP_FUZZ_SEED")
                           ? quint32(qEnvironmentVariableIntValue("DBSWEEP_FUZZ_SEED"))
                           : QRandomGenerator::global()->generate();
  std::printf("seed %u, %d seconds\n", seed, runSeconds());
  std::fflush(stdout); // a watchdog's abort would lose it
  return seed;
}

void Fuzz::allowLongRun() { qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number((runSeconds() + 600) * 1000LL)); }

void Fuzz::editParts(QStringList& parts, QRandomGenerator& random, const QStringList& interesting) {
  const int edits = 1 + int(random.bounded(4));
  for (int e = 0; e < edits && !parts.isEmpty(); ++e) {
    const auto at = qsizetype(random.bounded(int(parts.size())));
    switch (random.bounded(6)) {
    case 0: parts.removeAt(at); break;
    case 1: parts.insert(at, parts[at]); break;
    case 2: parts.swapItemsAt(at, qsizetype(random.bounded(int(parts.size())))); break;
    case 3: parts.insert(at, interesting[random.bounded(int(interesting.size()))]); break;
    case 4: // a character of the part changed into any character at all
      if (!parts[at].isEmpty())
        parts[at][random.bounded(int(parts[at].size()))] = QChar(char16_t(random.bounded(1, 0x3100)));
      break;
    default: parts = parts.mid(0, at); break;
    }
  }
}

Fuzz::Watchdog::Watchdog(int limitSeconds) : m_limitMs(limitSeconds * 1000LL) {
  m_clock.start();
  m_thread = std::thread([this] {
    while (!m_done) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      const qint64 started = m_startedMs;
      if (started >= 0 && m_clock.elapsed() - started > m_limitMs) {
        std::lock_guard lock(m_lock);
        std::fprintf(stderr, "hang over %lld s on: %s\n", m_limitMs / 1000, qPrintable(m_input));
        std::abort();
      }
    }
  });
}

Fuzz::Watchdog::~Watchdog() {
  m_done = true;
  m_thread.join();
}

void Fuzz::Watchdog::begin(const QString& input) {
  std::lock_guard lock(m_lock);
  m_input = input;
  m_startedMs = m_clock.elapsed();
}

void Fuzz::Watchdog::end() { m_startedMs = -1; }
