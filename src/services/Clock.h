#pragma once

#include <QDateTime>

// Time as the windows see it. Production reads the system; tests set it by hand.
class Clock {
public:
  virtual ~Clock() = default;
  virtual QDateTime now() const = 0;
  // Monotonic milliseconds, for measuring how long a job took.
  virtual qint64 tickMs() const = 0;
  // Milliseconds since the machine started, wrapped to a signed 32-bit value.
  virtual qint32 uptimeMs() const = 0;
};
