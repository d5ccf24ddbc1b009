#include "db/local/MergeStatement.h"

#include "db/local/LocalConnection.h"
#include "db/local/TokenCursor.h"

MergeStatement::MergeStatement(LocalConnection& connection, const std::vector<SqlToken>& tokens, QVariantList values)
    : m_c(connection), m_t(connection.resolveSynonyms(tokens)), m_values(std::move(values)) {}

qint64 MergeStatement::run() {
  parse();
  qint64 rows = 0;
  if (m_matched) {
    checkStableSource();
    // The updated rows, for DELETE WHERE, which removes only rows this MERGE updated.
    if (!m_deleteWhere.empty()) {
      sqliteExec(m_c.db(), QStringLiteral("CREATE TEMP TABLE IF NOT EXISTS dbsweep_merged(r INTEGER PRIMARY KEY); "
                                          "DELETE FROM temp.dbsweep_merged"));
    }
    Tokens update = join({QStringLiteral("UPDATE"), m_target, m_targetAlias, QStringLiteral("SET")});
    for (qsizetype i = 0; i < m_setColumns.size(); ++i) {
      const Tokens item = join({i ? QStringLiteral(", ") : QString(), SqlTranslator::quoteName(m_setColumns[i]),
                                QStringLiteral("= (SELECT"), m_setValues[size_t(i)], QStringLiteral("FROM"), m_source,
                                m_sourceAlias, QStringLiteral("WHERE"), m_on, QStringLiteral(")")});
      update.insert(update.end(), item.begin(), item.end());
    }
    const Tokens where =
        join({QStringLiteral("WHERE EXISTS (SELECT 1 FROM"), m_source, m_sourceAlias, QStringLiteral("WHERE"), m_on,
              QStringLiteral(")"), !m_updateWhere.empty() ? QStringLiteral("AND (") : QString(), m_updateWhere,
              !m_updateWhere.empty() ? QStringLiteral(")") : QString()});
    update.insert(update.end(), where.begin(), where.end());
    if (!m_deleteWhere.empty()) {
      Tokens updated =
          join({QStringLiteral("SELECT"), m_targetName + QStringLiteral(".ROWID FROM"), m_target, m_targetAlias});
      updated.insert(updated.end(), where.begin(), where.end());
      updated.push_back(SqlToken{});
      SqliteStmt keep(m_c.db(),
                      QStringLiteral("INSERT INTO temp.dbsweep_merged ") + m_c.translator(true).translate(updated));
      keep.bindPresent(m_values);
      keep.step();
    }
    rows += dml(update);
  }
  if (m_notMatched) {
    const bool filtered = !m_insertWhere.empty();
    rows += dml(join(
        {QStringLiteral("INSERT INTO"), m_target, m_insertColumns, QStringLiteral("SELECT"), m_insertValues,
         QStringLiteral("FROM"), m_source, m_sourceAlias, QStringLiteral("WHERE NOT EXISTS (SELECT 1 FROM"), m_target,
         m_targetAlias, QStringLiteral("WHERE"), m_on, QStringLiteral(")"),
         filtered ? QStringLiteral("AND (") : QString(), m_insertWhere, filtered ? QStringLiteral(")") : QString()}));
  }
  if (!m_deleteWhere.empty()) {
    Tokens remove = join({QStringLiteral("DELETE FROM"), m_target, m_targetAlias, QStringLiteral("WHERE ("),
                          m_deleteWhere, QStringLiteral(")")});
    remove.push_back(SqlToken{});
    LocalConnection::Dml d = m_c.translateDml(remove, true);
    d.sqlite += QStringLiteral(" AND rowid IN (SELECT r FROM temp.dbsweep_merged)");
    m_c.runDml(d, m_values);
  }
  return rows;
}

// Oracle refuses a MERGE whose source matches one target row more than once: which source row
// would update it is not defined.
void MergeStatement::checkStableSource() {
  Tokens probe = join({QStringLiteral("SELECT COUNT(*) FROM"), m_target, m_targetAlias, QStringLiteral(","), m_source,
                       m_sourceAlias, QStringLiteral("WHERE"), m_on, QStringLiteral("GROUP BY"),
                       m_targetName + QStringLiteral(".ROWID HAVING COUNT(*) > 1")});
  probe.push_back(SqlToken{});
  try {
    SqliteStmt check(m_c.db(), m_c.translator(true).translate(probe));
    check.bindPresent(m_values);
    if (check.step())
      throw OraError(30926, QStringLiteral("unable to get a stable set of rows in the source tables"));
  } catch (const SqliteFailure& f) {
    throw m_c.oracleError(f);
  }
}

qint64 MergeStatement::dml(const Tokens& statement) {
  Tokens t = statement;
  t.push_back(SqlToken{});
  return m_c.runDml(m_c.translateDml(t, true), m_values);
}

