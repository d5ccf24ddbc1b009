#include "db/local/SqlTranslator.h"

#include "db/OraError.h"
#include "db/local/CastFunction.h"
#include "db/local/CompoundCheck.h"
#include "db/local/FetchLimits.h"
#include "db/local/GroupingCheck.h"
#include "db/local/GroupingSets.h"
#include "db/local/HierarchicalQueries.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"
#include "db/local/OrderedAggregates.h"
#include "db/local/Pivots.h"
#include "db/local/QuantifiedComparisons.h"
#include "db/local/QueryBlock.h"
#include "db/local/RownumLimits.h"
#include "db/local/SyntaxCheck.h"
#include "db/local/TypedLiterals.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace {

const QSet<QString>& keywords() {
  static const QSet<QString> words = {
      QStringLiteral("SELECT"),   QStringLiteral("FROM"),   QStringLiteral("WHERE"),   QStringLiteral("AND"),
      QStringLiteral("OR"),       QStringLiteral("NOT"),    QStringLiteral("NULL"),    QStringLiteral("IN"),
      QStringLiteral("IS"),       QStringLiteral("LIKE"),   QStringLiteral("ESCAPE"),  QStringLiteral("BETWEEN"),
      QStringLiteral("EXISTS"),   QStringLiteral("UNION"),  QStringLiteral("ALL"),     QStringLiteral("INTERSECT"),
      QStringLiteral("DISTINCT"), QStringLiteral("ORDER"),  QStringLiteral("BY"),      QStringLiteral("GROUP"),
      QStringLiteral("HAVING"),   QStringLiteral("AS"),     QStringLiteral("ON"),      QStringLiteral("JOIN"),
      QStringLiteral("INNER"),    QStringLiteral("LEFT"),   QStringLiteral("RIGHT"),   QStringLiteral("FULL"),
      QStringLiteral("OUTER"),    QStringLiteral("CROSS"),  QStringLiteral("NATURAL"), QStringLiteral("USING"),
      QStringLiteral("CASE"),     QStringLiteral("WHEN"),   QStringLiteral("THEN"),    QStringLiteral("ELSE"),
      QStringLiteral("END"),      QStringLiteral("ASC"),    QStringLiteral("DESC"),    QStringLiteral("NULLS"),
      QStringLiteral("INSERT"),   QStringLiteral("INTO"),   QStringLiteral("VALUES"),  QStringLiteral("UPDATE"),
      QStringLiteral("SET"),      QStringLiteral("DELETE"), QStringLiteral("WITH"),    QStringLiteral("DEFAULT"),
      QStringLiteral("ANY"),      QStringLiteral("SOME")};
  return words;
}

// Oracle functions that SQLite spells differently.
QString functionName(const QString& upper) {
  if (upper == u"NVL")
    return QStringLiteral("COALESCE");
  return upper;
}

// A number literal as SQLite reads it: its own text where an integer or a double holds it, a
// conversion of its exact text otherwise (a wide NUMBER); ORA-01426 beyond NUMBER's range, zero
// below it. A fraction of 16 or 17 digits is converted too, so that the statement knows its
// double for a number of its own and never shows a wide value's digits for it.
QString numberLiteral(const QString& text) {
  const bool digitsOnly = std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit() || c == u'.'; });
  if (digitsOnly && (text.size() <= 15 || (text.size() <= 18 && !text.contains(u'.'))))
    return text;
  const OracleNumber::Value v = OracleNumber::fromText(text);
  if (v.isWide())
    return QStringLiteral("TO_NUMBER(%1)").arg(SqlTranslator::quoteText(QString::fromLatin1(v.wide)));
  if (v.isInteger)
    return QString::number(v.integer);
  if (OracleNumber::Decimal::from(v).digits().size() > 15)
    return QStringLiteral("TO_NUMBER(%1)").arg(SqlTranslator::quoteText(text));
  return text;
}

// Whether the number at k is a whole item of a GROUP BY list.
bool isGroupingConstant(const std::vector<SqlToken>& t, size_t k, size_t end) {
  const bool alone = k > 0 && (t[k - 1].is(u",") || t[k - 1].is(u"BY")) &&
                     (k + 1 >= end || t[k + 1].is(u",") || t[k + 1].is(u")") || t[k + 1].kind == SqlToken::Kind::End ||
                      t[k + 1].is(u"HAVING") || t[k + 1].is(u"ORDER") || QueryBlock::isSetOperator(t[k + 1]));
  if (!alone)
    return false;
  int depth = 0;
  for (size_t j = k; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if (t[j].is(u"(") && depth-- == 0)
      return false;
    else if (depth == 0 && t[j].is(u"BY"))
      return j > 0 && t[j - 1].is(u"GROUP");
    else if (depth == 0 && (t[j].is(u"SELECT") || t[j].is(u"WHERE") || t[j].is(u"HAVING")))
      return false;
  }
  return false;
}

bool isPseudoSequence(const SqlToken& t) {
  return t.kind == SqlToken::Kind::Word && (t.is(u"NEXTVAL") || t.is(u"CURRVAL"));
}

constexpr size_t NoEnd = size_t(-1);

bool isAdditive(const SqlToken& t) { return t.is(u"+") || t.is(u"-"); }

// Whether an operand can end with the token, so that a + or - after it is binary.
bool endsOperand(const SqlToken& t) {
  switch (t.kind) {
  case SqlToken::Kind::Number:
  case SqlToken::Kind::String:
  case SqlToken::Kind::Bind:
  case SqlToken::Kind::Quoted: return true;
  case SqlToken::Kind::Word: return !keywords().contains(t.upper()) || t.is(u"NULL") || t.is(u"END");
  case SqlToken::Kind::Symbol: return t.is(u")") || t.is(u"(+)");
  default: return false;
  }
}

// Past the parenthesis or CASE opened at i and what it holds, or NoEnd when it is never closed.
size_t afterGroup(const std::vector<SqlToken>& t, size_t i, size_t end) {
  int depth = 0;
  for (size_t k = i; k < end && t[k].kind != SqlToken::Kind::End; ++k) {
    if (t[k].is(u"(") || t[k].is(u"CASE"))
      ++depth;
    else if ((t[k].is(u")") || t[k].is(u"END")) && --depth == 0)
      return k + 1;
  }
  return NoEnd;
}

// The first token from `from` to `end` that is word outside any parentheses; end when none is.
size_t atTopLevel(const std::vector<SqlToken>& t, size_t from, size_t end, QStringView word) {
  for (int depth = 0; from < end && !(depth == 0 && t[from].is(word)); ++from)
    depth += t[from].is(u"(") ? 1 : t[from].is(u")") ? -1 : 0;
  return from;
}

// Past one operand of an operator: a literal, a name, a call, a CASE or a parenthesised
// expression; NoEnd when none starts at i.
size_t afterPrimary(const std::vector<SqlToken>& t, size_t i, size_t end) {
  if (i >= end)
    return NoEnd;
  const SqlToken& a = t[i];
  if (a.kind == SqlToken::Kind::Number || a.kind == SqlToken::Kind::String || a.kind == SqlToken::Kind::Bind ||
      a.is(u"NULL"))
    return i + 1;
  if (a.is(u"(") || a.is(u"CASE"))
    return afterGroup(t, i, end);
  if (const auto literal = TypedLiterals::end(t, i, end))
    return *literal;
  if (a.kind != SqlToken::Kind::Quoted && (a.kind != SqlToken::Kind::Word || keywords().contains(a.upper())))
    return NoEnd;
  size_t k = i + 1;
  while (k + 1 < end && t[k].is(u".") && (t[k + 1].isName() || t[k + 1].is(u"*")))
    k += 2;
  if (k < end && t[k].is(u"(+)"))
    return k + 1;
  if (k < end && t[k].is(u"(")) {
    k = afterGroup(t, k, end);
    if (k != NoEnd)
      k = QueryBlock::afterOrdering(t, k, end);
    // An analytic call: f(...) OVER (...)
    if (k != NoEnd && k + 1 < end && t[k].is(u"OVER") && t[k + 1].is(u"("))
      k = afterGroup(t, k + 1, end);
  }
  return k;
}

