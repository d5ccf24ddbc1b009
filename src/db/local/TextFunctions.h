#pragma once

#include <sqlite3.h>

struct SessionSettings;

// Oracle's character functions beyond the common ones: TRANSLATE, INITCAP, the byte functions
// LENGTHB, SUBSTRB and INSTRB (AL32UTF8 bytes), ASCII and CHR, TRIM with LEADING, TRAILING or
// BOTH.
namespace TextFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace TextFunctions
