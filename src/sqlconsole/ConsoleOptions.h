#pragma once

#include <QStringList>

#include <optional>

// The command line of dbsweep-sql.
struct ConsoleOptions final {
  enum class Mode { Run, CreateInstance, Help };

  Mode mode = Mode::Run;
  // Set when the command line is unusable; the program then exits with status 2.
  QString error;

  bool csv = false;
  bool continueOnError = false;
  QString user;
  // Left out ("USER@HOST"), it is asked for.
  std::optional<QString> password;
  QString host;
  // "/NOLOG": no logon at the start.
  bool noLog = false;
  // Empty: statements come from standard input.
  QString script;
  // The words after the script, its &1, &2 ...
  QStringList scriptArguments;

  // --create-instance local:NAME
  QString instance;
  std::optional<QString> systemPassword;

  static ConsoleOptions parse(const QStringList& arguments);
  static QString usage();
};
