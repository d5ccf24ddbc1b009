#include "db/local/RowLocks.h"

#include "db/OraError.h"
#include "db/local/TokenCursor.h"

namespace RowLocks {

std::optional<Clause> read(const std::vector<SqlToken>& t) {
  int depth = 0;
  size_t at = 0;
  for (size_t k = 0; k + 1 < t.size() && !at; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(u"FOR") && t[k + 1].is(u"UPDATE"))
      at = k;
  }
  if (!at)
    return std::nullopt;
  TokenCursor c(t, at + 2);
  if (c.accept(u"OF")) {
    do {
      c.name(904);
      while (c.accept(u"."))
        c.name(904);
    } while (c.accept(u","));
  }
  Clause clause{at, -1};
  if (c.accept(u"NOWAIT")) {
    clause.waitMs = 0;
  } else if (c.accept(u"WAIT")) {
    if (c.peek().kind != SqlToken::Kind::Number)
      throw OraError(30005, QStringLiteral("missing or invalid WAIT interval"));
    clause.waitMs = int(c.next().text.toDouble() * 1000);
  } else if (c.peek().is(u"SKIP")) {
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  }
  if (!c.atEnd())
    TokenCursor::fail(933);
  return clause;
}

} // namespace RowLocks
