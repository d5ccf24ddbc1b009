#pragma once

#include "db/local/SqlLexer.h"

#include <QVariantList>

class LocalConnection;

// INSERT ALL INTO ... [INTO ...] subquery, and the conditional INSERT [ALL | FIRST] WHEN ... THEN
// INTO ... [ELSE INTO ...] subquery. The subquery is read once, before any row goes in, so an
// INTO on a table it reads does not see the rows the statement adds; each INTO then takes the
// rows its WHEN lets through (FIRST: those no earlier WHEN took).
class MultiTableInsert final {
public:
  // values: those of the ?N parameters in tokens, when a PL/SQL block runs it.
  MultiTableInsert(LocalConnection& connection, const std::vector<SqlToken>& tokens, QVariantList values = {});
  // The rows inserted, over all tables.
  qint64 run();

  // Whether the statement at tokens[at] is one.
  static bool isOne(const std::vector<SqlToken>& tokens, size_t at = 0) {
    return at + 2 < tokens.size() && tokens[at].is(u"INSERT") &&
           (tokens[at + 1].is(u"ALL") || tokens[at + 1].is(u"FIRST") || tokens[at + 1].is(u"WHEN"));
  }

private:
  struct Into {
    size_t begin = 0, end = 0; // "INTO table [(columns)] [VALUES (...)]"
    int branch = 0;            // which WHEN (1, 2 ...), 0 for ELSE or an unconditional insert
  };

  LocalConnection& m_c;
  const std::vector<SqlToken> m_t;
  QVariantList m_values;
};