size_t afterSigns(const std::vector<SqlToken>& t, size_t i, size_t end) {
  while (i < end && isAdditive(t[i]))
    ++i;
  return i;
}

// Past a product: operands with their signs, joined by * and /.
size_t afterTerm(const std::vector<SqlToken>& t, size_t i, size_t end) {
  for (;;) {
    i = afterPrimary(t, afterSigns(t, i, end), end);
    if (i >= end || !(t[i].is(u"*") || t[i].is(u"/")))
      return i;
    ++i;
  }
}

// Past a sum: products joined by +, - and ||.
size_t afterSum(const std::vector<SqlToken>& t, size_t i, size_t end) {
  i = afterTerm(t, i, end);
  while (i != NoEnd && i < end && (isAdditive(t[i]) || t[i].is(u"||")))
    i = afterTerm(t, i + 1, end);
  return i;
}

bool isComparison(const SqlToken& t) {
  return t.kind == SqlToken::Kind::Symbol && (t.is(u"=") || t.is(u"<>") || t.is(u"!=") || t.is(u"^=") || t.is(u"<") ||
                                              t.is(u">") || t.is(u"<=") || t.is(u">="));
}

// Whether [begin, end) holds a TIMESTAMP or INTERVAL by the way it is written: a literal, or a
// function that returns one.
bool holdsTimestampOrInterval(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  for (size_t k = begin; k < end; ++k)
    if (((t[k].is(u"TIMESTAMP") || t[k].is(u"INTERVAL")) && k + 1 < end && t[k + 1].kind == SqlToken::Kind::String) ||
        t[k].is(u"SYSTIMESTAMP") || t[k].is(u"CURRENT_TIMESTAMP") || t[k].is(u"LOCALTIMESTAMP") ||
        t[k].is(u"TO_TIMESTAMP") || t[k].is(u"NUMTODSINTERVAL") || t[k].is(u"NUMTOYMINTERVAL") ||
        t[k].is(u"TO_DSINTERVAL") || t[k].is(u"TO_YMINTERVAL"))
      return true;
  return false;
}

bool isTextLiteral(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  return end == begin + 1 && t[begin].kind == SqlToken::Kind::String && !t[begin].text.isEmpty();
}

bool isNumberLiteral(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  begin = afterSigns(t, begin, end);
  return end == begin + 1 && t[begin].kind == SqlToken::Kind::Number;
}

// Whether the parenthesis at open holds values: a call's arguments or a VALUES list.
bool holdsValues(const std::vector<SqlToken>& t, size_t open) {
  return open > 0 && (t[open - 1].is(u"VALUES") ||
                      (t[open - 1].kind == SqlToken::Kind::Word && !keywords().contains(t[open - 1].upper())));
}

// Whether the comma at k separates values (select-list items, arguments, ORDER BY and VALUES
// items), not FROM items.
bool separatesValues(const std::vector<SqlToken>& t, size_t k) {
  int depth = 0;
  for (size_t j = k; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if (t[j].is(u"(") && depth-- == 0)
      return holdsValues(t, j);
    else if (depth == 0 && (t[j].is(u"FROM") || t[j].is(u"SELECT") || t[j].is(u"BY")))
      return !t[j].is(u"FROM");
  }
  return false;
}

// Whether a parenthesised query after the token is a value: a select-list item, an operand, a
// condition's side, an argument; not a FROM item nor the list of IN, EXISTS or ANY.
bool isScalarContext(const std::vector<SqlToken>& t, size_t before) {
  const SqlToken& p = t[before];
  if (isComparison(p) || isAdditive(p) || p.is(u"*") || p.is(u"/") || p.is(u"||"))
    return true;
  if (p.kind == SqlToken::Kind::Word)
    return p.is(u"SELECT") || p.is(u"DISTINCT") || p.is(u"THEN") || p.is(u"ELSE") || p.is(u"WHEN") || p.is(u"WHERE") ||
           p.is(u"AND") || p.is(u"OR") || p.is(u"NOT") || p.is(u"HAVING");
  if (p.is(u","))
    return separatesValues(t, before);
  return p.is(u"(") && holdsValues(t, before);
}

// Whether a declared SQLite type is one of Oracle's character types.
bool isTextType(const QString& declared) { return declared.contains(u"CHAR") || declared == u"CLOB"; }

// Words that close the list of an ORDER BY: the locking clause, row limits and window frames.
bool endsOrdering(const SqlToken& t) {
  return t.is(u"FOR") || t.is(u"OFFSET") || t.is(u"FETCH") || t.is(u"ROWS") || t.is(u"RANGE") || t.is(u"UNION") ||
         t.is(u"INTERSECT") || t.is(u"MINUS");
}

// Whether the token at stands directly within an analytic function's OVER (...).
bool insideWindow(const std::vector<SqlToken>& t, size_t at) {
  int depth = 0;
  for (size_t j = at; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if (t[j].is(u"(") && depth-- == 0)
      return j > 0 && t[j - 1].is(u"OVER");
  }
  return false;
}

// The words of a window clause, which are no names there.
bool isWindowWord(const QString& upper) {
  static const QSet<QString> words = {
      QStringLiteral("PARTITION"), QStringLiteral("ROWS"),      QStringLiteral("RANGE"),   QStringLiteral("UNBOUNDED"),
      QStringLiteral("PRECEDING"), QStringLiteral("FOLLOWING"), QStringLiteral("CURRENT"), QStringLiteral("ROW")};
  return words.contains(upper);
}

// Whether the token at stands within the arguments of an aggregate call.
bool insideAggregate(const std::vector<SqlToken>& t, size_t at) {
  int depth = 0;
  for (size_t j = at; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if (t[j].is(u"(") && depth > 0)
      --depth;
    else if (t[j].is(u"(") && j > 0 && QueryBlock::isAggregate(t[j - 1]))
      return true;
  }
  return false;
}

// Where the query block, UPDATE or DELETE holding the token at starts: past the parenthesis or
// set operator before it, or the statement's start.
size_t blockStart(const std::vector<SqlToken>& t, size_t at) {
  int depth = 0;
  for (size_t j = at; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if ((t[j].is(u"(") && depth-- == 0) || (depth == 0 && QueryBlock::isSetOperator(t[j])))
      return j + 1;
  }
  return 0;
}

// Oracle takes a sequence's values in the select list of a simple query, or in DML: not in a
// condition, a subquery, a grouped or DISTINCT query, nor a branch of UNION, INTERSECT or MINUS
// (ORA-02287).
// The range returned holds the references that share a row's number.
std::pair<size_t, size_t> sequenceScope(const std::vector<SqlToken>& t, size_t at) {
  const size_t start = blockStart(t, at);
  if (!t[start].is(u"SELECT"))
    return {0, t.size()};
  const QueryBlock::Block block = QueryBlock::read(t, start, t.size());
  const bool compound = (start > 0 && QueryBlock::isSetOperator(t[start - 1])) ||
                        (block.end < t.size() && QueryBlock::isSetOperator(t[block.end]));
  const bool subquery = start > 0 && t[start - 1].is(u"(");
  if (compound || subquery || block.group || (block.from && at > block.from) || t[start + 1].is(u"DISTINCT") ||
      t[start + 1].is(u"UNIQUE"))
    throw OraError(2287, QStringLiteral("sequence number not allowed here"));
  return {start, block.from ? block.from : block.end};
}

