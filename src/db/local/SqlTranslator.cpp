#include "db/local/SqlTranslator.h"

#include "db/OraError.h"
#include "db/local/RownumLimits.h"

#include <QSet>

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

bool isPseudoSequence(const SqlToken& t) {
  return t.kind == SqlToken::Kind::Word && (t.is(u"NEXTVAL") || t.is(u"CURRVAL"));
}

constexpr size_t NoTerm = size_t(-1);

// Past the parenthesised group opening at i; NoTerm when it does not close before end.
size_t groupEnd(const std::vector<SqlToken>& t, size_t i, size_t end) {
  int depth = 0;
  for (; i < end && t[i].kind != SqlToken::Kind::End; ++i) {
    if (t[i].is(u"("))
      ++depth;
    else if (t[i].is(u")") && --depth == 0)
      return i + 1;
  }
  return NoTerm;
}

// Past the END of the CASE at i; NoTerm when it does not end before end.
size_t caseEnd(const std::vector<SqlToken>& t, size_t i, size_t end) {
  int depth = 0;
  for (; i < end && t[i].kind != SqlToken::Kind::End; ++i) {
    if (t[i].is(u"CASE"))
      ++depth;
    else if (t[i].is(u"END") && --depth == 0)
      return i + 1;
  }
  return NoTerm;
}

// Past one operand at i: a literal, a [dotted] name with its call arguments or analytic clause,
// a parenthesised group or a CASE; NoTerm when no operand starts there.
size_t primaryEnd(const std::vector<SqlToken>& t, size_t i, size_t end) {
  if (i >= end)
    return NoTerm;
  const SqlToken& tok = t[i];
  switch (tok.kind) {
  case SqlToken::Kind::String:
  case SqlToken::Kind::Number:
  case SqlToken::Kind::Bind: return i + 1;
  case SqlToken::Kind::Symbol: return tok.is(u"(") ? groupEnd(t, i, end) : NoTerm;
  case SqlToken::Kind::End: return NoTerm;
  case SqlToken::Kind::Word:
  case SqlToken::Kind::Quoted: break;
  }
  if (tok.is(u"CASE"))
    return caseEnd(t, i, end);
  if (tok.is(u"NULL"))
    return i + 1;
  if (tok.kind == SqlToken::Kind::Word && keywords().contains(tok.upper()))
    return NoTerm;
  size_t k = i + 1;
  while (k + 1 < end && t[k].is(u".") && (t[k + 1].isName() || t[k + 1].is(u"*")))
    k += 2;
  if (k < end && t[k].is(u"(+)"))
    ++k;
  if (k < end && t[k].is(u"(")) {
    k = groupEnd(t, k, end);
    if (k != NoTerm && k + 1 < end && t[k].is(u"OVER") && t[k + 1].is(u"("))
      k = groupEnd(t, k + 1, end);
  }
  return k;
}

// Past one term of a sum at i: signed operands joined by * and /; NoTerm when none starts there.
size_t termEnd(const std::vector<SqlToken>& t, size_t i, size_t end) {
  for (;;) {
    while (i < end && (t[i].is(u"+") || t[i].is(u"-")))
      ++i;
    i = primaryEnd(t, i, end);
    if (i == NoTerm || i >= end || !(t[i].is(u"*") || t[i].is(u"/")))
      return i;
    ++i;
  }
}

bool isAdditive(const SqlToken& t) { return t.is(u"||") || t.is(u"+") || t.is(u"-"); }

// Words that close the list of an ORDER BY: the locking clause, row limits and window frames.
bool endsOrdering(const SqlToken& t) {
  return t.is(u"FOR") || t.is(u"OFFSET") || t.is(u"FETCH") || t.is(u"ROWS") || t.is(u"RANGE") || t.is(u"UNION") ||
         t.is(u"INTERSECT") || t.is(u"MINUS");
}

} // namespace

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

