#include "db/local/HierarchicalQueries.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"
#include "db/local/SqlTranslator.h"
#include "db/local/TokenCursor.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstring>

namespace HierarchicalQueries {

namespace {

const QString Tree = QStringLiteral("\"DBSWEEP$H\"");
const QString Parent = QStringLiteral("\"DBSWEEP$P\"");
const QString Numbered = QStringLiteral("\"DBSWEEP$B\"");

// A piece of SQLite SQL that passes through the translation as it is. Each piece is complete in
// itself (its parentheses closed), so that the translation reads the tokens around it as it
// reads any operand.
SqlToken raw(const QString& sql) { return SqlToken{SqlToken::Kind::Symbol, sql, 0, 0, 0}; }

// Oracle SQL written here, translated like the statement's own.
Tokens oracle(const QString& sql) {
  Tokens t = tokenizeSql(sql);
  t.pop_back();
  return t;
}

void append(Tokens& out, const Tokens& more) { out.insert(out.end(), more.begin(), more.end()); }

bool isClauseStart(const Tokens& t, size_t k, size_t end) {
  const bool by = k + 1 < end && t[k + 1].is(u"BY");
  return t[k].is(u"FROM") || t[k].is(u"WHERE") || t[k].is(u"HAVING") ||
         (t[k].is(u"START") && k + 1 < end && t[k + 1].is(u"WITH")) ||
         ((t[k].is(u"CONNECT") || t[k].is(u"GROUP")) && by) ||
         (t[k].is(u"ORDER") && (by || (k + 2 < end && t[k + 1].is(u"SIBLINGS") && t[k + 2].is(u"BY"))));
}

// The clauses of one query block: where each starts (at its first word) and ends.
struct Clauses {
  struct Span {
    size_t at = 0, begin = 0, end = 0; // at: the clause's word; [begin, end): what follows it
    explicit operator bool() const { return at != 0; }
  };
  Span from, where, start, connect, group, order;
  bool nocycle = false, siblings = false;
};

Clauses clausesOf(const Tokens& t, size_t select, size_t end) {
  Clauses c;
  std::vector<size_t> starts;
  int depth = 0;
  for (size_t k = select + 1; k < end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && isClauseStart(t, k, end))
      starts.push_back(k);
  }
  starts.push_back(end);
  for (size_t n = 0; n + 1 < starts.size(); ++n) {
    const size_t at = starts[n];
    const size_t next = starts[n + 1];
    const auto span = [&](size_t words) { return Clauses::Span{at, at + words, next}; };
    if (t[at].is(u"FROM"))
      c.from = span(1);
    else if (t[at].is(u"WHERE"))
      c.where = span(1);
    else if (t[at].is(u"START"))
      c.start = span(2);
    else if (t[at].is(u"CONNECT")) {
      c.nocycle = at + 2 < next && t[at + 2].is(u"NOCYCLE");
      c.connect = span(c.nocycle ? 3 : 2);
    } else if (t[at].is(u"GROUP") || t[at].is(u"HAVING")) {
      if (!c.group)
        c.group = span(0);
      c.group.end = next;
    } else {
      c.siblings = t[at + 1].is(u"SIBLINGS");
      c.order = span(c.siblings ? 3 : 2);
    }
  }
  return c;
}

bool hasConnectBy(const Tokens& t, size_t select, size_t end) {
  int depth = 0;
  for (size_t k = select + 1; k + 1 < end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(u"CONNECT") && t[k + 1].is(u"BY"))
      return true;
  }
  return false;
}

// Past the operand of PRIOR or CONNECT_BY_ROOT at k: a name, a dotted name, a call or a
// parenthesised expression.
size_t afterOperand(const Tokens& t, size_t k, size_t end) {
  if (k >= end || !(t[k].isName() || t[k].is(u"(")))
    TokenCursor::fail(936);
  if (t[k].is(u"("))
    return QueryBlock::closing(t, k, end);
  size_t e = k + 1;
  while (e + 1 < end && t[e].is(u".") && t[e + 1].isName())
    e += 2;
  if (e < end && t[e].is(u"("))
    e = QueryBlock::closing(t, e, end);
  return e;
}

class Rewriter final {
public:
  Rewriter(const Tokens& t, const ColumnsOf& columnsOf) : m_t(t), m_columnsOf(columnsOf) {}

