#pragma once

#include <sqlite3.h>

struct SessionSettings;

// SUM and AVG as Oracle computes them over NUMBER, in decimal: three times 0.1 sums to 0.3, where
// SQLite's doubles give 0.30000000000000004. Both also serve as analytic functions (OVER).
namespace DecimalAggregates {

// The functions keep the digits of wide results in the session's settings, which must outlive
// the connection's use of them.
void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace DecimalAggregates
