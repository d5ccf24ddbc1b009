#include "db/local/RegexpFunctions.h"

#include "db/local/FunctionCall.h"

#include <QRegularExpression>

namespace {

using FunctionCall::Call;
using FunctionCall::entry;
using FunctionCall::Function;
using OracleNumber::Value;

// The pattern of argument i with the match parameters of argument flags (-1: none): i for case
// insensitive, c sensitive, n for . to match a newline, m for ^ and $ at every line, x to ignore
// blanks in the pattern. Compiled patterns are kept, as a query applies one to every row.
QRegularExpression patternOf(const Call& c, int i, int flags) {
  QRegularExpression::PatternOptions options;
  const QString match = flags >= 0 && flags < c.count() && !c.isNull(flags) ? c.text(flags) : QString();
  for (const QChar m : match) {
    if (m == u'i')
      options |= QRegularExpression::CaseInsensitiveOption;
    else if (m == u'c')
      options &= ~QRegularExpression::CaseInsensitiveOption;
    else if (m == u'n')
      options |= QRegularExpression::DotMatchesEverythingOption;
    else if (m == u'm')
      options |= QRegularExpression::MultilineOption;
    else if (m == u'x')
      options |= QRegularExpression::ExtendedPatternSyntaxOption;
    else
      throw OraError(1760, QStringLiteral("illegal argument for function"));
  }
  thread_local QHash<QPair<QString, int>, QRegularExpression> cache;
  const QString pattern = c.text(i);
  const auto key = qMakePair(pattern, int(options));
  auto it = cache.find(key);
  if (it == cache.end()) {
    if (cache.size() > 64)
      cache.clear();
    QRegularExpression re(pattern, options);
    if (!re.isValid()) {
      const QString why = re.errorString();
      if (why.contains(QStringLiteral("parenthes")))
        throw OraError(12725, QStringLiteral("unmatched parentheses in regular expression"));
      if (why.contains(QStringLiteral("]")) || why.contains(QStringLiteral("class")))
        throw OraError(12726, QStringLiteral("unmatched bracket in regular expression"));
      throw OraError(12727, QStringLiteral("invalid back reference in regular expression"));
    }
    it = cache.insert(key, re);
  }
  return *it;
}

// Where the character at position (from 1) starts in the UTF-16 text, and back.
qsizetype offsetOf(const QString& s, qint64 position) {
  qsizetype at = 0;
  for (qint64 p = 1; p < position && at < s.size(); ++p)
    at += s[at].isHighSurrogate() && at + 1 < s.size() ? 2 : 1;
  return at;
}
qint64 positionOf(const QString& s, qsizetype offset) { return QStringView(s).first(offset).toUcs4().size() + 1; }

void checkCount(const Call& c, int most) {
  if (c.count() < 2 || c.count() > most)
    throw OraError(909, QStringLiteral("invalid number of arguments"));
}

qint64 argument(const Call& c, int i, qint64 fallback) {
  return i < c.count() && !c.isNull(i) ? c.integer(i) : fallback;
}

void checkPositive(qint64 v) {
  if (v < 1)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(v));
}

// The occurrence-th match at or after position, if any.
std::optional<QRegularExpressionMatch> nthMatch(const QString& s, const QRegularExpression& re, qint64 position,
                                                qint64 occurrence) {
  checkPositive(position);
  checkPositive(occurrence);
  auto it = re.globalMatch(s, offsetOf(s, position));
  for (qint64 n = 1; it.hasNext(); ++n) {
    const QRegularExpressionMatch m = it.next();
    if (n == occurrence)
      return m;
  }
  return std::nullopt;
}

// REGEXP_LIKE(text, pattern [, match]): a condition, 1 or 0.
void like(Call& c) {
  if (c.isNull(0) || c.isNull(1))
    return c.setNull();
  c.set(Value::of(qint64(patternOf(c, 1, 2).match(c.text(0)).hasMatch() ? 1 : 0)));
}

