#include "db/local/DdlRunner.h"
#include "db/local/LocalConnection.h"
#include "db/local/OracleDate.h"

#include <QRegularExpression>

namespace {

OracleType typeOf(const QString& text) {
  const std::vector<SqlToken> tokens = tokenizeSql(text);
  TokenCursor c(tokens);
  return OracleType::parse(c);
}

} // namespace

// CREATE TABLE t [(names)] AS query: a column read straight from a table keeps its type and its
// explicit NOT NULL; an expression takes the type of the values it gives, as the rows show them
// (the widest text, NUMBER, or DATE). No other constraint, default or index comes along, as in
// Oracle.
void DdlRunner::createTableAs(const QString& owner, const QString& table, const QString& schema) {
  QStringList names;
  if (m_t.accept(u"(")) {
    do
      names << m_t.name(904);
    while (m_t.accept(u","));
    m_t.expect(u")", 907);
  }
  m_t.expect(u"AS", 905);
  const std::vector<SqlToken> query(m_t.tokens().begin() + qsizetype(m_t.pos()), m_t.tokens().end());
  if (!(query.front().is(u"SELECT") || query.front().is(u"WITH") || query.front().is(u"(")))
    TokenCursor::fail(928);
  const QString select = m_c.translator().translate(query);
  std::vector<Column> columns;
  std::vector<Constraint> constraints;
  try {
    SqliteStmt probe(m_c.db(), select);
    const int n = probe.columnCount();
    if (!names.isEmpty() && names.size() != n)
      throw OraError(1730, QStringLiteral("invalid number of column names specified"));
    // What the expressions give: their widest text, or whether all are numbers or dates.
    std::vector<qint64> widths(size_t(n), 0);
    std::vector<bool> numbers(size_t(n), true), dates(size_t(n), true);
    while (probe.step())
      for (int i = 0; i < n; ++i) {
        const QVariant v = probe.column(i);
        if (v.isNull())
          continue;
        const bool text = v.typeId() == QMetaType::QString;
        numbers[size_t(i)] = numbers[size_t(i)] && !text;
        dates[size_t(i)] = dates[size_t(i)] && text && OracleDate::hasStoredShape(v.toString());
        widths[size_t(i)] = qMax(widths[size_t(i)], qint64(v.toString().toUtf8().size()));
      }
    static const QRegularExpression plainName(QStringLiteral("^[A-Z][A-Z0-9_$#]*$"));
    for (int i = 0; i < n; ++i) {
      Column c;
      c.name = names.isEmpty() ? probe.columnName(i) : names[i];
      if (names.isEmpty() && !plainName.match(c.name).hasMatch() && probe.originColumn(i).isEmpty())
        throw OraError(998, QStringLiteral("must name this expression with a column alias"));
      for (const Column& other : columns)
        if (other.name == c.name)
          throw OraError(957, QStringLiteral("duplicate column name"));
      const QString from = probe.originSchema(i);
      const QString fromOwner = from == u"main" ? m_c.user() : from;
      // Only a NOT NULL constraint of its own comes along, not the one a primary key implies.
      SqliteStmt source(m_c.db(),
                        QStringLiteral("SELECT declared, EXISTS (SELECT 1 FROM CAT.constraints k JOIN CAT.cons_columns "
                                       "kc ON kc.owner = k.owner AND kc.constraint_name = k.constraint_name WHERE "
                                       "k.owner = c.owner AND k.table_name = c.table_name AND kc.column_name = "
                                       "c.column_name AND k.constraint_type = 'C' AND k.search_condition = '\"' || "
                                       "c.column_name || '\" IS NOT NULL'), data_type, data_length, data_precision, "
                                       "data_scale, char_length FROM CAT.columns c WHERE owner = ?1 AND table_name = "
                                       "?2 AND column_name = ?3"));
      source.bindAll({fromOwner, probe.originTable(i), probe.originColumn(i)});
      if (!probe.originColumn(i).isEmpty() && source.step()) {
        c.type.sqliteType = source.text(0);
        c.type.dataType = source.text(2);
        c.type.dataLength = source.column(3).toLongLong();
        c.type.precision = source.column(4);
        c.type.scale = source.column(5);
        c.type.charLength = source.column(6).toLongLong();
        if (source.column(1).toInt() == 1) {
          Constraint k;
          k.type = u'C';
          k.columns = {c.name};
          k.condition = SqlTranslator::quoteName(c.name) + QStringLiteral(" IS NOT NULL");
          constraints.push_back(k);
        }
      } else if (dates[size_t(i)] && widths[size_t(i)] > 0) {
        c.type = typeOf(QStringLiteral("DATE"));
      } else if (numbers[size_t(i)]) {
        c.type = typeOf(QStringLiteral("NUMBER"));
      } else {
        c.type = typeOf(QStringLiteral("VARCHAR2(%1)").arg(qMax<qint64>(1, widths[size_t(i)])));
      }
      columns.push_back(c);
    }
  } catch (const SqliteFailure& f) {
    throw m_c.oracleError(f);
  }
  inTransaction([&] {
    addTable(owner, table, schema, columns, constraints, false);
    sqliteExec(m_c.db(), QStringLiteral("INSERT INTO %1.%2 SELECT * FROM (%3)")
                             .arg(SqlTranslator::quoteName(schema), SqlTranslator::quoteName(table), select));
  });
}
