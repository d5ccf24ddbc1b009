#include "platform/LineEditor.h"

#include <cstdio>
#include <cstdlib>

#include <editline/readline.h>

LineEditor::LineEditor() { using_history(); }

LineEditor::~LineEditor() { clear_history(); }

std::optional<QString> LineEditor::readLine(const QString& prompt) {
  char* line = readline(prompt.toLocal8Bit().constData());
  if (!line)
    return std::nullopt;
  const QString text = QString::fromLocal8Bit(line);
  if (!text.trimmed().isEmpty())
    add_history(line);
  std::free(line);
  return text;
}
