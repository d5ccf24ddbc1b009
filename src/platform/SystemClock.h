#pragma once

#include "services/Clock.h"

// The machine's own clocks.
class SystemClock final : public Clock {
public:
  QDateTime now() const override;
  qint64 tickMs() const override;
  qint32 uptimeMs() const override;
};
