#pragma once

#include <QString>

#include <optional>

// One thing a script asks whoever runs it (the console, the demo loader) to do, in script order.
struct ScriptItem final {
  enum class Kind {
    Statement,   // SQL to run
    Prompt,      // text to print
    ErrorMode,   // WHENEVER SQLERROR: whether a failing statement stops the run, and how it exits
    Exit,        // EXIT or QUIT: the run ends here
    Failure,     // text that cannot be run; text holds the error message
    Unterminated // input ended inside a statement, which SQL*Plus leaves unrun in its buffer
  };

  Kind kind = Kind::Statement;
  QString text;
  // Line of the script where the statement (or command) starts, counted from 1.
  int line = 0;
  bool continueOnError = false;
  // EXIT SUCCESS / FAILURE / WARNING / n; none leaves the status to how the run went.
  std::optional<int> exitCode;
  // EXIT SQL.SQLCODE: the status is the error number of the last failing statement.
  bool sqlCode = false;
  bool commit = true;
};
