#include "platform/Uptime.h"

#include <ctime>

qint32 wrapToInt32(qint64 ms) { return static_cast<qint32>(static_cast<quint32>(static_cast<quint64>(ms))); }

qint32 bootUptimeMs() {
  timespec ts{};
  clock_gettime(CLOCK_BOOTTIME, &ts);
  return wrapToInt32(qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000);
}
