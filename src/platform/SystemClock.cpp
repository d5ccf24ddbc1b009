#include "platform/SystemClock.h"

#include "platform/Uptime.h"

#include <ctime>

QDateTime SystemClock::now() const { return QDateTime::currentDateTime(); }

qint64 SystemClock::tickMs() const {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

qint32 SystemClock::uptimeMs() const { return bootUptimeMs(); }
