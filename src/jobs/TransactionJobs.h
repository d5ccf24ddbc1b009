#pragma once

struct JobContext;

// Rolls back or commits the pending transaction after the user confirms, and says so in the
// result list. False when nothing ended: the user declined, or the database refused (its error
// is shown), so the transaction's buttons stay as they are.
bool RunRollback(JobContext& context);
bool RunCommit(JobContext& context);
