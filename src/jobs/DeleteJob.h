#pragma once

class JobProgress;
struct JobContext;
struct JobPlan;

// Removes the rows of the plan's targets that pass its filter, after asking how: truncating
// whole tables (only without any filter, and only when offerTruncate), one DELETE per table, or
// row by row through an updatable result set. Deletes stay pending in the transaction it begins.
// Returns true when rows may be pending, so that rolling back and committing become possible.
bool RunDeleteJob(const JobPlan& plan, JobContext& context, JobProgress& progress, bool offerTruncate);

// Drops the plan's targets after asking; the table lists stay as they are.
void RunDropJob(const JobPlan& plan, JobContext& context, JobProgress& progress);
