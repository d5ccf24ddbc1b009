#include "db/local/FunctionCall.h"

namespace FunctionCall {

void registerAll(sqlite3* db, const SessionSettings* settings, std::span<const Function> functions) {
  for (const Function& f : functions)
    sqlite3_create_function_v2(db, f.name, f.args,
                               SQLITE_UTF8 | (f.deterministic ? SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS : 0),
                               const_cast<SessionSettings*>(settings), f.call, nullptr, nullptr, nullptr);
}

} // namespace FunctionCall
