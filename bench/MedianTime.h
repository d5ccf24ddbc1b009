#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <vector>

// Runs f repeats times and returns the median time of one run in milliseconds: the median keeps
// a single run disturbed by the machine from moving the figure.
// The time of one run of f in milliseconds.
template <typename F> double msOf(const F& f) {
  QElapsedTimer t;
  t.start();
  f();
  return double(t.nsecsElapsed()) / 1e6;
}

// The middle one of times taken run by run, for benchmarks that alternate what they compare.
inline double median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

template <typename F> double medianMs(int repeats, const F& f) {
  std::vector<double> times;
  for (int i = 0; i < repeats; ++i)
    times.push_back(msOf(f));
  return median(std::move(times));
}
