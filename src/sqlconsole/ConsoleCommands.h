#pragma once

#include <QStringList>

class ConsoleRunner;

// The SQL*Plus commands the console runs itself between statements: SET, COLUMN, CLEAR COLUMNS,
// SPOOL, DESCRIBE, SHOW USER, DEFINE, UNDEFINE, CONNECT and DISCONNECT. (PROMPT, WHENEVER and
// EXIT are read with the statements; @ and @@ by whoever reads the script.)
namespace ConsoleCommands {

// Runs the line when it is one of these commands; false when it is not.
bool run(QStringView line, ConsoleRunner& runner);

// A command line's words; quotes group words and are dropped ('Monthly Pay' is one word).
QStringList words(QStringView line);

// True when `word`, in any case, is `command` cut down to no fewer than `shortest` letters.
bool abbreviates(const QString& word, QLatin1StringView command, qsizetype shortest);

} // namespace ConsoleCommands