// Oracle takes a row's number for every NEXTVAL of the statement, even one in a branch the row
// does not take; SQLite evaluates only the branch taken, so a NEXTVAL in CASE or a function that
// picks one of its arguments is refused rather than numbered wrongly.
void checkUnconditional(const std::vector<SqlToken>& t, size_t scopeBegin, size_t at) {
  static const QSet<QString> choosers = {QStringLiteral("DECODE"), QStringLiteral("NVL"), QStringLiteral("NVL2"),
                                         QStringLiteral("COALESCE"), QStringLiteral("NULLIF")};
  std::vector<bool> conditional; // one for each open CASE or parenthesis
  for (size_t k = scopeBegin; k < at; ++k) {
    if (t[k].is(u"CASE"))
      conditional.push_back(true);
    else if (t[k].is(u"("))
      conditional.push_back(k > 0 && t[k - 1].kind == SqlToken::Kind::Word && choosers.contains(t[k - 1].upper()));
    else if ((t[k].is(u"END") || t[k].is(u")")) && !conditional.empty())
      conditional.pop_back();
  }
  if (std::find(conditional.begin(), conditional.end(), true) != conditional.end())
    throw OraError(3001, QStringLiteral("unimplemented feature"));
}

} // namespace

// The FROM items [first, second) of the query block, UPDATE or DELETE that token at belongs to.
std::optional<std::pair<size_t, size_t>> SqlTranslator::fromItems(const std::vector<SqlToken>& t, size_t at) {
  const size_t start = blockStart(t, at);
  size_t first = 0;
  int depth = 0;
  for (size_t k = start; k < t.size() && t[k].kind != SqlToken::Kind::End; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")") && --depth < 0)
      return first ? std::optional(std::pair(first, k)) : std::nullopt;
    if (depth != 0)
      continue;
    if (!first && (t[k].is(u"FROM") || (k == start && (t[k].is(u"UPDATE") || t[k].is(u"DELETE"))))) {
      first = k + 1;
      if (t[k].is(u"DELETE") && k + 1 < t.size() && t[k + 1].is(u"FROM"))
        ++first, ++k;
    } else if (first &&
               (t[k].is(u"WHERE") || t[k].is(u"GROUP") || t[k].is(u"HAVING") || t[k].is(u"ORDER") ||
                t[k].is(u"CONNECT") || t[k].is(u"START") || t[k].is(u"SET") || QueryBlock::isSetOperator(t[k]))) {
      return std::pair(first, k);
    }
  }
  return first ? std::optional(std::pair(first, t.size() - 1)) : std::nullopt;
}

QString SqlTranslator::quoteName(const QString& name) {
  QString out = name;
  out.replace(u'"', QStringLiteral("\"\""));
  return u'"' + out + u'"';
}

QString SqlTranslator::quoteText(const QString& text) {
  QString out = text;
  out.replace(u'\'', QStringLiteral("''"));
  return u'\'' + out + u'\'';
}

QString SqlTranslator::labelOf(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  QString label;
  for (size_t i = begin; i < end; ++i) {
    switch (t[i].kind) {
    case SqlToken::Kind::String: label += quoteText(t[i].text); break;
    case SqlToken::Kind::Quoted: label += t[i].text; break;
    default: label += t[i].text.toUpper();
    }
  }
  return label;
}

std::optional<QStringList> SqlTranslator::columnsOf(const std::vector<SqlToken>& item) const {
  if (!m_context.columnNames)
    return std::nullopt;
  SqlTranslator inner(*this);
  inner.m_probing = true;
  return m_context.columnNames(QStringLiteral("SELECT * FROM %1 WHERE 0").arg(inner.translate(item)));
}

QString SqlTranslator::translate(const std::vector<SqlToken>& t, size_t begin, size_t end) const {
  if (begin == 0 && !m_probing && !m_rownumDone && !m_rewritten) {
    SyntaxCheck::check(t);
    CompoundCheck::check(t, begin, end, [&](size_t b, size_t e) { return declaredType(t, b, e); });
  }
  // One rewrite takes every block it can; CONNECT BY left where no block holds it is an error of
  // the statement, for SQLite to find.
  if (!m_rewritten && HierarchicalQueries::contains(t, begin, end)) {
    const auto tree =
        HierarchicalQueries::rewrite(t, begin, end, [this](const std::vector<SqlToken>& item, bool rowid) {
          if (!m_context.columnNames || !m_context.declaredType)
            return std::optional<QStringList>();
          std::vector<SqlToken> probe = item;
          probe.push_back(SqlToken{});
          if (!rowid)
            return columnsOf(probe);
          SqlTranslator inner(*this);
          inner.m_probing = true;
          const QString from = inner.translate(probe);
          // A view answers for a rowid too, with NULLs; only a table's is an INTEGER.
          if (m_context.declaredType(QStringLiteral("SELECT rowid FROM %1 WHERE 0").arg(from)) != u"INTEGER")
            return std::optional<QStringList>();
          return std::optional<QStringList>(QStringList{QStringLiteral("ROWID")});
        });
    SqlTranslator inner(*this);
    inner.m_rewritten = true;
    return inner.translate(tree, 0, tree.size());
  }
  if (Pivots::contains(t, begin, end)) {
    const auto rotated = Pivots::rewrite(t, begin, end, [this](const std::vector<SqlToken>& item) { return columnsOf(item); });
    SqlTranslator inner(*this);
    inner.m_rewritten = true;
    return inner.translate(rotated, 0, rotated.size());
  }
  if (GroupingSets::contains(t, begin, end)) {
    const auto sets = GroupingSets::rewrite(t, begin, end);
    return translate(sets, 0, sets.size());
  }
  if (OuterJoins::contains(t, begin, end)) {
    const auto ansi = OuterJoins::rewrite(t, begin, end, m_context.hasColumn);
    return translate(ansi, 0, ansi.size());
  }
  if (RownumLimits::contains(t, begin, end) && !m_rownumDone) {
    // Checked as written: the limits' rewrite holds pieces of SQL no block structure reads.
    for (size_t k = begin; k < end; ++k)
      if (t[k].is(u"SELECT"))
        GroupingCheck::check(t, k, end);
    const auto limited = RownumLimits::rewrite(t, begin, end, m_statement);
    SqlTranslator inner(*this);
    inner.m_rownumDone = true;
    return inner.translate(limited, 0, limited.size());
  }
  QStringList out;
  for (size_t i = begin; i < end && t[i].kind != SqlToken::Kind::End;) {
    if (t[i].is(u"SELECT")) {
      if (!m_rownumDone)
        GroupingCheck::check(t, i, end);
      out << QStringLiteral("SELECT");
      ++i;
      out << selectList(t, i, end);
      continue;
    }
    if (t[i].is(u"SET")) {
      out << QStringLiteral("SET");
      ++i;
      out << assignments(t, i, end);
      continue;
    }
    if (t[i].is(u"ORDER") && i + 1 < end && t[i + 1].is(u"BY")) {
      out << QStringLiteral("ORDER BY");
      i += 2;
      out << orderBy(t, i, end);
      continue;
    }
    if ((t[i].is(u"OFFSET") || t[i].is(u"FETCH")) && i + 1 < end && !t[i + 1].is(u",") && !t[i + 1].is(u")") &&
        t[i + 1].kind != SqlToken::Kind::End && !(i > begin && t[i - 1].is(u"."))) {
      out << rowLimits(t, i, end);
      continue;
    }
    if (const auto listed = literalOperands(t, i, begin, end)) {
      out << *listed;
      continue;
    }
    if (const auto compared = quantified(t, i, begin, end)) {
      out << *compared;
      continue;
    }
    if (const auto compared = comparison(t, i, begin, end)) {
      out << *compared;
      continue;
    }
    if (const auto computed = arithmetic(t, i, begin, end)) {
      out << *computed;
      continue;
    }
    // A query of several columns is a row, as in SET (a, b) = (SELECT ...), which takes one
    // row by itself.
    if (i > 0 && isScalarContext(t, i - 1) && QueryBlock::isSubquery(t, i, end) &&
        QueryBlock::read(t, i + 1, end).items.size() == 1) {
      out << scalarSubquery(t, i, end);
      continue;
    }
    out << token(t, i, end);
  }
  return out.join(u' ');
}