void MergeStatement::parse() {
  TokenCursor c(m_t, 1);
  c.expect(u"INTO", 925);
  m_pos = c.pos();
  m_target.begin = m_pos;
  c.qualifiedName(903);
  m_pos = m_target.end = c.pos();
  m_targetName = m_t[m_pos - 1].name();
  if (m_t[m_pos].isName() && !m_t[m_pos].is(u"USING")) {
    m_targetAlias = {m_pos, m_pos + 1};
    m_targetName = m_t[m_pos++].name();
  }
  if (!m_t[m_pos++].is(u"USING"))
    TokenCursor::fail(905);
  if (m_t[m_pos].is(u"("))
    m_source = group();
  else {
    TokenCursor s(m_t, m_pos);
    m_source.begin = m_pos;
    s.qualifiedName(903);
    m_pos = m_source.end = s.pos();
  }
  if (m_t[m_pos].isName() && !m_t[m_pos].is(u"ON"))
    m_sourceAlias = {m_pos, m_pos + 1}, ++m_pos;
  if (!m_t[m_pos++].is(u"ON") || !m_t[m_pos].is(u"("))
    TokenCursor::fail(969);
  m_on = group();
  m_on = {m_on.begin + 1, m_on.end - 1};
  while (m_t[m_pos].is(u"WHEN")) {
    ++m_pos;
    const bool notMatched = m_t[m_pos].is(u"NOT");
    m_pos += notMatched ? 1 : 0;
    if (!m_t[m_pos++].is(u"MATCHED") || !m_t[m_pos++].is(u"THEN") || (notMatched ? m_notMatched : m_matched))
      TokenCursor::fail(905);
    if (notMatched) {
      m_notMatched = true;
      if (!m_t[m_pos++].is(u"INSERT"))
        TokenCursor::fail(905);
      if (m_t[m_pos].is(u"("))
        m_insertColumns = group();
      if (!m_t[m_pos++].is(u"VALUES") || !m_t[m_pos].is(u"("))
        TokenCursor::fail(926);
      m_insertValues = group();
      m_insertValues = {m_insertValues.begin + 1, m_insertValues.end - 1};
      if (m_t[m_pos].is(u"WHERE"))
        ++m_pos, m_insertWhere = until({u"WHEN"});
      continue;
    }
    m_matched = true;
    if (!m_t[m_pos++].is(u"UPDATE") || !m_t[m_pos++].is(u"SET"))
      TokenCursor::fail(905);
    do {
      TokenCursor column(m_t, m_pos);
      auto [qualifier, name] = column.qualifiedName(904);
      m_pos = column.pos();
      if (!m_t[m_pos++].is(u"="))
        TokenCursor::fail(927);
      m_setColumns << name;
      m_setValues.push_back(until({u",", u"WHERE", u"DELETE", u"WHEN"}));
    } while (m_t[m_pos].is(u",") && ++m_pos);
    if (m_t[m_pos].is(u"WHERE"))
      ++m_pos, m_updateWhere = until({u"DELETE", u"WHEN"});
    if (m_t[m_pos].is(u"DELETE")) {
      ++m_pos;
      if (!m_t[m_pos++].is(u"WHERE"))
        TokenCursor::fail(905);
      m_deleteWhere = until({u"WHEN"});
    }
  }
  if (m_t[m_pos].kind != SqlToken::Kind::End || !(m_matched || m_notMatched))
    TokenCursor::fail(m_matched || m_notMatched ? 933 : 905);
  // A column the ON clause compares cannot change: the rows would match differently mid-way.
  for (size_t i = m_on.begin; i < m_on.end; ++i)
    if (m_t[i].isName() && m_setColumns.contains(m_t[i].name()) && !(i + 1 < m_on.end && m_t[i + 1].is(u".")))
      throw OraError(38104, QStringLiteral("Columns referenced in the ON Clause cannot be updated: \"%1\".\"%2\"")
                                .arg(m_targetName, m_t[i].name()));
}

MergeStatement::Range MergeStatement::until(std::initializer_list<QStringView> stops) {
  const size_t begin = m_pos;
  int depth = 0;
  while (m_t[m_pos].kind != SqlToken::Kind::End && !(depth == 0 && m_t[m_pos].isOneOf(stops))) {
    depth += m_t[m_pos].is(u"(") ? 1 : m_t[m_pos].is(u")") ? -1 : 0;
    ++m_pos;
  }
  if (m_pos == begin)
    TokenCursor::fail(936);
  return {begin, m_pos};
}

MergeStatement::Range MergeStatement::group() {
  TokenCursor c(m_t, m_pos);
  const size_t begin = m_pos;
  c.skipGroup();
  m_pos = c.pos();
  return {begin, m_pos};
}

MergeStatement::Tokens MergeStatement::join(std::initializer_list<std::variant<Range, QString>> parts) const {
  Tokens out;
  for (const auto& part : parts) {
    if (const Range* r = std::get_if<Range>(&part)) {
      out.insert(out.end(), m_t.begin() + qsizetype(r->begin), m_t.begin() + qsizetype(r->end));
    } else {
      Tokens words = tokenizeSql(std::get<QString>(part));
      out.insert(out.end(), words.begin(), words.end() - 1);
    }
  }
  return out;
}
