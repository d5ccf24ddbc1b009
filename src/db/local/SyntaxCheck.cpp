#include "db/local/SyntaxCheck.h"

#include "db/OraError.h"
#include "db/local/TypedLiterals.h"

#include <QSet>

namespace SyntaxCheck {

namespace {

using Tokens = std::vector<SqlToken>;

[[noreturn]] void missingExpression() { throw OraError(936, QStringLiteral("missing expression")); }

// Oracle's reserved words that begin or join clauses: none of them starts or ends an operand.
bool isClauseWord(const SqlToken& t) {
  static const QSet<QString> words = {
      QStringLiteral("SELECT"),  QStringLiteral("FROM"),      QStringLiteral("WHERE"),  QStringLiteral("GROUP"),
      QStringLiteral("ORDER"),   QStringLiteral("BY"),        QStringLiteral("HAVING"), QStringLiteral("UNION"),
      QStringLiteral("MINUS"),   QStringLiteral("INTERSECT"), QStringLiteral("AND"),    QStringLiteral("OR"),
      QStringLiteral("NOT"),     QStringLiteral("WHEN"),      QStringLiteral("THEN"),   QStringLiteral("ELSE"),
      QStringLiteral("END"),     QStringLiteral("AS"),        QStringLiteral("IS"),     QStringLiteral("IN"),
      QStringLiteral("LIKE"),    QStringLiteral("BETWEEN"),   QStringLiteral("ESCAPE"), QStringLiteral("INTO"),
      QStringLiteral("CONNECT"), QStringLiteral("START"),     QStringLiteral("FOR"),    QStringLiteral("DISTINCT"),
      QStringLiteral("UNIQUE"),  QStringLiteral("ALL"),       QStringLiteral("ASC"),    QStringLiteral("DESC"),
      QStringLiteral("SET"),     QStringLiteral("VALUES"),    QStringLiteral("PRIOR"),  QStringLiteral("CASE"),
      QStringLiteral("ON"),      QStringLiteral("WITH")};
  return t.kind == SqlToken::Kind::Word && words.contains(t.upper());
}

// Words that may follow an operand within a select-list item: analytic and ordered-set clauses,
// collations, time zones.
bool followsOperand(const SqlToken& t) {
  static const QSet<QString> words = {QStringLiteral("OVER"),    QStringLiteral("KEEP"),     QStringLiteral("WITHIN"),
                                      QStringLiteral("COLLATE"), QStringLiteral("AT"),       QStringLiteral("IGNORE"),
                                      QStringLiteral("RESPECT"), QStringLiteral("MULTISET"), QStringLiteral("NULLS")};
  return t.kind == SqlToken::Kind::Word && words.contains(t.upper());
}

bool isBinaryOperator(const SqlToken& t) {
  return t.kind == SqlToken::Kind::Symbol &&
         (t.is(u"+") || t.is(u"-") || t.is(u"*") || t.is(u"/") || t.is(u"||") || t.is(u"=") || t.is(u"<>") ||
          t.is(u"!=") || t.is(u"^=") || t.is(u"<") || t.is(u">") || t.is(u"<=") || t.is(u">="));
}

bool endsOperand(const SqlToken& t) {
  switch (t.kind) {
  case SqlToken::Kind::Number:
  case SqlToken::Kind::String:
  case SqlToken::Kind::Quoted: return true;
  case SqlToken::Kind::Word: return !isClauseWord(t) || t.is(u"END");
  case SqlToken::Kind::Symbol: return t.is(u")") || t.is(u"(+)");
  default: return false;
  }
}

bool startsOperand(const SqlToken& t) {
  switch (t.kind) {
  case SqlToken::Kind::Number:
  case SqlToken::Kind::String:
  case SqlToken::Kind::Quoted:
  case SqlToken::Kind::Bind: return true;
  // ALL, ANY and DISTINCT start what follows a comparison or SELECT; INTO a branch of INSERT ALL.
  case SqlToken::Kind::Word:
    return !isClauseWord(t) || t.is(u"CASE") || t.is(u"NOT") || t.is(u"PRIOR") || t.is(u"ALL") || t.is(u"DISTINCT") ||
           t.is(u"UNIQUE") || t.is(u"INTO");
  case SqlToken::Kind::Symbol: return t.is(u"(") || t.is(u"+") || t.is(u"-") || t.is(u"*");
  default: return false;
  }
}

// Whether the token wants an operand after it: an operator, a comma, a condition's keyword.
bool wantsOperand(const Tokens& t, size_t k) {
  const SqlToken& a = t[k];
  if (a.is(u"*"))
    return k > 0 && endsOperand(t[k - 1]) && !t[k - 1].is(u".");
  if (isBinaryOperator(a) || a.is(u","))
    return true;
  return a.kind == SqlToken::Kind::Word &&
         (a.is(u"SELECT") || a.is(u"WHERE") || a.is(u"AND") || a.is(u"OR") || a.is(u"HAVING") || a.is(u"WHEN") ||
          a.is(u"THEN") || a.is(u"ELSE") || (a.is(u"BY") && k > 0 && (t[k - 1].is(u"ORDER") || t[k - 1].is(u"GROUP"))));
}

// One select-list item [begin, end): an expression and perhaps its alias. Two operands side by
// side where no alias can stand mean the list ran on where FROM was due.
void checkItem(const Tokens& t, size_t begin, size_t end) {
  int depth = 0;
  for (size_t k = begin; k + 1 < end; ++k) {
    if (const auto literal = TypedLiterals::end(t, k, end)) {
      k = *literal - 1;
      continue;
    }
    depth += t[k].is(u"(") ? 1 : t[k].is(u")") ? -1 : 0;
    // What follows OVER, KEEP, AT TIME ZONE and the like has a grammar of its own.
    if (depth == 0 && followsOperand(t[k + 1]))
      return;
    if (depth != 0 || !endsOperand(t[k]) || !startsOperand(t[k + 1]) || t[k + 1].is(u"(") ||
        isBinaryOperator(t[k + 1]) || t[k].is(u"CONNECT_BY_ROOT"))
      continue;
    const bool alias = k + 2 == end && t[k + 1].isName();
    if (!alias)
      throw OraError(923, QStringLiteral("FROM keyword not found where expected"));
  }
}

// The select lists of the statement, each item on its own.
void checkSelectLists(const Tokens& t) {
  for (size_t s = 0; s < t.size(); ++s) {
    if (!t[s].is(u"SELECT"))
      continue;
    size_t k = s + 1;
    if (k < t.size() && (t[k].is(u"DISTINCT") || t[k].is(u"UNIQUE") || t[k].is(u"ALL")))
      ++k;
    int depth = 0;
    size_t item = k;
    for (; k < t.size() && t[k].kind != SqlToken::Kind::End; ++k) {
      if (t[k].is(u"("))
        ++depth;
      else if (t[k].is(u")") && --depth < 0)
        break;
      else if (depth == 0 && (t[k].is(u",") || t[k].is(u"FROM") || t[k].is(u"INTO"))) {
        checkItem(t, item, k);
        if (!t[k].is(u","))
          break;
        item = k + 1;
      }
    }
    if (k >= t.size() || !(t[k].is(u"FROM") || t[k].is(u"INTO")))
      throw OraError(923, QStringLiteral("FROM keyword not found where expected"));
  }
}

} // namespace

void check(const Tokens& t) {
  for (size_t k = 0; k + 1 < t.size(); ++k) {
    const SqlToken& next = t[k + 1];
    // Where the statement simply stops, Oracle says so rather than what is missing.
    if (wantsOperand(t, k) && next.kind == SqlToken::Kind::End)
      throw OraError(921, QStringLiteral("unexpected end of SQL command"));
    if (wantsOperand(t, k) && !startsOperand(next) && !(t[k].is(u",") && next.is(u"*")))
      missingExpression();
    if (t[k].is(u"(") && next.is(u"FROM"))
      missingExpression();
    if (t[k].is(u"FROM") && (next.kind == SqlToken::Kind::End || next.is(u")") || next.is(u",") || next.is(u"WHERE") ||
                             next.is(u"GROUP") || next.is(u"ORDER")))
      throw OraError(903, QStringLiteral("invalid table name"));
  }
  checkSelectLists(t);
}

} // namespace SyntaxCheck