// The select list up to its FROM: items without an alias get Oracle's label, so a column of
// "count(*)" is called COUNT(*) as Oracle calls it.
QString SqlTranslator::selectList(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  QStringList items;
  QList<bool> texts;
  QString prefix;
  if (t[i].is(u"DISTINCT") || t[i].is(u"UNIQUE") || t[i].is(u"ALL")) {
    prefix = t[i].is(u"ALL") ? QStringLiteral("ALL ") : QStringLiteral("DISTINCT ");
    ++i;
  }
  while (i < end && t[i].kind != SqlToken::Kind::End) {
    const size_t start = i;
    int depth = 0;
    while (i < end && t[i].kind != SqlToken::Kind::End) {
      if (t[i].is(u"(") || t[i].is(u"(+)"))
        depth += t[i].is(u"(") ? 1 : 0;
      else if (t[i].is(u")")) {
        if (depth == 0)
          break;
        --depth;
      } else if (depth == 0 && (t[i].is(u",") || t[i].is(u"FROM") || t[i].is(u"INTO")))
        break;
      ++i;
    }
    size_t exprEnd = i;
    bool aliased = false;
    // "expr alias" or "expr AS alias"
    if (exprEnd - start >= 2 && t[exprEnd - 1].isName() && !keywords().contains(t[exprEnd - 1].upper())) {
      const SqlToken& before = t[exprEnd - 2];
      if (before.is(u"AS") || before.isName() || before.is(u")") || before.kind == SqlToken::Kind::String ||
          before.kind == SqlToken::Kind::Number || before.kind == SqlToken::Kind::Bind) {
        if (!(before.is(u".")))
          aliased = true;
      }
    }
    const bool bareColumn =
        (exprEnd - start == 1 && (t[start].isName() || t[start].is(u"*"))) ||
        (exprEnd - start == 3 && t[start].isName() && t[start + 1].is(u".") &&
         (t[start + 2].isName() || t[start + 2].is(u"*")) && !isPseudoSequence(t[start + 2])) ||
        (exprEnd - start == 5 && t[start + 1].is(u".") && t[start + 3].is(u".") && !isPseudoSequence(t[start + 4]));
    const size_t valueEnd = !aliased ? exprEnd : t[exprEnd - 2].is(u"AS") ? exprEnd - 2 : exprEnd - 1;
    texts << CompoundCheck::isText(t, start, valueEnd);
    QString item = translate(t, start, exprEnd);
    if (!aliased && !bareColumn)
      item += QStringLiteral(" AS ") + quoteName(labelOf(t, start, exprEnd));
    else if (bareColumn && exprEnd - start == 1 && t[start].kind == SqlToken::Kind::Word &&
             !keywords().contains(t[start].upper()) && item != quoteName(t[start].upper()))
      // A pseudo-column such as SYSDATE or USER keeps its own name as label.
      item += QStringLiteral(" AS ") + quoteName(t[start].upper());
    items << item;
    if (i < end && t[i].is(u",")) {
      ++i;
      continue;
    }
    break;
  }
  if (!m_textColumns->has_value())
    *m_textColumns = texts;
  return prefix + items.join(QStringLiteral(", "));
}

// Oracle puts NULLs last going up and first going down, SQLite the other way round: every item
// of the list is given its direction and its place for NULLs explicitly.
QString SqlTranslator::orderBy(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  QStringList items;
  while (i < end && t[i].kind != SqlToken::Kind::End) {
    const size_t start = i;
    int depth = 0;
    for (; i < end && t[i].kind != SqlToken::Kind::End; ++i) {
      if (t[i].is(u"("))
        ++depth;
      else if (t[i].is(u")")) {
        if (depth == 0)
          break;
        --depth;
      } else if (depth == 0 && (t[i].is(u",") || endsOrdering(t[i])))
        break;
    }
    size_t exprEnd = i;
    std::optional<bool> nullsFirst;
    if (exprEnd - start >= 2 && t[exprEnd - 2].is(u"NULLS") &&
        (t[exprEnd - 1].is(u"FIRST") || t[exprEnd - 1].is(u"LAST"))) {
      nullsFirst = t[exprEnd - 1].is(u"FIRST");
      exprEnd -= 2;
    }
    bool descending = false;
    if (exprEnd > start && (t[exprEnd - 1].is(u"ASC") || t[exprEnd - 1].is(u"DESC"))) {
      descending = t[exprEnd - 1].is(u"DESC");
      --exprEnd;
    }
    if (exprEnd == start)
      throw OraError(936, QStringLiteral("missing expression"));
    items << translate(t, start, exprEnd) + (descending ? QStringLiteral(" DESC") : QStringLiteral(" ASC")) +
                 (nullsFirst.value_or(descending) ? QStringLiteral(" NULLS FIRST") : QStringLiteral(" NULLS LAST"));
    if (i < end && t[i].is(u",")) {
      ++i;
      continue;
    }
    break;
  }
  return items.join(QStringLiteral(", "));
}

// The row limiting clause, [OFFSET n ROWS] [FETCH FIRST|NEXT n ROWS ONLY], is SQLite's LIMIT and
// OFFSET; a negative offset counts as none, and FETCH without a count fetches one row. PERCENT and
// WITH TIES count the rows by a query of their own.
QString SqlTranslator::rowLimits(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  const auto countTo = [&](size_t from) {
    size_t k = from;
    while (k < end && t[k].kind != SqlToken::Kind::End && !t[k].is(u"ROW") && !t[k].is(u"ROWS") && !t[k].is(u"PERCENT"))
      ++k;
    if (k >= end || t[k].kind == SqlToken::Kind::End)
      throw OraError(933, QStringLiteral("SQL command not properly ended"));
    return k;
  };
  QString offset = QStringLiteral("0"), limit = QStringLiteral("-1");
  if (t[i].is(u"OFFSET")) {
    const size_t k = countTo(i + 1);
    // An offset of NULL leaves no rows.
    offset = QStringLiteral("coalesce(dbsweep_row_count(%1), 9223372036854775807)").arg(translate(t, i + 1, k));
    i = k + 1;
  }
  if (i < end && t[i].is(u"FETCH")) {
    if (i + 1 >= end || !(t[i + 1].is(u"FIRST") || t[i + 1].is(u"NEXT")))
      throw OraError(933, QStringLiteral("SQL command not properly ended"));
    const size_t fetch = i;
    size_t k = countTo(i + 2);
    // A fraction is cut off; a count of NULL fetches nothing.
    limit = k == i + 2 ? QStringLiteral("1")
                       : QStringLiteral("coalesce(dbsweep_row_count(%1), 0)").arg(translate(t, i + 2, k));
    const bool percent = t[k].is(u"PERCENT");
    if (percent && (++k >= end || !(t[k].is(u"ROW") || t[k].is(u"ROWS"))))
      throw OraError(933, QStringLiteral("SQL command not properly ended"));
    const bool ties = k + 2 < end && t[k + 1].is(u"WITH") && t[k + 2].is(u"TIES");
    if (!ties && (k + 1 >= end || !t[k + 1].is(u"ONLY")))
      throw OraError(933, QStringLiteral("SQL command not properly ended"));
    const auto translateFn = [this](const std::vector<SqlToken>& tokens, size_t b, size_t e) {
      return translate(tokens, b, e);
    };
    if (percent)
      limit = FetchLimits::percent(t, fetch, translate(t, fetch + 2, k - 1), translateFn);
    if (ties)
      limit = FetchLimits::withTies(t, fetch, offset, limit, translateFn);
    i = k + (ties ? 3 : 2);
  }
  return QStringLiteral("LIMIT %1 OFFSET %2").arg(limit, offset);
}

