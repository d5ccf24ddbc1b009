#pragma once

#include <QtGlobal>

#include <optional>

class Clock;

// Measures how long a job takes, in intervals that can be stopped and resumed. ElapsedTime is
// in seconds until ScaleFactor says otherwise. A count that no longer fits raises
// std::overflow_error.
class clsTimer final {
public:
  explicit clsTimer(const Clock& clock) : m_clock(clock) {}

  // (accumulated + running interval) milliseconds / ScaleFactor.
  double ElapsedTime() const;
  // Milliseconds per reported unit, 1000 at first; 0 or less is ignored.
  qint64 ScaleFactor() const { return m_scaleFactor; }
  void setScaleFactor(qint64 factor);

  // A new running interval, keeping what was accumulated.
  void ResumeTimer();
  // Clears what was accumulated and starts a running interval.
  void StartTimer();
  // Adds the running interval to what was accumulated, and stops.
  void StopTimer();

private:
  qint64 running() const;
  static qint64 add(qint64 a, qint64 b);

  const Clock& m_clock;
  qint64 m_scaleFactor = 1000;
  qint64 m_accumulated = 0;
  std::optional<qint64> m_startTick; // none until a start or resume
  bool m_stopped = false;
};
