#include "db/local/MultiTableInsert.h"

#include "db/local/LocalConnection.h"
#include "db/local/TokenCursor.h"

namespace {

const QString Rows = QStringLiteral("DBSWEEP$INSERT_ROWS");

std::vector<SqlToken> tokensOf(const QString& text) {
  std::vector<SqlToken> t = tokenizeSql(text);
  t.pop_back();
  return t;
}

} // namespace

MultiTableInsert::MultiTableInsert(LocalConnection& connection, const std::vector<SqlToken>& tokens,
                                   QVariantList values)
    : m_c(connection), m_t(connection.resolveSynonyms(tokens)), m_values(std::move(values)) {}

qint64 MultiTableInsert::run() {
  size_t i = 1;
  const bool first = m_t[i].is(u"FIRST");
  if (m_t[i].is(u"ALL") || first)
    ++i;
  const bool conditional = m_t[i].is(u"WHEN");
  if (first && !conditional)
    TokenCursor::fail(905);
  std::vector<Into> intos;
  std::vector<std::pair<size_t, size_t>> conditions; // of each WHEN
  int branch = 0;
  bool otherwise = false;
  while (m_t[i].is(u"INTO") || m_t[i].is(u"WHEN") || m_t[i].is(u"ELSE")) {
    if (m_t[i].is(u"WHEN") || m_t[i].is(u"ELSE")) {
      if (!conditional || otherwise)
        TokenCursor::fail(905);
      if (m_t[i].is(u"ELSE")) {
        otherwise = true;
        branch = 0;
        ++i;
      } else {
        const size_t begin = ++i;
        for (int depth = 0; m_t[i].kind != SqlToken::Kind::End && !(depth == 0 && m_t[i].is(u"THEN")); ++i)
          depth += m_t[i].is(u"(") ? 1 : m_t[i].is(u")") ? -1 : 0;
        if (m_t[i].kind == SqlToken::Kind::End || i == begin)
          TokenCursor::fail(905);
        conditions.emplace_back(begin, i++);
        branch = int(conditions.size());
      }
      if (!m_t[i].is(u"INTO"))
        TokenCursor::fail(925);
      continue;
    }
    Into into{i, 0, branch};
    TokenCursor c(m_t, i + 1);
    c.qualifiedName(903);
    if (c.peek().is(u"("))
      c.skipGroup();
    if (c.accept(u"VALUES")) {
      if (!c.peek().is(u"("))
        TokenCursor::fail(906);
      c.skipGroup();
    }
    i = into.end = c.pos();
    intos.push_back(into);
  }
  if (intos.empty())
    TokenCursor::fail(925);
  if (!(m_t[i].is(u"SELECT") || m_t[i].is(u"WITH") || m_t[i].is(u"(")))
    TokenCursor::fail(928);

  const std::vector<SqlToken> query(m_t.begin() + qsizetype(i), m_t.end());
  sqlite3* db = m_c.db();
  // The rows of a statement an error stopped may be left over when the rollback undid their drop.
  const auto dropRows = [db] {
    sqlite3_exec(db, qPrintable(QStringLiteral("DROP TABLE IF EXISTS temp.") + SqlTranslator::quoteName(Rows)), nullptr,
                 nullptr, nullptr);
  };
  dropRows();
  try {
    SqliteStmt keep(db, QStringLiteral("CREATE TEMP TABLE %1 AS %2")
                            .arg(SqlTranslator::quoteName(Rows), m_c.translator(true).translate(query)));
    keep.bindPresent(m_values);
    keep.step();
  } catch (const SqliteFailure& f) {
    throw m_c.oracleError(f);
  }
  qint64 rows = 0;
  try {
    // Which WHEN a row goes by: the first one true for FIRST; for ALL each WHEN on its own.
    const auto test = [&](int k) {
      std::vector<SqlToken> t = tokensOf(QStringLiteral("CASE"));
      const auto when = [&](size_t c, const QString& result) {
        const auto w = tokensOf(QStringLiteral("WHEN ("));
        t.insert(t.end(), w.begin(), w.end());
        t.insert(t.end(), m_t.begin() + qsizetype(conditions[c].first), m_t.begin() + qsizetype(conditions[c].second));
        const auto then = tokensOf(QStringLiteral(") THEN ") + result);
        t.insert(t.end(), then.begin(), then.end());
      };
      if (k > 0 && !first) {
        when(size_t(k - 1), QStringLiteral("1"));
      } else {
        for (size_t c = 0; c < conditions.size(); ++c)
          when(c, QString::number(c + 1));
      }
      const auto tail = tokensOf(QStringLiteral("ELSE 0 END = %1").arg(k > 0 && !first ? 1 : k));
      t.insert(t.end(), tail.begin(), tail.end());
      return t;
    };
    for (const Into& into : intos) {
      std::vector<SqlToken> t = tokensOf(QStringLiteral("INSERT"));
      TokenCursor c(m_t, into.begin + 1);
      c.qualifiedName(903);
      if (c.peek().is(u"("))
        c.skipGroup();
      t.insert(t.end(), m_t.begin() + qsizetype(into.begin), m_t.begin() + qsizetype(c.pos()));
      const auto select = tokensOf(QStringLiteral("SELECT"));
      t.insert(t.end(), select.begin(), select.end());
      if (c.accept(u"VALUES"))
        t.insert(t.end(), m_t.begin() + qsizetype(c.pos()) + 1, m_t.begin() + qsizetype(into.end) - 1);
      else
        t.push_back(SqlToken{SqlToken::Kind::Symbol, QStringLiteral("*"), 0, 0, 0});
      const auto from = tokensOf(QStringLiteral("FROM ") + SqlTranslator::quoteName(Rows));
      t.insert(t.end(), from.begin(), from.end());
      if (conditional) {
        const auto where = tokensOf(QStringLiteral("WHERE"));
        t.insert(t.end(), where.begin(), where.end());
        const auto condition = test(into.branch);
        t.insert(t.end(), condition.begin(), condition.end());
      }
      t.push_back(SqlToken{});
      rows += m_c.runDml(m_c.translateDml(t, true), m_values);
    }
  } catch (...) {
    dropRows();
    throw;
  }
  dropRows();
  return rows;
}