// Oracle compares a number or a DATE with a text by converting the text, so that 1 = '1' holds
// and a NUMBER column compared with 'x' is ORA-01722, where SQLite holds a number and a text
// unequal. A text literal compared with a column is converted as the column's declared type
// says, which keeps the column's index usable; compared with any other expression it takes the
// kind of that expression's value. A number literal makes the other side a number, which a DATE
// refuses (ORA-00932).
std::optional<QString> SqlTranslator::comparison(const std::vector<SqlToken>& t, size_t& i, size_t begin,
                                                 size_t end) const {
  if (i > begin && endsOperand(t[i - 1]))
    return std::nullopt;
  const size_t op = afterSum(t, i, end);
  if (op == NoEnd || op >= end || !isComparison(t[op]))
    return std::nullopt;
  const size_t after = afterSum(t, op + 1, end);
  if (after == NoEnd)
    return std::nullopt;
  // TIMESTAMPs and INTERVALs are held as their printed text, which does not order as their
  // values: a comparison that holds one compares by value.
  if (holdsTimestampOrInterval(t, i, after)) {
    const QString left = translate(t, i, op);
    const QString right = translate(t, op + 1, after);
    size_t o = op;
    i = after;
    return QStringLiteral("dbsweep_compare(%1, %2) %3 0").arg(left, right, token(t, o, end));
  }
  if (mixesCharAndVarchar(t, i, op, after)) {
    const QString left = translate(t, i, op);
    const QString right = translate(t, op + 1, after);
    size_t o = op;
    i = after;
    return QStringLiteral("%1 %2 %3 COLLATE BINARY").arg(left, token(t, o, end), right);
  }
  const bool textLeft = isTextLiteral(t, i, op);
  const bool textRight = isTextLiteral(t, op + 1, after);
  const bool numberLeft = isNumberLiteral(t, i, op);
  const bool numberRight = isNumberLiteral(t, op + 1, after);
  if (containsToken(t, i, after, u"NEXTVAL") || (textLeft && textRight) || (numberLeft && numberRight) ||
      !(textLeft || textRight || numberLeft || numberRight))
    return std::nullopt;
  // The literal's side and the other.
  const bool literalLeft = textLeft || (numberLeft && !textRight);
  const size_t literalAt = literalLeft ? i : op + 1;
  const size_t literalEnd = literalLeft ? op : after;
  const size_t otherBegin = literalLeft ? op + 1 : i;
  const size_t otherEnd = literalLeft ? after : op;
  QString other = translate(t, otherBegin, otherEnd);
  QString literal = translate(t, literalAt, literalEnd);
  const QString type =
      QueryBlock::isColumn(t, otherBegin, otherEnd) ? declaredType(t, otherBegin, otherEnd) : QString();
  if (!textLeft && !textRight) {
    // A number compared with a text converts the text, which may be no number; a DATE cannot
    // be compared with a number at all.
    if (type == u"DATE")
      throw OraError(932, QStringLiteral("inconsistent datatypes: expected DATE got NUMBER"));
    if (QueryBlock::isColumn(t, otherBegin, otherEnd) && !type.isEmpty() && !isTextType(type))
      return std::nullopt;
    other = (isTextValue(t, otherBegin, otherEnd) ? QStringLiteral("TO_NUMBER(%1)")
                                                  : QStringLiteral("dbsweep_as_number(%1)"))
                .arg(other);
  } else if (isNumberLiteral(t, otherBegin, otherEnd)) {
    literal = QStringLiteral("TO_NUMBER(%1)").arg(literal);
  } else if (!QueryBlock::isColumn(t, otherBegin, otherEnd) || type.isEmpty()) {
    // An expression, or a view's computed column: the literal takes the kind of its value.
    literal = QStringLiteral("dbsweep_compared(%1, %2)").arg(other, literal);
  } else if (type == u"NUMBER" || type == u"FLOAT") {
    literal = QStringLiteral("TO_NUMBER(%1)").arg(literal);
  } else if (type == u"DATE") {
    literal = QStringLiteral("TO_DATE(%1)").arg(literal);
  } else {
    return std::nullopt;
  }
  size_t o = op;
  i = after;
  return (literalLeft ? literal : other) + u' ' + token(t, o, end) + u' ' + (literalLeft ? other : literal);
}

// Oracle ignores trailing blanks only when both sides are CHAR (or text literals): a CHAR column
// compared with a VARCHAR2 one compares as written, where the CHAR column's RTRIM collation
// would make 'a  ' equal 'a'.
bool SqlTranslator::mixesCharAndVarchar(const std::vector<SqlToken>& t, size_t begin, size_t op, size_t end) const {
  const auto blankPadded = [](const QString& type) { return type.startsWith(u"CHAR") || type.startsWith(u"NCHAR"); };
  if (m_probing || !QueryBlock::isColumn(t, begin, op) || !QueryBlock::isColumn(t, op + 1, end))
    return false;
  // The dictionary tells more cheaply than probes that neither name is a CHAR column's, when no
  // query of the statement's own (an inline view, WITH) can have given a column a new name.
  const bool nested = std::count_if(t.begin(), t.end(), [](const SqlToken& k) { return k.is(u"SELECT"); }) > 1;
  if (m_context.charColumnNames && !nested) {
    if (!*m_charNames) {
      QSet<QString> names;
      for (const SqlToken& k : t)
        if (k.isName())
          names << k.name();
      // A statement of very many names is probed rather than looked up in one go.
      QHash<QString, bool> known;
      if (names.size() <= 500) {
        const QSet<QString> chars = m_context.charColumnNames(names.values());
        for (const QString& n : std::as_const(names))
          known.insert(n, chars.contains(n));
      }
      *m_charNames = known;
    }
    // A name the lookup did not see (one a rewrite brought in) is probed.
    if (!(*m_charNames)->value(t[op - 1].name(), true) && !(*m_charNames)->value(t[end - 1].name(), true))
      return false;
  }
  const QString left = declaredType(t, begin, op);
  if (!isTextType(left))
    return false;
  const QString right = declaredType(t, op + 1, end);
  return isTextType(right) && blankPadded(left) != blankPadded(right);
}

