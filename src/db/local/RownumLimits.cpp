#include "db/local/RownumLimits.h"

#include "db/OraError.h"

#include <QHash>
#include <QScopeGuard>

#include <limits>

namespace RownumLimits {

namespace {

using Tokens = std::vector<SqlToken>;

SqlToken sym(const QString& s) { return SqlToken{SqlToken::Kind::Symbol, s, 0, 0, 0}; }
SqlToken word(const QString& s) { return SqlToken{SqlToken::Kind::Word, s, 0, 0, 0}; }
SqlToken number(qint64 n) { return SqlToken{SqlToken::Kind::Number, QString::number(n), 0, 0, 0}; }

size_t closing(const Tokens& t, size_t open, size_t end) {
  int depth = 0;
  for (size_t i = open; i < end; ++i) {
    if (t[i].is(u"("))
      ++depth;
    else if (t[i].is(u")") && --depth == 0)
      return i;
  }
  throw OraError(907, QStringLiteral("missing right parenthesis"));
}

// The limit a conjunct [b, e) sets, or -1 when it is not a ROWNUM condition.
qint64 limitOf(const Tokens& t, size_t b, size_t e) {
  if (e - b != 3)
    return -1;
  const bool left = t[b].is(u"ROWNUM") && t[b + 2].kind == SqlToken::Kind::Number;
  const bool right = t[b + 2].is(u"ROWNUM") && t[b].kind == SqlToken::Kind::Number;
  if (!left && !right)
    return -1;
  const double n = t[left ? b + 2 : b].text.toDouble();
  QString op = t[b + 1].text;
  if (right) // "n >= ROWNUM" is "ROWNUM <= n"
    op = op == u"<"    ? QStringLiteral(">")
         : op == u">"  ? QStringLiteral("<")
         : op == u"<=" ? QStringLiteral(">=")
         : op == u">=" ? QStringLiteral("<=")
                       : op;
  const qint64 whole = qint64(n);
  if (op == u"<=")
    return n < 1 ? 0 : whole;
  if (op == u"<")
    return n <= 1 ? 0 : (n == whole ? whole - 1 : whole);
  if (op == u"=")
    return n == 1 ? 1 : 0;
  if (op == u">")
    return n < 1 ? std::numeric_limits<qint64>::max() : 0;
  if (op == u">=")
    return n <= 1 ? std::numeric_limits<qint64>::max() : 0;
  return -1;
}

// Whether [b, e) names ROWNUM itself, not only within a query of its own.
bool namesRownum(const Tokens& t, size_t b, size_t e) {
  for (size_t i = b; i < e; ++i) {
    if (t[i].is(u"(") && i + 1 < e && (t[i + 1].is(u"SELECT") || t[i + 1].is(u"WITH")))
      i = closing(t, i, e);
    else if (t[i].is(u"ROWNUM"))
      return true;
  }
  return false;
}

// The rows a filter has let through, by statement and filter: a row is numbered only once it
// passes the conditions, which see the number it would get.
struct Passed {
  qint64 statement = -1;
  QHash<qint64, qint64> counts;
};
thread_local Passed passed;

qint64& passedCount(sqlite3_value** argv) {
  const qint64 statement = sqlite3_value_int64(argv[0]);
  if (statement != passed.statement) {
    passed.statement = statement;
    passed.counts.clear();
  }
  return passed.counts[sqlite3_value_int64(argv[1])];
}

// dbsweep_rownum_next(statement, filter): the number the row being filtered would get.
void nextRownum(sqlite3_context* ctx, int, sqlite3_value** argv) { sqlite3_result_int64(ctx, passedCount(argv) + 1); }

// dbsweep_rownum_pass(statement, filter, condition): whether the row passes, counting it if so.
void passRownum(sqlite3_context* ctx, int, sqlite3_value** argv) {
  const bool pass = sqlite3_value_type(argv[2]) != SQLITE_NULL && sqlite3_value_double(argv[2]) != 0;
  if (pass)
    ++passedCount(argv);
  sqlite3_result_int(ctx, pass ? 1 : 0);
}

// The OFFSET keeps SQLite from merging the limited query into one around it: merged, an outer
// ORDER BY would choose the rows the limit keeps, where Oracle numbers them in the order they
// come, an inline view's order for one.
SqlToken limitTo(qint64 limit) { return sym(QStringLiteral("LIMIT %1 OFFSET 0").arg(limit)); }

class Rewriter final {
public:
  Rewriter(const Tokens& t, qint64 statement) : m_t(t), m_statement(statement) {}