  void range(size_t begin, size_t end, Tokens& out) {
    QueryBlock::copyRewriting(
        m_t, begin, end, out, [this](size_t select, size_t from, size_t to, Tokens& written) -> std::optional<size_t> {
          const size_t blockEnd = QueryBlock::read(m_t, select, to).end;
          if (!hasConnectBy(m_t, select, blockEnd))
            return std::nullopt;
          // Each block has a walk of its own, also one in a subquery of another's.
          Rewriter(m_t, m_columnsOf).block(select, blockEnd, !(select == from && blockEnd == to), written);
          return blockEnd;
        });
  }

private:
  // An expression the query asks of a row's ancestors, and the column of the tree that keeps it.
  struct Carried {
    size_t begin, end;   // the expression
    size_t sepBegin = 0; // SYS_CONNECT_BY_PATH: its separator
    QString column;
  };

  void block(size_t select, size_t end, bool wrap, Tokens& out) {
    const Clauses c = clausesOf(m_t, select, end);
    if (!c.from)
      TokenCursor::fail(923);
    readFromItem(c.from.begin, c.from.end);
    const bool numbered = c.siblings || !m_columnsOf(source(), true);
    m_id = numbered ? m_alias + QStringLiteral(".\"DBSWEEP$ID\"") : m_alias + QStringLiteral(".rowid");
    m_numbered = numbered;
    m_nocycle = c.nocycle;
    m_prior = containsToken(m_t, c.connect.begin, c.connect.end, u"PRIOR");

    // The select list, WHERE, GROUP BY and ORDER BY, over the rows of the tree.
    Tokens items;
    selectList(select, c.from.at, items);
    Tokens where, group, order;
    if (c.where)
      outer(c.where.begin, c.where.end, where);
    if (c.group)
      outer(c.group.at, c.group.end, group);
    if (c.order && !c.siblings)
      outer(c.order.begin, c.order.end, order);
    // The CONNECT BY condition reads a row's parent through the parent's columns of the tree.
    Tokens condition;
    for (size_t k = c.connect.begin; k < c.connect.end;) {
      if (m_t[k].is(u"PRIOR")) {
        const size_t e = afterOperand(m_t, k + 1, c.connect.end);
        append(condition, oracle(Parent + u'.' + carry(m_priors, k + 1, e, QStringLiteral("PRIOR$"))));
        k = e;
      } else if (m_t[k].is(u"LEVEL")) {
        append(condition, oracle(QStringLiteral("(%1.\"LEVEL\" + 1)").arg(Parent)));
        ++k;
      } else {
        condition.push_back(m_t[k++]);
      }
    }

    if (wrap) {
      out.push_back(raw(QStringLiteral("SELECT * FROM")));
      out.push_back(sym(u"("));
    }
    out.push_back(raw(QStringLiteral("WITH RECURSIVE")));
    if (numbered) {
      out.push_back(raw(Numbered + QStringLiteral(" AS")));
      out.push_back(sym(u"("));
      out.push_back(raw(QStringLiteral("SELECT %1.*, ROW_NUMBER() OVER").arg(m_alias)));
      out.push_back(sym(u"("));
      if (c.siblings) {
        append(out, oracle(QStringLiteral("ORDER BY")));
        range(c.order.begin, c.order.end, out);
      }
      out.push_back(sym(u")"));
      out.push_back(raw(QStringLiteral("AS \"DBSWEEP$ID\" FROM")));
      append(out, source());
      out.push_back(raw(m_alias));
      out.push_back(sym(u")"));
      out.push_back(sym(u","));
    }
    QStringList columns{QStringLiteral("\"DBSWEEP$ID\""), QStringLiteral("\"DBSWEEP$KEY\""),
                        QStringLiteral("\"LEVEL\""), QStringLiteral("\"DBSWEEP$CYCLE\"")};
    for (const auto* list : {&m_priors, &m_roots, &m_paths})
      for (const Carried& carried : *list)
        columns << carried.column;
    for (const Carried& prior : m_priors)
      if (m_parentUses.contains(prior.column))
        columns << QStringLiteral("\"UP$") + prior.column.mid(7);
    out.push_back(raw(QStringLiteral("%1(%2) AS").arg(Tree, columns.join(QStringLiteral(", ")))));
    out.push_back(sym(u"("));
    // The path: the identities of the row and its ancestors, of one width so that it sorts. A
    // walk without PRIOR, the row generator of CONNECT BY LEVEL <= n, joins every row to every
    // row of the level before and has no loop to find: its rows go by LEVEL, which keeps the
    // path from growing with the depth.
    const QString rootKey = m_prior ? QStringLiteral("dbsweep_child_key('/', %1)").arg(m_id) : QStringLiteral("1");
    const QString childKey = m_prior ? QStringLiteral("dbsweep_child_key(%1.\"DBSWEEP$KEY\", %2)").arg(Parent, m_id)
                                     : QStringLiteral("%1.\"LEVEL\" + 1").arg(Parent);
    // The roots.
    out.push_back(raw(QStringLiteral("SELECT %1, %2, 1, 0").arg(m_id, rootKey)));
    carried(false, out);
    out.push_back(raw(QStringLiteral("FROM")));
    append(out, treeSource());
    if (c.start) {
      out.push_back(raw(QStringLiteral("WHERE")));
      range(c.start.begin, c.start.end, out);
    }
    // Their children, and theirs. A child already on its parent's path closes a loop.
    const QString function = c.nocycle ? QStringLiteral("dbsweep_on_path") : QStringLiteral("dbsweep_no_loop");
    const QString loop =
        m_prior ? QStringLiteral("%1(%2.\"DBSWEEP$KEY\", %3)").arg(function, Parent, m_id) : QStringLiteral("0");
    out.push_back(
        raw(QStringLiteral("UNION ALL SELECT %1, %2, %3.\"LEVEL\" + 1, %4").arg(m_id, childKey, Parent, loop)));
    carried(true, out);
    out.push_back(raw(QStringLiteral("FROM %1 AS %2 JOIN").arg(Tree, Parent)));
    append(out, treeSource());
    out.push_back(raw(QStringLiteral("ON")));
    out.push_back(sym(u"("));
    Rewriter(condition, m_columnsOf).range(0, condition.size(), out);
    out.push_back(sym(u")"));
    out.push_back(raw(QStringLiteral("WHERE %1.\"DBSWEEP$CYCLE\" = 0").arg(Parent)));
    out.push_back(sym(u")"));

    out.push_back(m_t[select]);
    append(out, items);
    append(out, oracle(QStringLiteral("FROM")));
    out.push_back(raw(QStringLiteral("%1 CROSS JOIN").arg(Tree)));
    append(out, treeSource());
    out.push_back(raw(QStringLiteral("ON %1 = %2.\"DBSWEEP$ID\"").arg(m_id, Tree)));
    append(out, oracle(QStringLiteral("WHERE")));
    if (!where.empty()) {
      out.push_back(sym(u"("));
      append(out, where);
      out.push_back(sym(u")"));
      append(out, oracle(QStringLiteral("AND")));
    }
    // A loop fails the walk where it is found, whatever WHERE keeps, as in Oracle; under NOCYCLE
    // the row that closes it stays in the tree for CONNECT_BY_ISCYCLE, but is no row of the query.
    out.push_back(raw(QStringLiteral("%1.\"DBSWEEP$CYCLE\" = 0").arg(Tree)));
    append(out, group);
    // Without an order of its own the query gives the rows depth first, as Oracle walks them.
    const bool distinct = m_t[select + 1].is(u"DISTINCT") || m_t[select + 1].is(u"UNIQUE");
    if (!c.group && !distinct) {
      append(out, oracle(QStringLiteral("ORDER BY")));
      if (!order.empty()) {
        append(out, order);
        out.push_back(sym(u","));
      }
      out.push_back(raw(Tree + QStringLiteral(".\"DBSWEEP$KEY\"")));
    } else if (!order.empty()) {
      append(out, oracle(QStringLiteral("ORDER BY")));
      append(out, order);
    }
    if (wrap)
      out.push_back(sym(u")"));
  }