// "x op ANY|SOME|ALL (...)".
std::optional<QString> SqlTranslator::quantified(const std::vector<SqlToken>& t, size_t& i, size_t begin,
                                                 size_t end) const {
  if (i > begin && endsOperand(t[i - 1]))
    return std::nullopt;
  const size_t op = afterSum(t, i, end);
  if (op == NoEnd || op + 2 >= end || !isComparison(t[op]) || !QuantifiedComparisons::isQuantifier(t[op + 1]) ||
      !t[op + 2].is(u"("))
    return std::nullopt;
  const size_t close = afterGroup(t, op + 2, end);
  if (close == NoEnd)
    throw OraError(907, QStringLiteral("missing right parenthesis"));
  if (QueryBlock::isSubquery(t, op + 2, close)) {
    const QString sql = QuantifiedComparisons::subquery(t, op, translate(t, i, op), translate(t, op + 3, close - 1));
    i = close;
    return sql;
  }
  // The comparisons of a list stand where it stood, so that each finds its column's type.
  const auto terms = QuantifiedComparisons::expandList(t, {i, op}, op, op + 2, close);
  std::vector<SqlToken> spliced(t.begin(), t.begin() + qsizetype(i));
  spliced.insert(spliced.end(), terms.begin(), terms.end());
  spliced.insert(spliced.end(), t.begin() + qsizetype(close), t.end());
  const QString sql = translate(spliced, i, i + terms.size());
  i = close;
  return sql;
}

// "column [NOT] IN (literals)" and "column [NOT] BETWEEN literal AND literal": the literals
// convert to the column's type as in a comparison, so that a NUMBER column IN ('x') is ORA-01722
// and a DATE column BETWEEN two texts reads them as dates; a character column meeting numbers is
// converted to a number.
std::optional<QString> SqlTranslator::literalOperands(const std::vector<SqlToken>& t, size_t& i, size_t begin,
                                                      size_t end) const {
  if (i > begin && endsOperand(t[i - 1]))
    return std::nullopt;
  const size_t columnEnd = afterSum(t, i, end);
  if (columnEnd == NoEnd || !QueryBlock::isColumn(t, i, columnEnd))
    return std::nullopt;
  size_t k = columnEnd;
  const bool negated = k < end && t[k].is(u"NOT");
  k += negated ? 1 : 0;
  std::vector<QueryBlock::Range> items;
  size_t after = NoEnd;
  const bool between = k < end && t[k].is(u"BETWEEN");
  if (between) {
    const size_t low = afterSum(t, k + 1, end);
    if (low == NoEnd || low >= end || !t[low].is(u"AND"))
      return std::nullopt;
    after = afterSum(t, low + 1, end);
    items = {{k + 1, low}, {low + 1, after}};
  } else if (k + 1 < end && t[k].is(u"IN") && t[k + 1].is(u"(") && !QueryBlock::isSubquery(t, k + 1, end)) {
    after = afterGroup(t, k + 1, end);
    if (after != NoEnd)
      items = QueryBlock::split(t, k + 2, after - 1);
  }
  if (after == NoEnd)
    return std::nullopt;
  bool texts = false, numbers = false;
  for (const QueryBlock::Range& item : items) {
    if (isTextLiteral(t, item.begin, item.end))
      texts = true;
    else if (isNumberLiteral(t, item.begin, item.end))
      numbers = true;
    else if (!(item.end == item.begin + 1 && t[item.begin].is(u"NULL")))
      return std::nullopt;
  }
  const QString type = (texts || numbers) ? declaredType(t, i, columnEnd) : QString();
  const bool numeric = type == u"NUMBER" || type == u"FLOAT";
  QString column = translate(t, i, columnEnd);
  if (isTextType(type) && numbers && !texts)
    column = QStringLiteral("TO_NUMBER(%1)").arg(column);
  else if (!(texts && (numeric || type == u"DATE")))
    return std::nullopt;
  QStringList values;
  for (const QueryBlock::Range& item : items) {
    const QString value = translate(t, item.begin, item.end);
    values << (!isTextLiteral(t, item.begin, item.end) || !(numeric || type == u"DATE") ? value
               : numeric ? QStringLiteral("TO_NUMBER(%1)").arg(value)
                         : QStringLiteral("TO_DATE(%1)").arg(value));
  }
  i = after;
  const QString no = negated ? QStringLiteral("NOT ") : QString();
  if (between)
    return QStringLiteral("%1 %2BETWEEN %3 AND %4").arg(column, no, values[0], values[1]);
  return QStringLiteral("%1 %2IN (%3)").arg(column, no, values.join(QStringLiteral(", ")));
}

// The SQLite type a column [begin, end) is declared with, read from a probe of the FROM items of
// its query block, or of the blocks around it for a column of an outer query; "" where that
// cannot tell (a computed column, a statement without FROM).
QString SqlTranslator::declaredType(const std::vector<SqlToken>& t, size_t begin, size_t end) const {
  if (m_probing || !m_context.declaredType)
    return {};
  SqlTranslator probe(m_context);
  probe.m_probing = true;
  probe.m_rownumDone = true;
  for (size_t at = begin;;) {
    if (const auto from = fromItems(t, at)) {
      try {
        if (const auto type = m_context.declaredType(
                QStringLiteral("SELECT %1 FROM %2 WHERE 0")
                    .arg(probe.translate(t, begin, end), probe.translate(t, from->first, from->second))))
          return *type;
      } catch (const OraError&) {
        // Out of reach from here; a block further out may tell.
      }
    }
    const size_t start = blockStart(t, at);
    if (start == 0 || !t[start - 1].is(u"("))
      return {};
    at = start - 1;
  }
}

// A query used as a value gives at most one row: Oracle raises ORA-01427 for a second, where
// SQLite would take the first.
QString SqlTranslator::scalarSubquery(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  const size_t close = afterGroup(t, i, end);
  if (close == NoEnd)
    throw OraError(907, QStringLiteral("missing right parenthesis"));
  const QString query = translate(t, i + 1, close - 1);
  i = close;
  return QStringLiteral("dbsweep_single_row((SELECT count(*) FROM (SELECT 1 FROM (%1) LIMIT 2)), (%1))").arg(query);
}

// UPDATE's "SET column = value, ...": assignments, which the comparisons above must not take
// for conditions.
QString SqlTranslator::assignments(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  QStringList items;
  while (i < end && t[i].kind != SqlToken::Kind::End) {
    int depth = 0;
    size_t k = i;
    for (; k < end && !(depth == 0 && t[k].is(u"=")); ++k)
      depth += t[k].is(u"(") ? 1 : t[k].is(u")") ? -1 : 0;
    if (k >= end)
      break;
    const QString target = translate(t, i, k);
    const size_t value = k + 1;
    for (k = value; k < end && t[k].kind != SqlToken::Kind::End; ++k) {
      if (t[k].is(u"("))
        ++depth;
      else if (t[k].is(u")"))
        --depth;
      else if (depth == 0 && (t[k].is(u",") || t[k].is(u"WHERE") || t[k].is(u"RETURNING")))
        break;
    }
    items << target + QStringLiteral(" = ") + translate(t, value, k);
    i = k;
    if (i < end && t[i].is(u",")) {
      ++i;
      continue;
    }
    break;
  }
  return items.join(QStringLiteral(", "));
}

