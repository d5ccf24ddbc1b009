#pragma once

// Made before the application object and kept while it is made: with no display, or a DISPLAY
// that names no running X server, the program prints a clear message and exits with code 2,
// where Qt would abort with a terse one.
class DisplayGuard final {
public:
  static constexpr int NoDisplayExit = 2;

  explicit DisplayGuard(const char* program);
  ~DisplayGuard();
  DisplayGuard(const DisplayGuard&) = delete;
  DisplayGuard& operator=(const DisplayGuard&) = delete;
};
