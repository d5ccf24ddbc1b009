#pragma once

struct JobContext;
struct JobPlan;

// Counts, table by table in list order, the rows of the plan's column that pass its filter, and
// writes one line per table: the count, or the error and its words. A failing table never stops
// the job. Without a column to count, says so and writes nothing.
void RunCountJob(const JobPlan& plan, JobContext& context);
