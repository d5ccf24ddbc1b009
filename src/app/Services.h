#pragma once

struct AppEnvironment;
class Clock;
class MessageBoxes;
class ProcessLauncher;

// The services windows reach the outside world through; tests hand in scripted ones.
struct Services final {
  MessageBoxes& boxes;
  Clock& clock;
  ProcessLauncher& launcher;
  const AppEnvironment& env;
};