QString SqlTranslator::translate(const std::vector<SqlToken>& t, size_t begin, size_t end) const {
  if (OuterJoins::contains(t, begin, end)) {
    const auto ansi = OuterJoins::rewrite(t, begin, end, m_context.hasColumn);
    return translate(ansi, 0, ansi.size());
  }
  if (RownumLimits::contains(t, begin, end) && !m_rownumDone) {
    const auto limited = RownumLimits::rewrite(t, begin, end);
    SqlTranslator inner(m_context);
    inner.m_rownumDone = true;
    return inner.translate(limited, 0, limited.size());
  }
  const bool concatenates = containsToken(t, begin, end, u"||");
  QStringList out;
  for (size_t i = begin; i < end && t[i].kind != SqlToken::Kind::End;) {
    if (t[i].is(u"SELECT")) {
      out << QStringLiteral("SELECT");
      ++i;
      out << selectList(t, i, end);
      continue;
    }
    if (t[i].is(u"ORDER") && i + 1 < end && t[i + 1].is(u"BY")) {
      out << QStringLiteral("ORDER BY");
      i += 2;
      out << orderBy(t, i, end);
      continue;
    }
    if (concatenates) {
      if (const QString sum = concatenation(t, i, end); !sum.isEmpty()) {
        out << sum;
        continue;
      }
    }
    out << token(t, i, end);
  }
  return out.join(u' ');
}

// The select list up to its FROM: items without an alias get Oracle's label, so a column of
// "count(*)" is called COUNT(*) as Oracle calls it.
QString SqlTranslator::selectList(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  QStringList items;
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
          before.kind == SqlToken::Kind::Number) {
        if (!(before.is(u".")))
          aliased = true;
      }
    }
    const bool bareColumn =
        (exprEnd - start == 1 && (t[start].isName() || t[start].is(u"*"))) ||
        (exprEnd - start == 3 && t[start].isName() && t[start + 1].is(u".") &&
         (t[start + 2].isName() || t[start + 2].is(u"*")) && !isPseudoSequence(t[start + 2])) ||
        (exprEnd - start == 5 && t[start + 1].is(u".") && t[start + 3].is(u".") && !isPseudoSequence(t[start + 4]));
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
  return prefix + items.join(QStringLiteral(", "));
}

// Oracle's || ranks with binary + and -, left to right, and skips a NULL operand, where SQLite's
// binds tighter than * and / and gives NULL. A sum at i that holds a || is split at its last
// operator: a || becomes the engine's CONCAT of both sides, a + or - keeps its left side in
// parentheses. Returns "" and leaves i alone when no such sum starts at i.
QString SqlTranslator::concatenation(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  size_t k = termEnd(t, i, end);
  if (k == NoTerm)
    return {};
  size_t last = NoTerm;
  bool joins = false;
  while (k < end && isAdditive(t[k])) {
    const size_t next = termEnd(t, k + 1, end);
    if (next == NoTerm)
      break;
    last = k;
    joins = joins || t[k].is(u"||");
    k = next;
  }
  if (!joins)
    return {};
  const QString left = translate(t, i, last);
  const QString sum = t[last].is(u"||")
                          ? QStringLiteral("CONCAT(") + left + QStringLiteral(", ") + translate(t, last + 1, k) + u')'
                          : u'(' + left + QStringLiteral(") ") + translate(t, last, k);
  i = k;
  return sum;
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

QString SqlTranslator::token(const std::vector<SqlToken>& t, size_t& i, size_t end) const {
  const SqlToken& tok = t[i];
  const auto next = [&](size_t k) -> const SqlToken& { return i + k < end ? t[i + k] : t.back(); };
  switch (tok.kind) {
  case SqlToken::Kind::String: ++i; return tok.text.isEmpty() ? QStringLiteral("NULL") : quoteText(tok.text);
  case SqlToken::Kind::Number: ++i; return tok.text;
  case SqlToken::Kind::Bind: throw OraError(1008, QStringLiteral("not all variables bound"));
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
    return QStringLiteral("%1(%2, %3)")
        .arg(nextval ? QStringLiteral("dbsweep_nextval") : QStringLiteral("dbsweep_currval"), quoteText(owner),
             quoteText(seq));
  }
  if (parts.size() == 1 && tok.kind == SqlToken::Kind::Word) {
    const QString upper = tok.upper();
    ++i;
    if (next(0).is(u"(") && !keywords().contains(upper))
      return functionName(upper);
    if (upper == u"UNIQUE")
      return QStringLiteral("DISTINCT");
    if (upper == u"MINUS")
      return QStringLiteral("EXCEPT");
    if (keywords().contains(upper))
      return upper;
    if (upper == u"SYSDATE")
      return QStringLiteral("dbsweep_sysdate()");
    if (upper == u"SYSTIMESTAMP")
      return QStringLiteral("SYSTIMESTAMP()");
    if (upper == u"USER")
      return quoteText(m_context.user);
    // ROWNUM outside a limiting condition numbers the rows as they come.
    if (upper == u"ROWNUM")
      return QStringLiteral("ROW_NUMBER() OVER ()");
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
