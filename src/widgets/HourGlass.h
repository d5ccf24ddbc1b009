#pragma once

#include <QApplication>

// The hourglass pointer for the length of a scope: a load or search shows it while it runs and
// the default pointer comes back on every way out, errors included.
class HourGlass final {
public:
  HourGlass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~HourGlass() { QApplication::restoreOverrideCursor(); }
  HourGlass(const HourGlass&) = delete;
  HourGlass& operator=(const HourGlass&) = delete;
};
