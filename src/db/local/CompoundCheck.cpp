#include "db/local/CompoundCheck.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"

#include <QSet>

#include <optional>

namespace CompoundCheck {

namespace {

using QueryBlock::Range;
using QueryBlock::Tokens;

enum class Kind { Unknown, Number, Text, Date };

Kind kindOfCall(const QString& name) {
  static const QSet<QString> numbers = {
      QStringLiteral("COUNT"),  QStringLiteral("SUM"),   QStringLiteral("AVG"),  QStringLiteral("LENGTH"),
      QStringLiteral("INSTR"),  QStringLiteral("MOD"),   QStringLiteral("ABS"),  QStringLiteral("TO_NUMBER"),
      QStringLiteral("SIGN"),   QStringLiteral("FLOOR"), QStringLiteral("CEIL"), QStringLiteral("MONTHS_BETWEEN"),
      QStringLiteral("EXTRACT")};
  static const QSet<QString> texts = {QStringLiteral("TO_CHAR"), QStringLiteral("UPPER"),  QStringLiteral("LOWER"),
                                      QStringLiteral("SUBSTR"),  QStringLiteral("LPAD"),   QStringLiteral("RPAD"),
                                      QStringLiteral("TRIM"),    QStringLiteral("LTRIM"),  QStringLiteral("RTRIM"),
                                      QStringLiteral("REPLACE"), QStringLiteral("CONCAT"), QStringLiteral("INITCAP")};
  static const QSet<QString> dates = {QStringLiteral("TO_DATE"), QStringLiteral("ADD_MONTHS"),
                                      QStringLiteral("LAST_DAY")};
  if (numbers.contains(name))
    return Kind::Number;
  if (texts.contains(name))
    return Kind::Text;
  return dates.contains(name) ? Kind::Date : Kind::Unknown;
}

Kind kindOfType(const QString& declared) {
  if (declared == u"NUMBER" || declared == u"FLOAT")
    return Kind::Number;
  if (declared.contains(u"CHAR") || declared == u"CLOB")
    return Kind::Text;
  return declared == u"DATE" ? Kind::Date : Kind::Unknown;
}

Kind kindOf(const Tokens& t, Range r, const ColumnType& columnType) {
  while (r.end - r.begin > 2 && t[r.begin].is(u"(") && QueryBlock::closing(t, r.begin, r.end) == r.end)
    r = {r.begin + 1, r.end - 1};
  size_t b = r.begin;
  while (b < r.end && (t[b].is(u"-") || t[b].is(u"+")))
    ++b;
  const size_t n = r.end - b;
  if (n == 1 && t[b].kind == SqlToken::Kind::Number)
    return Kind::Number;
  if (n == 1 && t[b].kind == SqlToken::Kind::String)
    return t[b].text.isEmpty() ? Kind::Unknown : Kind::Text;
  if (n == 2 && t[b].is(u"DATE") && t[b + 1].kind == SqlToken::Kind::String)
    return Kind::Date;
  if (n == 1 && t[b].is(u"SYSDATE"))
    return Kind::Date;
  if (QueryBlock::isColumn(t, r.begin, r.end))
    return kindOfType(columnType(r.begin, r.end));
  if (t[b].kind == SqlToken::Kind::Word && b + 1 < r.end && t[b + 1].is(u"(") &&
      QueryBlock::closing(t, b + 1, r.end) == r.end)
    return kindOfCall(t[b].upper());
  bool product = false;
  int depth = 0;
  for (size_t k = b; k < r.end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(u"||"))
      return Kind::Text;
    else if (depth == 0 && (t[k].is(u"*") || t[k].is(u"/")))
      product = true;
  }
  return product ? Kind::Number : Kind::Unknown;
}

// The SELECT a branch starting at k opens, past its parentheses.
std::optional<size_t> selectOf(const Tokens& t, size_t k, size_t end) {
  while (k < end && t[k].is(u"("))
    ++k;
  return k < end && t[k].is(u"SELECT") ? std::optional(k) : std::nullopt;
}

void checkLevel(const Tokens& t, size_t begin, size_t end, const ColumnType& columnType) {
  std::vector<size_t> selects;
  if (const auto first = selectOf(t, begin, end))
    selects.push_back(*first);
  int depth = 0;
  for (size_t k = begin; k < end && t[k].kind != SqlToken::Kind::End; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && QueryBlock::isSetOperator(t[k])) {
      if (const auto next = selectOf(t, k + 1 < end && t[k + 1].is(u"ALL") ? k + 2 : k + 1, end))
        selects.push_back(*next);
    }
  }
  if (selects.size() < 2)
    return;
  std::vector<Kind> kinds;
  for (const Range& item : QueryBlock::read(t, selects.front(), end).items)
    kinds.push_back(kindOf(t, item, columnType));
  for (size_t s = 1; s < selects.size(); ++s) {
    const std::vector<Range> items = QueryBlock::read(t, selects[s], end).items;
    for (size_t i = 0; i < items.size() && i < kinds.size(); ++i) {
      const Kind kind = kindOf(t, items[i], columnType);
      if (kind != Kind::Unknown && kinds[i] != Kind::Unknown && kind != kinds[i])
        throw OraError(1790, QStringLiteral("expression must have same datatype as corresponding expression"));
      if (kinds[i] == Kind::Unknown)
        kinds[i] = kind; // a NULL column takes the type of the first branch that has one
    }
  }
}

} // namespace

bool isText(const Tokens& t, size_t begin, size_t end) {
  return kindOf(t, {begin, end}, [](size_t, size_t) { return QString(); }) == Kind::Text;
}

void check(const Tokens& t, size_t begin, size_t end, const ColumnType& columnType) {
  checkLevel(t, begin, end, columnType);
  for (size_t k = begin; k < end; ++k)
    if (t[k].is(u"(") && k + 1 < end && (t[k + 1].is(u"SELECT") || t[k + 1].is(u"(")))
      checkLevel(t, k + 1, QueryBlock::closing(t, k, end) - 1, columnType);
}

} // namespace CompoundCheck
