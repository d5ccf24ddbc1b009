#pragma once

#include <QString>

// The progress window of a delete or drop job, as the job sees it: a caption saying where the
// job is, and a turn of the user interface between steps, in which the stop button can be
// pressed.
class JobProgress {
public:
  virtual ~JobProgress() = default;
  virtual void setCaption(const QString& caption) = 0;
  virtual void yield() = 0;
};
