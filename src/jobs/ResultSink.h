#pragma once

#include <QString>

// Where a job writes its report: the result list of the window that runs it.
class ResultSink {
public:
  virtual ~ResultSink() = default;
  // Leaves the heading only.
  virtual void clear() = 0;
  // Appends a line coloured by its two-letter code (background, then text; "" for defaults).
  virtual void addItem(const QString& text, const QString& code) = 0;
  // Shows at once what was added so far, for a job that goes on before the next event turn.
  virtual void repaint() = 0;
};