  void range(size_t begin, size_t end, Tokens& out) {
    for (size_t i = begin; i < end;) {
      if (m_t[i].is(u"SELECT")) {
        i = block(i, end, out);
      } else if (m_depth == 0 && i == begin && (m_t[i].is(u"DELETE") || m_t[i].is(u"UPDATE"))) {
        i = change(begin, end, out);
      } else if (m_t[i].is(u"(")) {
        const size_t close = closing(m_t, i, end);
        out.push_back(m_t[i]);
        ++m_depth;
        range(i + 1, close, out);
        --m_depth;
        out.push_back(m_t[close]);
        i = close + 1;
      } else if (m_filter > 0 && m_t[i].is(u"ROWNUM")) {
        for (const SqlToken& k :
             {word(QStringLiteral("dbsweep_rownum_next")), sym(QStringLiteral("(")), number(m_statement),
              sym(QStringLiteral(",")), number(m_filter), sym(QStringLiteral(")"))})
          out.push_back(k);
        ++i;
      } else {
        out.push_back(m_t[i++]);
      }
    }
  }

private:
  // ROWNUM in conditions other than limits: each row that reaches WHERE is filtered in the
  // order it comes, with ROWNUM the number it would get, and numbered only if it passes, as
  // Oracle does. Only the statement's own blocks are filtered so: a subquery may run once for
  // each row of another, and an inline view be merged into the query around it, each of
  // which would number the rows wrongly.
  void filter(const std::vector<std::pair<size_t, size_t>>& conditions, Tokens& out) {
    if (m_depth > 0)
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    const int saved = std::exchange(m_filter, ++m_filters);
    for (const SqlToken& k :
         {word(QStringLiteral("dbsweep_rownum_pass")), sym(QStringLiteral("(")), number(m_statement),
          sym(QStringLiteral(",")), number(m_filter), sym(QStringLiteral(",")), sym(QStringLiteral("("))})
      out.push_back(k);
    for (size_t k = 0; k < conditions.size(); ++k) {
      if (k > 0)
        out.push_back(word(QStringLiteral("AND")));
      out.push_back(sym(QStringLiteral("(")));
      range(conditions[k].first, conditions[k].second, out);
      out.push_back(sym(QStringLiteral(")")));
    }
    out.push_back(sym(QStringLiteral(")")));
    out.push_back(sym(QStringLiteral(")")));
    m_filter = saved;
  }

  // The conditions a block keeps after its limits, under its WHERE.
  void conditions(size_t where, const std::vector<std::pair<size_t, size_t>>& kept, bool filtered, Tokens& out) {
    if (kept.empty())
      return;
    out.push_back(m_t[where]);
    if (filtered)
      return filter(kept, out);
    for (size_t k = 0; k < kept.size(); ++k) {
      if (k > 0)
        out.push_back(word(QStringLiteral("AND")));
      range(kept[k].first, kept[k].second, out);
    }
  }

  // DELETE or UPDATE: its WHERE, up to any RETURNING, filters the rows it changes.
  size_t change(size_t begin, size_t end, Tokens& out) {
    size_t where = 0, whereEnd = end;
    for (size_t i = begin; i < end; ++i) {
      if (m_t[i].is(u"("))
        i = closing(m_t, i, end);
      else if (!where && m_t[i].is(u"WHERE"))
        where = i;
      else if (where && (m_t[i].is(u"RETURNING") || m_t[i].is(u"RETURN") || m_t[i].is(u"LOG")))
        whereEnd = std::min(whereEnd, i);
    }
    if (!where || !namesRownum(m_t, where + 1, whereEnd)) {
      out.push_back(m_t[begin]);
      range(begin + 1, end, out);
      return end;
    }
    out.push_back(m_t[begin]);
    range(begin + 1, where, out);
    out.push_back(m_t[where]);
    filter({{where + 1, whereEnd}}, out);
    range(whereEnd, end, out);
    return end;
  }

