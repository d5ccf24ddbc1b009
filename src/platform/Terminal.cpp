#include "platform/Terminal.h"

#include <cstdio>
#include <iostream>
#include <string>

#include <termios.h>
#include <unistd.h>

bool Terminal::stdinIsTerminal() { return isatty(STDIN_FILENO) == 1; }

std::optional<QString> Terminal::readLine() {
  std::string line;
  if (!std::getline(std::cin, line))
    return std::nullopt;
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  return QString::fromStdString(line);
}

std::optional<QString> Terminal::ask(const QString& prompt) {
  if (stdinIsTerminal()) {
    std::fputs(prompt.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
  }
  return readLine();
}

std::optional<QString> Terminal::readSecret(const QString& prompt) {
  if (!stdinIsTerminal())
    return readLine();
  std::fputs(prompt.toLocal8Bit().constData(), stderr);
  std::fflush(stderr);
  termios saved{};
  const bool hidden = tcgetattr(STDIN_FILENO, &saved) == 0;
  if (hidden) {
    termios quiet = saved;
    quiet.c_lflag &= ~tcflag_t(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  auto line = readLine();
  if (hidden)
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
  // The user's Enter was not echoed either.
  std::fputs("\n", stderr);
  return line;
}
