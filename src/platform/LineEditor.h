#pragma once

#include <QString>

#include <optional>

// Reads typed lines with editing and a history of what was typed before (the arrow keys, as in a
// shell), for consoles whose standard input is a terminal.
class LineEditor final {
public:
  LineEditor();
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Shows prompt and reads one line; none at the end of input (Ctrl-D).
  std::optional<QString> readLine(const QString& prompt);
};