  size_t block(size_t begin, size_t end, Tokens& out) {
    // A query within a filter's conditions numbers its own rows.
    const int outerFilter = std::exchange(m_filter, 0);
    const auto restore = qScopeGuard([&] { m_filter = outerFilter; });
    size_t from = 0, where = 0, whereEnd = 0, order = 0, tail = end;
    bool joined = false;
    for (size_t i = begin + 1; i < end; ++i) {
      if (m_t[i].is(u"(")) {
        i = closing(m_t, i, end);
        continue;
      }
      const SqlToken& t = m_t[i];
      if (t.is(u")") || t.is(u"UNION") || t.is(u"MINUS") || t.is(u"INTERSECT")) {
        tail = i;
        break;
      }
      if (!from && t.is(u"FROM"))
        from = i;
      else if (from && !where && (t.is(u",") || t.is(u"JOIN")))
        joined = true;
      if (!where && t.is(u"WHERE"))
        where = i;
      else if (where && !whereEnd && (t.is(u"GROUP") || t.is(u"HAVING") || t.is(u"ORDER") || t.is(u"CONNECT")))
        whereEnd = i;
      if (!order && t.is(u"ORDER"))
        order = i;
    }
    if (where && !whereEnd)
      whereEnd = order ? order : tail;
    // The top-level conjuncts of WHERE.
    std::vector<std::pair<size_t, size_t>> conjuncts;
    if (where) {
      size_t start = where + 1;
      bool between = false;
      for (size_t i = where + 1; i <= whereEnd; ++i) {
        if (i < whereEnd && m_t[i].is(u"(")) {
          i = closing(m_t, i, whereEnd);
          continue;
        }
        if (i < whereEnd && m_t[i].is(u"BETWEEN"))
          between = true;
        if (i == whereEnd || (m_t[i].is(u"AND") && !std::exchange(between, false))) {
          conjuncts.emplace_back(start, i);
          start = i + 1;
        }
      }
    }
    qint64 limit = -1;
    std::vector<std::pair<size_t, size_t>> kept;
    bool filtered = false;
    for (auto [b, e] : conjuncts) {
      const qint64 l = limitOf(m_t, b, e);
      if (l < 0)
        kept.emplace_back(b, e), filtered = filtered || namesRownum(m_t, b, e);
      else
        limit = limit < 0 ? l : std::min(limit, l);
    }
    // A limit keeps the first rows that pass the other conditions.
    if (limit < 0 && filtered)
      limit = std::numeric_limits<qint64>::max();
    if (limit < 0) {
      out.push_back(m_t[begin]);
      range(begin + 1, tail, out);
      return tail;
    }
    if (from && !joined) {
      // One table: limit its rows first, then select, group and sort them, so that
      // "count(*) ... where rownum < 3" counts two rows.
      const SqlToken& qualifier = m_t[where - 1];
      out.push_back(m_t[begin]);
      range(begin + 1, from + 1, out);
      out.push_back(sym(QStringLiteral("(SELECT * FROM")));
      range(from + 1, where, out);
      conditions(where, kept, filtered, out);
      if (limit != std::numeric_limits<qint64>::max())
        out.push_back(limitTo(limit));
      out.push_back(sym(QStringLiteral(")")));
      // An inline view without an alias leaves nothing to qualify its columns by.
      if (qualifier.isName())
        out.push_back(qualifier);
      range(whereEnd, tail, out);
      return tail;
    }
    // Several tables: the limit applies to the joined rows before sorting.
    const size_t bodyEnd = order ? order : tail;
    out.push_back(sym(QStringLiteral("SELECT * FROM (")));
    out.push_back(m_t[begin]);
    range(begin + 1, where, out);
    conditions(where, kept, filtered, out);
    range(whereEnd, bodyEnd, out);
    if (limit != std::numeric_limits<qint64>::max())
      out.push_back(limitTo(limit));
    out.push_back(sym(QStringLiteral(")")));
    // Outside the subquery the columns are known by their names only.
    for (size_t i = bodyEnd; i < tail; ++i)
      if (!(i + 1 < tail && m_t[i].isName() && m_t[i + 1].is(u".")) && !(i > bodyEnd && m_t[i].is(u".")))
        out.push_back(m_t[i]);
    return tail;
  }

  const Tokens& m_t;
  const qint64 m_statement;
  int m_depth = 0;   // of parentheses around the tokens being rewritten
  int m_filters = 0; // numbers the filters of the statement
  int m_filter = 0;  // the filter whose conditions are being rewritten, 0 outside them
};

} // namespace

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end) {
  return containsToken(tokens, begin, end, u"ROWNUM");
}

std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end, qint64 statement) {
  end = withoutEndTokens(tokens, begin, end);
  Tokens out;
  Rewriter(tokens, statement).range(begin, end, out);
  out.push_back(SqlToken{});
  return out;
}

void registerFunctions(sqlite3* db) {
  sqlite3_create_function_v2(db, "dbsweep_rownum_next", 2, SQLITE_UTF8, nullptr, nextRownum, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_rownum_pass", 3, SQLITE_UTF8, nullptr, passRownum, nullptr, nullptr, nullptr);
}

} // namespace RownumLimits