// REGEXP_SUBSTR(text, pattern [, position [, occurrence [, match [, group]]]])
void substr(Call& c) {
  checkCount(c, 6);
  if (c.isNull(0) || c.isNull(1))
    return c.setNull();
  const QString s = c.text(0);
  const auto m = nthMatch(s, patternOf(c, 1, 4), argument(c, 2, 1), argument(c, 3, 1));
  const qint64 group = argument(c, 5, 0);
  if (!m || group > m->lastCapturedIndex())
    return c.setNull();
  c.set(m->captured(int(group)));
}

// REGEXP_INSTR(text, pattern [, position [, occurrence [, after [, match [, group]]]]]): where
// the match starts, or with after = 1 the position after it; 0 when there is none.
void instr(Call& c) {
  checkCount(c, 7);
  if (c.isNull(0) || c.isNull(1))
    return c.setNull();
  const QString s = c.text(0);
  const auto m = nthMatch(s, patternOf(c, 1, 5), argument(c, 2, 1), argument(c, 3, 1));
  const qint64 after = argument(c, 4, 0);
  if (after != 0 && after != 1)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(after));
  const qint64 group = argument(c, 6, 0);
  if (!m || group > m->lastCapturedIndex())
    return c.set(Value::of(qint64(0)));
  const int g = int(group);
  c.set(Value::of(positionOf(s, after ? m->capturedEnd(g) : m->capturedStart(g))));
}

// REGEXP_COUNT(text, pattern [, position [, match]])
void count(Call& c) {
  checkCount(c, 4);
  if (c.isNull(0) || c.isNull(1))
    return c.setNull();
  const QString s = c.text(0);
  const qint64 position = argument(c, 2, 1);
  checkPositive(position);
  qint64 n = 0;
  for (auto it = patternOf(c, 1, 3).globalMatch(s, offsetOf(s, position)); it.hasNext(); it.next())
    ++n;
  c.set(Value::of(n));
}

// The replacement for one match: \1 to \9 are its groups.
QString replacement(const QString& with, const QRegularExpressionMatch& m) {
  QString out;
  for (qsizetype i = 0; i < with.size(); ++i) {
    if (with[i] == u'\\' && i + 1 < with.size() && with[i + 1].isDigit()) {
      out += m.captured(with[++i].digitValue());
      continue;
    }
    if (with[i] == u'\\' && i + 1 < with.size() && with[i + 1] == u'\\')
      ++i;
    out += with[i];
  }
  return out;
}

// REGEXP_REPLACE(text, pattern [, with [, position [, occurrence [, match]]]]): occurrence 0,
// the default, replaces every match; a NULL pattern leaves the text as it is.
void replace(Call& c) {
  checkCount(c, 6);
  if (c.isNull(0))
    return c.setNull();
  const QString s = c.text(0);
  if (c.isNull(1))
    return c.set(s);
  const QString with = c.count() > 2 && !c.isNull(2) ? c.text(2) : QString();
  const qint64 position = argument(c, 3, 1);
  const qint64 occurrence = argument(c, 4, 0);
  checkPositive(position);
  if (occurrence < 0)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(occurrence));
  QString out;
  qsizetype done = 0;
  qint64 n = 0;
  for (auto it = patternOf(c, 1, 5).globalMatch(s, offsetOf(s, position)); it.hasNext();) {
    const QRegularExpressionMatch m = it.next();
    if (occurrence != 0 && ++n != occurrence)
      continue;
    out += s.mid(done, m.capturedStart() - done) + replacement(with, m);
    done = m.capturedEnd();
    if (occurrence != 0)
      break;
  }
  c.set(out + s.mid(done));
}

} // namespace

namespace RegexpFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const Function functions[] = {
      {"REGEXP_LIKE", 2, entry<like>},    {"REGEXP_LIKE", 3, entry<like>},    {"REGEXP_SUBSTR", -1, entry<substr>},
      {"REGEXP_INSTR", -1, entry<instr>}, {"REGEXP_COUNT", -1, entry<count>}, {"REGEXP_REPLACE", -1, entry<replace>},
  };
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace RegexpFunctions
