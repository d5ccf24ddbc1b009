#pragma once

#include <QtGlobal>

// The old millisecond counter since start-up was a signed 32-bit value that wraps after about
// 24.8 days, going negative; the uptime display depends on exactly that.
qint32 wrapToInt32(qint64 ms);

// CLOCK_BOOTTIME in milliseconds (time spent suspended included), wrapped as above.
qint32 bootUptimeMs();
