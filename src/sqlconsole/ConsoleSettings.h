#pragma once

#include <QChar>
#include <QStringList>

// The SQL*Plus system variables the console follows, with their SET command.
struct ConsoleSettings final {
  // Columns a row may take before it goes on on the next line; 0: rows are not wrapped.
  int lineSize = 0;
  // Lines of a page, heading included; 0: no headings at all; -1: one page without end.
  int pageSize = -1;
  bool heading = true;
  // The least row count that "n rows selected." is shown for; 0: never.
  int feedback = 1;
  bool echo = false;
  bool timing = false;
  bool serverOutput = false; // print what PL/SQL writes with DBMS_OUTPUT
  bool verify = true;
  // The character that starts a substitution variable; none after SET DEFINE OFF.
  QChar define = u'&';
  bool termout = true;
  // Kept so that scripts written for SQL*Plus run unchanged; neither changes what is printed,
  // because number columns are sized to their values and blanks are never written as tabs.
  int numWidth = 10;
  bool tab = true;

  // SET option value [option value ...]; returns the error texts of what it could not set.
  QStringList set(QStringList words);
};