  static SqlToken sym(const char16_t* s) { return SqlToken{SqlToken::Kind::Symbol, QString::fromUtf16(s), 0, 0, 0}; }

  // The one FROM item a hierarchical query may have: a table, view or subquery, with its alias.
  void readFromItem(size_t begin, size_t end) {
    size_t k = begin;
    if (m_t[k].is(u"(")) {
      k = QueryBlock::closing(m_t, k, end);
    } else {
      if (!m_t[k].isName())
        TokenCursor::fail(903);
      ++k;
      while (k + 1 < end && m_t[k].is(u".") && m_t[k + 1].isName())
        k += 2;
    }
    m_sourceBegin = begin;
    m_sourceEnd = k;
    QString alias = m_t[k - 1].isName() ? m_t[k - 1].name() : QStringLiteral("DBSWEEP$S");
    if (k < end && m_t[k].isName()) {
      alias = m_t[k].name();
      ++k;
    }
    // A join before the walk would have to be made first, which the walk here does not do.
    if (k < end)
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    m_alias = SqlTranslator::quoteName(alias);
  }

  Tokens source() const {
    Tokens s(m_t.begin() + qsizetype(m_sourceBegin), m_t.begin() + qsizetype(m_sourceEnd));
    Rewriter inner(s, m_columnsOf);
    Tokens out;
    inner.range(0, s.size(), out);
    return out;
  }

