#include "db/local/ViewDml.h"

#include "db/local/LocalConnection.h"
#include "db/local/TokenCursor.h"

namespace {

[[noreturn]] void notLegal() {
  throw OraError(1732, QStringLiteral("data manipulation operation not legal on this view"));
}

SqlToken word(const QString& text) { return SqlToken{SqlToken::Kind::Word, text, 0, 0, 0}; }
SqlToken quoted(const QString& text) { return SqlToken{SqlToken::Kind::Quoted, text, 0, 0, 0}; }
SqlToken symbol(const QString& text) { return SqlToken{SqlToken::Kind::Symbol, text, 0, 0, 0}; }

bool isAggregate(const SqlToken& t) {
  for (const char16_t* f : {u"COUNT", u"SUM", u"AVG", u"MIN", u"MAX", u"LISTAGG", u"STDDEV", u"VARIANCE"})
    if (t.is(f))
      return true;
  return false;
}

// The view's query, taken apart: its table, its condition, and which table column each of its
// columns is ("" for one it computes).
struct Definition {
  QString owner, table, alias;
  std::vector<SqlToken> condition;
  QHash<QString, QString> columns; // view column -> table column
  QStringList order;               // view columns in order
};

Definition define(LocalConnection& c, const QString& owner, const QString& view) {
  const QString text =
      sqliteValue(c.db(), QStringLiteral("SELECT text FROM CAT.views WHERE owner = ?1 AND view_name = ?2"),
                  {owner, view})
          .toString();
  const std::vector<SqlToken> t = tokenizeSql(text);
  if (!t.front().is(u"SELECT") || t[1].is(u"DISTINCT") || t[1].is(u"UNIQUE"))
    notLegal();
  size_t from = 0;
  int depth = 0;
  for (size_t i = 1; i < t.size() && !from; ++i) {
    depth += t[i].is(u"(") ? 1 : t[i].is(u")") ? -1 : 0;
    if (isAggregate(t[i]) && i + 1 < t.size() && t[i + 1].is(u"("))
      notLegal();
    if (depth == 0 && t[i].is(u"FROM"))
      from = i;
  }
  if (!from)
    notLegal();
  Definition d;
  TokenCursor cur(t, from + 1);
  if (!cur.peek().isName())
    notLegal(); // a subquery
  std::tie(d.owner, d.table) = cur.qualifiedName();
  if (d.owner.isEmpty())
    d.owner = owner;
  if (cur.peek().isName() && !cur.peek().is(u"WHERE"))
    d.alias = cur.next().name();
  if (cur.accept(u"WHERE")) {
    depth = 0;
    for (size_t i = cur.pos(); t[i].kind != SqlToken::Kind::End; ++i) {
      depth += t[i].is(u"(") ? 1 : t[i].is(u")") ? -1 : 0;
      if (depth == 0 && (t[i].is(u"GROUP") || t[i].is(u"CONNECT") || t[i].is(u"UNION") || t[i].is(u"MINUS") ||
                         t[i].is(u"INTERSECT") || t[i].is(u"ORDER") || t[i].is(u"START")))
        notLegal();
      // The view's own qualifiers go: the statement names the table its own way.
      if (t[i].isName() && t[i + 1].is(u".") && (t[i].name() == d.alias || t[i].name() == d.table)) {
        ++i;
        continue;
      }
      d.condition.push_back(t[i]);
    }
  } else if (!cur.atEnd()) {
    notLegal(); // a join, GROUP BY, a set operation
  }
  // The view's columns, as the dictionary lists them, against its select list.
  SqliteStmt names(c.db(), QStringLiteral("SELECT column_name FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                          "ORDER BY column_id"));
  names.bindAll({owner, view});
  while (names.step())
    d.order << names.text(0);
  if (t[1].is(u"*") && t[2].is(u"FROM")) {
    for (const QString& n : d.order)
      d.columns.insert(n, n);
    return d;
  }
  qsizetype item = 0;
  for (size_t i = 1; i < from; ++item) {
    size_t end = i;
    for (depth = 0; end < from && !(depth == 0 && t[end].is(u",")); ++end)
      depth += t[end].is(u"(") ? 1 : t[end].is(u")") ? -1 : 0;
    size_t k = i;
    if (k + 2 < end && t[k + 1].is(u".") && t[k].isName())
      k += 2; // a qualifier
    const bool plain =
        t[k].isName() && (k + 1 == end || (k + 2 == end && t[k + 1].isName()) || (k + 3 == end && t[k + 1].is(u"AS")));
    if (item < d.order.size())
      d.columns.insert(d.order[item], plain ? t[k].name() : QString());
    i = end + 1;
  }
  return d;
}

} // namespace

std::vector<SqlToken> ViewDml::rewrite(LocalConnection& c, const std::vector<SqlToken>& t, size_t targetBegin,
                                       size_t targetEnd, const QString& owner, const QString& view) {
  if (sqliteValue(c.db(),
                  QStringLiteral("SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2 AND "
                                 "constraint_type IN ('O', 'V')"),
                  {owner, view})
          .isValid()) {
    if (sqliteValue(c.db(),
                    QStringLiteral("SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2 AND "
                                   "constraint_type = 'O'"),
                    {owner, view})
            .isValid())
      throw OraError(42399, QStringLiteral("cannot perform a DML operation on a read-only view"));
    throw OraError(3001, QStringLiteral("unimplemented feature")); // WITH CHECK OPTION
  }
  const Definition d = define(c, owner, view);
  const bool inserting = t[0].is(u"INSERT");
  std::vector<SqlToken> r;
  r.insert(r.end(), t.begin(), t.begin() + qsizetype(targetBegin));
  r.push_back(quoted(d.owner));
  r.push_back(symbol(QStringLiteral(".")));
  r.push_back(quoted(d.table));
  size_t i = targetEnd;
  QString alias = view;
  if (!inserting && t[i].isName() && !t[i].is(u"SET") && !t[i].is(u"WHERE"))
    alias = t[i++].name();
  if (!inserting)
    r.push_back(quoted(alias));
  if (inserting && !t[i].is(u"(")) {
    // No column list: the view's columns, in its order.
    r.push_back(symbol(QStringLiteral("(")));
    for (qsizetype k = 0; k < d.order.size(); ++k) {
      if (d.columns.value(d.order[k]).isEmpty())
        throw OraError(1733, QStringLiteral("virtual column not allowed here"));
      if (k)
        r.push_back(symbol(QStringLiteral(",")));
      r.push_back(quoted(d.columns.value(d.order[k])));
    }
    r.push_back(symbol(QStringLiteral(")")));
  }
  const size_t rest = r.size();
  size_t where = 0; // the statement's own WHERE
  int depth = 0;
  for (; t[i].kind != SqlToken::Kind::End; ++i) {
    depth += t[i].is(u"(") ? 1 : t[i].is(u")") ? -1 : 0;
    if (depth == 0 && t[i].is(u"WHERE") && !where)
      where = r.size();
    r.push_back(t[i]);
  }
  // The view's column names become the table's.
  for (size_t k = rest; k < r.size(); ++k) {
    if (!r[k].isName() || (k > 0 && r[k - 1].is(u".") && !(k > 1 && r[k - 2].isName() && r[k - 2].name() == alias)))
      continue;
    const auto it = d.columns.constFind(r[k].name());
    if (it == d.columns.constEnd())
      continue;
    if (it->isEmpty())
      throw OraError(1733, QStringLiteral("virtual column not allowed here"));
    r[k] = quoted(*it);
  }
  if (!inserting && !d.condition.empty()) {
    if (where) {
      r.insert(r.begin() + qsizetype(where) + 1, symbol(QStringLiteral("(")));
      r.push_back(symbol(QStringLiteral(")")));
      r.push_back(word(QStringLiteral("AND")));
    } else {
      r.push_back(word(QStringLiteral("WHERE")));
    }
    r.push_back(symbol(QStringLiteral("(")));
    r.insert(r.end(), d.condition.begin(), d.condition.end());
    r.push_back(symbol(QStringLiteral(")")));
  }
  r.push_back(SqlToken{});
  return r;
}
