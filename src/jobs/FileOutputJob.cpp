#include "jobs/FileOutputJob.h"

#include "jobs/JobPlan.h"
#include "jobs/JobReport.h"
#include "jobs/ResultLineText.h"

using namespace ResultLineText;

void RunFileOutputJob(const JobPlan& plan, JobContext& context, FileOutputDialog& dialog) {
  JobReport report(context);
  report.openBanner(FileOutputStartBanner);
  dialog.prepare(plan.targets);
  report.startClock();
  dialog.run();
  report.close(CountEndTime, FileOutputEndBanner);
}