// Oracle's + and - also move a DATE by days and count the days between two, which SQLite's
// operators cannot: each becomes a call of an engine function that looks at its values. || ranks
// with them in Oracle, left to right, and skips a NULL operand, where SQLite's binds tighter
// than * and / and gives NULL: it becomes the engine's CONCAT in the same chain. * and / and a
// sign become engine calls too, which compute in decimal and raise Oracle's errors where
// SQLite would answer: a text that is no number, a division by zero, a DATE multiplied.
std::optional<QString> SqlTranslator::arithmetic(const std::vector<SqlToken>& t, size_t& i, size_t begin,
                                                 size_t end) const {
  if (i > begin && endsOperand(t[i - 1]))
    return std::nullopt;
  const size_t first = afterTerm(t, i, end);
  if (first == NoEnd)
    return std::nullopt;
  struct Step {
    size_t op, begin, end;
  };
  std::vector<Step> steps;
  for (size_t k = first; k < end && (isAdditive(t[k]) || t[k].is(u"||"));) {
    const size_t next = afterTerm(t, k + 1, end);
    if (next == NoEnd)
      return std::nullopt;
    steps.push_back({k, k + 1, next});
    k = next;
  }
  if (steps.empty() && afterPrimary(t, i, end) == first)
    return std::nullopt; // a lone operand, no arithmetic
  QString chain = term(t, i, first, !steps.empty() && isAdditive(t[steps.front().op]));
  for (const Step& s : steps) {
    const QString right = term(t, s.begin, s.end, isAdditive(t[s.op]));
    if (t[s.op].is(u"||"))
      chain = QStringLiteral("CONCAT(%1, %2)").arg(chain, right);
    else
      chain =
          QStringLiteral("%1(%2, %3)")
              .arg(t[s.op].is(u"+") ? QStringLiteral("dbsweep_plus") : QStringLiteral("dbsweep_minus"), chain, right);
  }
  i = first;
  if (!steps.empty())
    i = steps.back().end;
  return chain;
}

// Whether [begin, end) is text by its type: a text literal, a character column, a function that
// returns text, a concatenation.
bool SqlTranslator::isTextValue(const std::vector<SqlToken>& t, size_t begin, size_t end) const {
  if (end == begin + 1 && t[begin].kind == SqlToken::Kind::String)
    return !t[begin].text.isEmpty();
  if (QueryBlock::isColumn(t, begin, end))
    return isTextType(declaredType(t, begin, end));
  return CompoundCheck::isText(t, begin, end);
}

// A product [begin, end): signed operands joined by * and /. Text in arithmetic is a number to
// Oracle, also next to a DATE: sysdate - '1' is yesterday and '2024/01/31' + 1 is ORA-01722,
// though that text reads as a stored DATE; a lone operand of + and - is one when numeric says so.
QString SqlTranslator::term(const std::vector<SqlToken>& t, size_t begin, size_t end, bool numeric) const {
  const auto factor = [&](size_t b, size_t e, bool arithmetic) {
    bool negative = false;
    for (; b < e && isAdditive(t[b]); ++b)
      negative ^= t[b].is(u"-");
    arithmetic = arithmetic || negative;
    QString text = translate(t, b, e);
    if (arithmetic && isTextValue(t, b, e))
      text = QStringLiteral("TO_NUMBER(%1)").arg(text);
    if (!negative)
      return text;
    return e == b + 1 && t[b].kind == SqlToken::Kind::Number && !text.contains(u'(')
               ? u'-' + text
               : QStringLiteral("dbsweep_negate(%1)").arg(text);
  };
  size_t k = afterPrimary(t, afterSigns(t, begin, end), end);
  QString out = factor(begin, k, numeric || k < end);
  while (k < end) {
    const bool dividing = t[k].is(u"/");
    const size_t e = afterPrimary(t, afterSigns(t, k + 1, end), end);
    out = QStringLiteral("%1(%2, %3)")
              .arg(dividing ? QStringLiteral("dbsweep_divide") : QStringLiteral("dbsweep_times"), out,
                   factor(k + 1, e, true));
    k = e;
  }
  return out;
}