  // The FROM item as the tree's queries read it: the item itself, or its numbered copy.
  Tokens treeSource() const {
    if (m_numbered)
      return {raw(Numbered + u' ' + m_alias)};
    Tokens s = source();
    s.push_back(raw(m_alias));
    return s;
  }

  // Adds an expression to a list of those the tree carries; the name of its column.
  QString carry(std::vector<Carried>& list, size_t begin, size_t end, const QString& prefix) {
    const QString label = SqlTranslator::labelOf(m_t, begin, end);
    for (const Carried& c : list)
      if (SqlTranslator::labelOf(m_t, c.begin, c.end) == label)
        return c.column;
    list.push_back({begin, end, 0, QStringLiteral("\"%1%2\"").arg(prefix).arg(list.size() + 1)});
    return list.back().column;
  }

  // The carried columns of a row of the tree, a root's or a child's.
  void carried(bool child, Tokens& out) {
    for (const Carried& prior : m_priors) {
      out.push_back(sym(u","));
      range(prior.begin, prior.end, out);
    }
    for (const Carried& root : m_roots) {
      out.push_back(sym(u","));
      if (child)
        out.push_back(raw(Parent + u'.' + root.column));
      else
        range(root.begin, root.end, out);
    }
    for (const Carried& path : m_paths) {
      out.push_back(sym(u","));
      // The parent's path, the separator and the value, joined as || joins them.
      out.push_back(raw(QStringLiteral("dbsweep_concat")));
      out.push_back(sym(u"("));
      if (child) {
        out.push_back(raw(Parent + u'.' + path.column));
        out.push_back(sym(u","));
      }
      range(path.sepBegin, path.end, out);
      out.push_back(sym(u","));
      range(path.begin, path.sepBegin - 1, out);
      out.push_back(sym(u")"));
    }
    for (const Carried& prior : m_priors)
      if (m_parentUses.contains(prior.column)) {
        out.push_back(sym(u","));
        out.push_back(raw(child ? Parent + u'.' + prior.column : QStringLiteral("NULL")));
      }
  }

