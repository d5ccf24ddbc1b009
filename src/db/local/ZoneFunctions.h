#pragma once

#include <sqlite3.h>

struct SessionSettings;

// Time zones of TIMESTAMP WITH TIME ZONE values, which the engine keeps as offsets from UTC:
// FROM_TZ, SYS_EXTRACT_UTC, TZ_OFFSET, and SESSIONTIMEZONE as dbsweep_sessiontimezone().
namespace ZoneFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace ZoneFunctions
