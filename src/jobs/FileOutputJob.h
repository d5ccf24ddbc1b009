#pragma once

#include <QList>

struct JobContext;
struct JobPlan;
struct JobTarget;

// The export dialog as the file output job drives it.
class FileOutputDialog {
public:
  virtual ~FileOutputDialog() = default;
  // Lists the tables with their proposed file names and sizes itself to them, without showing.
  virtual void prepare(const QList<JobTarget>& targets) = 0;
  // Shows the dialog until the user has run the output or cancelled.
  virtual void run() = 0;
};

// Hands the selected tables to the export dialog and frames its run in the result list: the
// banner, the start time once the dialog is ready, and the end time and elapsed time, which
// include the user's choices. The tables' outcomes are the dialog's to show, not the list's.
void RunFileOutputJob(const JobPlan& plan, JobContext& context, FileOutputDialog& dialog);
