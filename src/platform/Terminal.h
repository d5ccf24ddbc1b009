#pragma once

#include <QString>

#include <optional>

// The little the console needs from the terminal it runs in.
namespace Terminal {

bool stdinIsTerminal();

// Shows prompt on standard error and reads one line from standard input, without echo when
// that is a terminal. None at the end of input.
std::optional<QString> readSecret(const QString& prompt);

// Shows prompt on standard error when standard input is a terminal and reads one line from
// standard input, echoed as typed. None at the end of input.
std::optional<QString> ask(const QString& prompt);

// One line of standard input; none at the end of input.
std::optional<QString> readLine();

} // namespace Terminal
