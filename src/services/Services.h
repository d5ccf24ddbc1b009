#pragma once

struct AppEnvironment;
class Clock;
class FileDialogs;
class MessageBoxes;
class PrintDialog;
class ProcessLauncher;
class UrlOpener;

// The services windows reach the outside world through; tests hand in scripted ones.
struct Services final {
  MessageBoxes& boxes;
  Clock& clock;
  ProcessLauncher& launcher;
  FileDialogs& fileDialogs;
  PrintDialog& printDialog;
  UrlOpener& urlOpener;
  const AppEnvironment& env;
};
