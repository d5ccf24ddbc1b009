#pragma once

#include <sqlite3.h>

struct SessionSettings;

// Oracle's arithmetic operators, which the translator turns into calls of engine functions, and
// the functions of TIMESTAMPs and INTERVALs: + and - move DATEs and TIMESTAMPs by days or
// intervals and give the time between two, * and / scale numbers and intervals.
namespace DatetimeFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace DatetimeFunctions
