#include "jobs/clsTimer.h"

#include "services/Clock.h"

#include <stdexcept>

qint64 clsTimer::add(qint64 a, qint64 b) {
  qint64 sum = 0;
  if (__builtin_add_overflow(a, b, &sum))
    throw std::overflow_error("overflow");
  return sum;
}

qint64 clsTimer::running() const {
  if (!m_startTick || m_stopped)
    return 0;
  qint64 interval = 0;
  if (__builtin_sub_overflow(m_clock.tickMs(), *m_startTick, &interval))
    throw std::overflow_error("overflow");
  return interval;
}

double clsTimer::ElapsedTime() const { return double(add(m_accumulated, running())) / double(m_scaleFactor); }

void clsTimer::setScaleFactor(qint64 factor) {
  if (factor > 0)
    m_scaleFactor = factor;
}

void clsTimer::ResumeTimer() {
  m_startTick = m_clock.tickMs();
  m_stopped = false;
}

void clsTimer::StartTimer() {
  m_accumulated = 0;
  ResumeTimer();
}

void clsTimer::StopTimer() {
  m_accumulated = add(m_accumulated, running());
  m_stopped = true;
}