QString SqlTranslator::token(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  const SqlToken& tok = t[i];
  const auto next = [&](size_t k) -> const SqlToken& { return i + k < end ? t[i + k] : t.back(); };
  switch (tok.kind) {
  case SqlToken::Kind::String: ++i; return tok.text.isEmpty() ? QStringLiteral("NULL") : quoteText(tok.text);
  case SqlToken::Kind::Number:
    ++i;
    // Oracle groups by a number as by any constant, where SQLite takes it for a column's position.
    if (isGroupingConstant(t, i - 1, end))
      return numberLiteral(tok.text) + QStringLiteral(" + 0");
    return numberLiteral(tok.text);
  case SqlToken::Kind::Bind:
    if (!m_context.binds)
      throw OraError(1008, QStringLiteral("not all variables bound"));
    ++i;
    return tok.text;
  case SqlToken::Kind::Symbol:
    ++i;
    if (tok.text == u"!=" || tok.text == u"^=")
      return QStringLiteral("<>");
    // Oracle divides exactly; SQLite would truncate two integers.
    if (tok.text == u"/")
      return QStringLiteral("* 1.0 /");
    return tok.text;
  case SqlToken::Kind::End: ++i; return {};
  case SqlToken::Kind::Word:
  case SqlToken::Kind::Quoted: break;
  }

  // A dotted name: [owner.]name[.name] or seq.NEXTVAL.
  std::vector<const SqlToken*> parts{&tok};
  size_t k = 1;
  while (next(k).is(u".") && (next(k + 1).isName() || next(k + 1).is(u"*"))) {
    parts.push_back(&next(k + 1));
    k += 2;
  }
  if (parts.size() >= 2 && isPseudoSequence(*parts.back())) {
    const bool nextval = parts.back()->is(u"NEXTVAL");
    const QString owner = parts.size() == 3 ? parts[0]->name() : m_context.user;
    const QString seq = parts[parts.size() - 2]->name();
    i += k;
    // Oracle gives every NEXTVAL of a sequence in one row of a statement the same number.
    const auto [scopeBegin, scopeEnd] = sequenceScope(t, i);
    if (nextval)
      checkUnconditional(t, scopeBegin, i);
    qint64 references = 0;
    for (size_t r = qMax<size_t>(scopeBegin, 2); nextval && r < scopeEnd; ++r)
      references += t[r].is(u"NEXTVAL") && t[r - 1].is(u".") && t[r - 2].isName() && t[r - 2].name() == seq;
    if (references > 1)
      return QStringLiteral("dbsweep_nextval(%1, %2, %3, %4)")
          .arg(quoteText(owner), quoteText(seq))
          .arg(m_statement)
          .arg(references);
    return QStringLiteral("%1(%2, %3)")
        .arg(nextval ? QStringLiteral("dbsweep_nextval") : QStringLiteral("dbsweep_currval"), quoteText(owner),
             quoteText(seq));
  }
  if (parts.size() == 1 && tok.kind == SqlToken::Kind::Word) {
    const QString upper = tok.upper();
    ++i;
    // EXTRACT(field FROM date) becomes an engine call of the field's name and the date.
    if (upper == u"EXTRACT" && next(0).is(u"(") && next(2).is(u"FROM")) {
      const size_t close = afterGroup(t, i, end);
      if (close == NoEnd)
        throw OraError(907, QStringLiteral("missing right parenthesis"));
      const QString field = next(1).upper();
      const QString date = translate(t, i + 3, close - 1);
      i = close;
      return QStringLiteral("dbsweep_extract(%1, %2)").arg(quoteText(field), date);
    }
    // CAST(value AS type) converts as Oracle does; SQLite's own CAST would take a DATE for a number.
    if (upper == u"CAST" && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      if (close == NoEnd)
        throw OraError(907, QStringLiteral("missing right parenthesis"));
      const size_t as = atTopLevel(t, i + 1, close - 1, u"AS");
      if (as == i + 1 || !t[as].is(u"AS"))
        throw OraError(905, QStringLiteral("missing keyword"));
      const QString cast = QStringLiteral("dbsweep_cast(%1, %2)")
                               .arg(translate(t, i + 1, as), CastFunction::typeArguments(t, as + 1, close - 1));
      i = close;
      return cast;
    }
    // DUMP of a text literal or a CHAR column shows Oracle's type code of fixed-length text.
    if (upper == u"DUMP" && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      const size_t first = close == NoEnd ? i + 1 : atTopLevel(t, i + 1, close - 1, u",");
      const bool literal = first == i + 2 && t[i + 1].kind == SqlToken::Kind::String;
      const auto fixedLength = [&] {
        const QString declared = QueryBlock::isColumn(t, i + 1, first) ? declaredType(t, i + 1, first) : QString();
        return declared.startsWith(u"CHAR(") || declared.startsWith(u"NCHAR(");
      };
      if (close != NoEnd && (literal || fixedLength())) {
        const QString dump = QStringLiteral("dbsweep_dump_char(%1)").arg(translate(t, i + 1, close - 1));
        i = close;
        return dump;
      }
    }
    // CHR(n USING NCHAR_CS) is NCHR(n).
    if (upper == u"CHR" && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      if (close != NoEnd && close >= i + 5 && t[close - 3].is(u"USING") && t[close - 2].is(u"NCHAR_CS")) {
        const QString nchr = QStringLiteral("NCHR(%1)").arg(translate(t, i + 1, close - 3));
        i = close;
        return nchr;
      }
    }
    // TRIM([LEADING | TRAILING | BOTH] [character] FROM text)
    if (upper == u"TRIM" && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      const size_t from = close == NoEnd ? i + 1 : atTopLevel(t, i + 1, close - 1, u"FROM");
      if (close != NoEnd && from + 1 < close && t[from].is(u"FROM")) {
        size_t set = i + 1;
        QString mode = QStringLiteral("BOTH");
        if (t[set].is(u"LEADING") || t[set].is(u"TRAILING") || t[set].is(u"BOTH"))
          mode = t[set++].upper();
        const QString character = set < from ? translate(t, set, from) : QStringLiteral("' '");
        const QString trimmed =
            QStringLiteral("dbsweep_trim('%1', %2, %3)").arg(mode, character, translate(t, from + 1, close - 1));
        i = close;
        return trimmed;
      }
    }
    // SUM and AVG of text add it up as numbers, text that reads as a date too (ORA-01722).
    if ((upper == u"SUM" || upper == u"AVG") && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      const size_t argument = i + 1 + (next(1).is(u"DISTINCT") || next(1).is(u"ALL") ? 1 : 0);
      if (close != NoEnd && close > argument + 1 && isTextValue(t, argument, close - 1)) {
        const QString quantifier = argument > i + 1 ? t[i + 1].upper() + u' ' : QString();
        const QString sum =
            QStringLiteral("%1(%2TO_NUMBER(%3))").arg(upper, quantifier, translate(t, argument, close - 1));
        i = close;
        return sum;
      }
    }
    // RATIO_TO_REPORT(expr) OVER (PARTITION BY ...): the value over the sum of its partition.
    if (upper == u"RATIO_TO_REPORT" && next(0).is(u"(")) {
      const size_t close = afterGroup(t, i, end);
      if (close == NoEnd || close + 1 >= end || !t[close].is(u"OVER") || !t[close + 1].is(u"("))
        throw OraError(30484, QStringLiteral("missing OVER clause for this function"));
      const size_t windowEnd = afterGroup(t, close + 1, end);
      if (windowEnd == NoEnd)
        throw OraError(907, QStringLiteral("missing right parenthesis"));
      std::vector<SqlToken> ratio(t.begin() + qsizetype(i), t.begin() + qsizetype(close));
      ratio.push_back(SqlToken{SqlToken::Kind::Symbol, QStringLiteral("/"), 0, 0, 0});
      ratio.push_back(SqlToken{SqlToken::Kind::Word, QStringLiteral("SUM"), 0, 0, 0});
      ratio.insert(ratio.end(), t.begin() + qsizetype(i), t.begin() + qsizetype(windowEnd));
      ratio.push_back(SqlToken{});
      i = windowEnd;
      return u'(' + translate(ratio) + u')';
    }
    if (QueryBlock::isAggregate(tok)) {
      size_t at = i - 1;
      if (const auto call =
              OrderedAggregates::translateCall(t, at, end, [&](size_t b, size_t e) { return translate(t, b, e); })) {
        i = at;
        return *call;
      }
    }
    if (next(0).is(u"(") && !keywords().contains(upper))
      return functionName(upper);
    if (upper == u"UNIQUE")
      return QStringLiteral("DISTINCT");
    if (upper == u"MINUS")
      return QStringLiteral("EXCEPT");
    if (keywords().contains(upper) || (isWindowWord(upper) && insideWindow(t, i - 1)))
      return upper;
    // The session's time zone is the system's: CURRENT_DATE is SYSDATE.
    if (upper == u"SYSDATE" || upper == u"CURRENT_DATE")
      return QStringLiteral("dbsweep_sysdate()");
    // DATE, TIMESTAMP and INTERVAL literals become the stored text of their value.
    if (const auto literal = TypedLiterals::read(t, i - 1, end)) {
      i = literal->end;
      return quoteText(literal->value);
    }
    // One moment for the whole statement, as Oracle takes it.
    if (upper == u"SYSTIMESTAMP" || upper == u"CURRENT_TIMESTAMP" || upper == u"LOCALTIMESTAMP")
      return QStringLiteral("dbsweep_systimestamp(%1, %2)").arg(m_statement).arg(upper == u"LOCALTIMESTAMP" ? 0 : 1);
    if (upper == u"SESSIONTIMEZONE")
      return QStringLiteral("dbsweep_sessiontimezone()");
    // A database created without a time zone has UTC.
    if (upper == u"DBTIMEZONE")
      return QStringLiteral("'+00:00'");
    if (upper == u"USER")
      return quoteText(m_context.user);
    if (upper == u"UID")
      return QStringLiteral("(SELECT user_id FROM CAT.users WHERE username = %1)").arg(quoteText(m_context.user));
    // ROWNUM outside a limiting condition numbers the rows as they come; inside an aggregate,
    // where no window function may stand, a count of the rows the statement has read does.
    if (upper == u"ROWNUM")
      return insideAggregate(t, i - 1) ? QStringLiteral("dbsweep_rownum(%1, %2)").arg(m_statement).arg(i)
                                       : QStringLiteral("ROW_NUMBER() OVER ()");
    if (upper == u"ROWID")
      return QStringLiteral("rowid");
    return quoteName(upper);
  }
  i += k;
  QStringList names;
  size_t first = 0;
  if (parts.size() >= 2) {
    const QString owner = parts[0]->name();
    // The dictionary lives in every session; its owners' prefixes are only decoration.
    if (owner == u"SYS" || owner == u"PUBLIC") {
      first = 1;
    } else {
      const QString schema = m_context.schemaOf ? m_context.schemaOf(owner) : QString();
      if (!schema.isEmpty() && parts.size() == 2 && !parts[1]->is(u"*") && m_context.checkAccess)
        m_context.checkAccess(owner, parts[1]->name());
      if (!schema.isEmpty() && (parts.size() == 3 || !parts[1]->is(u"*"))) {
        names << (schema == u"main" ? schema : quoteName(schema));
        first = 1;
      }
    }
  }
  for (size_t p = first; p < parts.size(); ++p)
    names << (parts[p]->is(u"*")                                         ? QStringLiteral("*")
              : parts[p]->is(u"ROWID") && p + 1 == parts.size() && p > 0 ? QStringLiteral("rowid")
                                                                         : quoteName(parts[p]->name()));
  return names.join(u'.');
}