  // A part of the query over the tree's rows: the tree's functions read its columns.
  void outer(size_t begin, size_t end, Tokens& out) {
    for (size_t k = begin; k < end;) {
      if (m_t[k].is(u"CONNECT_BY_ROOT")) {
        const size_t e = afterOperand(m_t, k + 1, end);
        out.push_back(raw(Tree + u'.' + carry(m_roots, k + 1, e, QStringLiteral("ROOT$"))));
        m_replaced = true;
        k = e;
      } else if (m_t[k].is(u"PRIOR")) {
        const size_t e = afterOperand(m_t, k + 1, end);
        const QString column = carry(m_priors, k + 1, e, QStringLiteral("PRIOR$"));
        m_parentUses << column;
        out.push_back(raw(Tree + QStringLiteral(".\"UP$") + column.mid(7)));
        m_replaced = true;
        k = e;
      } else if (m_t[k].is(u"CONNECT_BY_ISLEAF") || m_t[k].is(u"CONNECT_BY_ISCYCLE")) {
        const bool leaf = m_t[k].is(u"CONNECT_BY_ISLEAF");
        if (!leaf && !m_nocycle)
          throw OraError(30930, QStringLiteral("NOCYCLE keyword is required with CONNECT_BY_ISCYCLE pseudocolumn"));
        // A row's children are the rows whose path is its path and one identity more: a leaf has
        // none, and a row in a cycle has one that stands for an ancestor. Without PRIOR every row
        // of a level has the rows of the next for children.
        if (leaf && !m_prior)
          out.push_back(
              raw(QStringLiteral("(CASE WHEN %1.\"LEVEL\" + 1 IN (SELECT c.\"LEVEL\" FROM %1 c) THEN 0 ELSE 1 END)")
                      .arg(Tree)));
        else
          out.push_back(raw(QStringLiteral("(CASE WHEN %1.\"DBSWEEP$KEY\" IN (SELECT substr(c.\"DBSWEEP$KEY\", 1, "
                                           "length(c.\"DBSWEEP$KEY\") - 13) FROM %1 c WHERE c.\"DBSWEEP$CYCLE\" = %2 "
                                           "AND c.\"LEVEL\" > 1) THEN %3 ELSE %4 END)")
                                .arg(Tree, leaf ? QStringLiteral("0") : QStringLiteral("1"),
                                     leaf ? QStringLiteral("0") : QStringLiteral("1"),
                                     leaf ? QStringLiteral("1") : QStringLiteral("0"))));
        m_replaced = true;
        ++k;
      } else if (m_t[k].is(u"SYS_CONNECT_BY_PATH") && k + 1 < end && m_t[k + 1].is(u"(")) {
        const size_t close = QueryBlock::closing(m_t, k + 1, end);
        const auto args = QueryBlock::split(m_t, k + 2, close - 1);
        if (args.size() != 2)
          TokenCursor::fail(909);
        const size_t before = m_paths.size();
        const QString column = carry(m_paths, args[0].begin, args[1].end, QStringLiteral("PATH$"));
        if (m_paths.size() > before)
          m_paths.back().sepBegin = args[1].begin;
        out.push_back(raw(Tree + u'.' + column));
        m_replaced = true;
        k = close;
      } else if (m_t[k].is(u"(")) {
        const size_t close = QueryBlock::closing(m_t, k, end) - 1;
        out.push_back(m_t[k]);
        Tokens inside;
        outer(k + 1, close, inside);
        append(out, inside);
        if (close < end)
          out.push_back(m_t[close]);
        k = close + 1;
      } else if (m_t[k].is(u"SELECT")) {
        const size_t blockEnd = QueryBlock::read(m_t, k, end).end;
        range(k, blockEnd, out);
        k = blockEnd;
      } else {
        out.push_back(m_t[k++]);
      }
    }
  }

  // The select list: an item the tree's columns replace keeps Oracle's label, and * stands for
  // the FROM item's columns, without the number a numbered copy adds.
  void selectList(size_t select, size_t end, Tokens& out) {
    size_t listBegin = select + 1;
    if (m_t[listBegin].is(u"DISTINCT") || m_t[listBegin].is(u"UNIQUE") || m_t[listBegin].is(u"ALL"))
      out.push_back(m_t[listBegin++]);
    const auto parts = QueryBlock::split(m_t, listBegin, end);
    const auto bareItems = QueryBlock::read(m_t, select, end).items;
    if (bareItems.size() != parts.size())
      TokenCursor::fail(936);
    for (size_t n = 0; n < parts.size(); ++n) {
      if (n)
        out.push_back(sym(u","));
      const QueryBlock::Range item = parts[n];
      const bool star = (item.end == item.begin + 1 && m_t[item.begin].is(u"*")) ||
                        (item.end == item.begin + 3 && m_t[item.begin + 2].is(u"*"));
      if (star) {
        if (!m_numbered) {
          out.push_back(raw(m_alias + QStringLiteral(".*")));
          continue;
        }
        const auto names = m_columnsOf(source(), false);
        if (!names)
          TokenCursor::fail(942);
        QStringList columns;
        for (const QString& name : *names)
          columns << m_alias + u'.' + SqlTranslator::quoteName(name);
        append(out, oracle(columns.join(QStringLiteral(", "))));
        continue;
      }
      const QueryBlock::Range bare = bareItems.at(n);
      m_replaced = false;
      outer(bare.begin, bare.end, out);
      if (bare.end != item.end) {
        out.push_back(SqlToken{SqlToken::Kind::Word, QStringLiteral("AS"), 0, 0, 0});
        out.push_back(m_t[item.end - 1]);
      } else if (m_replaced) {
        out.push_back(SqlToken{SqlToken::Kind::Word, QStringLiteral("AS"), 0, 0, 0});
        out.push_back(SqlToken{SqlToken::Kind::Quoted, SqlTranslator::labelOf(m_t, item.begin, item.end), 0, 0, 0});
      }
    }
  }

