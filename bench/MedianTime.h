#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <vector>

// Runs f repeats times and returns the median time of one run in milliseconds: the median keeps
// a single run disturbed by the machine from moving the figure.
template <typename F> double medianMs(int repeats, const F& f) {
  std::vector<double> times;
  for (int i = 0; i < repeats; ++i) {
    QElapsedTimer t;
    t.start();
    f();
    times.push_back(double(t.nsecsElapsed()) / 1e6);
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}