  const Tokens& m_t;
  const ColumnsOf& m_columnsOf;
  size_t m_sourceBegin = 0, m_sourceEnd = 0;
  QString m_alias, m_id;
  bool m_numbered = false;
  bool m_nocycle = false;
  bool m_prior = false;    // the CONNECT BY condition reads the parent row
  bool m_replaced = false; // the tree's columns stand for something in the item just read
  std::vector<Carried> m_priors, m_roots, m_paths;
  QStringList m_parentUses;
};

// A row's identity as the path holds it: twelve digits, so that paths sort as the walk goes.
// Written out by hand: this runs twice for each row of a walk, and snprintf took most of the
// time of both functions.
struct PathStep {
  char text[24];
  int size = 12;
  explicit PathStep(sqlite3_value* id) {
    sqlite3_int64 n = sqlite3_value_int64(id);
    if (n < 0 || n >= 1'000'000'000'000) {
      size = std::snprintf(text, sizeof text, "%012lld", n);
      return;
    }
    for (int k = size - 1; k >= 0; --k, n /= 10)
      text[k] = char('0' + n % 10);
  }
};

QByteArrayView textOf(sqlite3_value* v) {
  return {reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v)};
}

// The path of a row: its parent's path, then its identity and a slash.
void childKey(sqlite3_context* ctx, int, sqlite3_value** argv) {
  const QByteArrayView parent = textOf(argv[0]);
  const PathStep step(argv[1]);
  const qsizetype size = parent.size() + step.size + 1;
  auto* key = static_cast<char*>(sqlite3_malloc64(size));
  if (!key)
    return sqlite3_result_error_nomem(ctx);
  std::memcpy(key, parent.data(), parent.size());
  std::memcpy(key + parent.size(), step.text, step.size);
  key[size - 1] = '/';
  sqlite3_result_text64(ctx, key, size, sqlite3_free, SQLITE_UTF8);
}

// Whether a row's identity is on a path already: the row is its own ancestor, a CONNECT BY loop,
// which fails the query unless it says NOCYCLE.
template <bool Fail> void onPath(sqlite3_context* ctx, int, sqlite3_value** argv) {
  const QByteArrayView path = textOf(argv[0]);
  const PathStep step(argv[1]);
  char needle[sizeof step.text + 2] = {'/'};
  std::memcpy(needle + 1, step.text, step.size);
  needle[step.size + 1] = '/';
  const bool loop = path.indexOf(QByteArrayView(needle, step.size + 2)) >= 0;
  if (Fail && loop)
    return sqlite3_result_error(ctx, "ORA-01436: CONNECT BY loop in user data", -1);
  sqlite3_result_int(ctx, loop);
}

} // namespace

bool contains(const Tokens& t, size_t begin, size_t end) {
  for (size_t k = begin; k + 1 < end; ++k)
    if (t[k].is(u"CONNECT") && t[k + 1].is(u"BY"))
      return true;
  return false;
}

Tokens rewrite(const Tokens& t, size_t begin, size_t end, const ColumnsOf& columnsOf) {
  Tokens out;
  Rewriter(t, columnsOf).range(begin, withoutEndTokens(t, begin, end), out);
  out.push_back(SqlToken{});
  return out;
}

void registerFunctions(sqlite3* db) {
  const int pure = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  sqlite3_create_function_v2(db, "dbsweep_child_key", 2, pure, nullptr, childKey, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_on_path", 2, pure, nullptr, onPath<false>, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "dbsweep_no_loop", 2, pure, nullptr, onPath<true>, nullptr, nullptr, nullptr);
}

} // namespace HierarchicalQueries
