#include "db/local/LocalDynaset.h"

#include "db/local/LocalConnection.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleTimestamp.h"
#include "db/local/SqliteNumber.h"
#include "db/local/TokenCursor.h"

namespace {

const QString RowidLabel = QStringLiteral("ROWID$");

// For "SELECT ... FROM [owner.]table [alias] [WHERE ...] [ORDER BY ...]": the position of FROM
// and the table's tokens; 0 when the query reads more than one table or groups its rows.
struct SingleTable {
  size_t from = 0;
  size_t tableBegin = 0, tableEnd = 0;
  QString alias;
};

SingleTable singleTable(const std::vector<SqlToken>& t) {
  SingleTable s;
  if (!t[0].is(u"SELECT") || t[1].is(u"DISTINCT") || t[1].is(u"UNIQUE") || OuterJoins::contains(t, 0, t.size()))
    return {};
  int depth = 0;
  for (size_t i = 1; i < t.size(); ++i) {
    if (t[i].is(u"("))
      ++depth;
    else if (t[i].is(u")"))
      --depth;
    else if (depth == 0 && t[i].is(u"FROM")) {
      s.from = i;
      break;
    }
  }
  if (!s.from)
    return {};
  TokenCursor c(t, s.from + 1);
  s.tableBegin = c.pos();
  if (!c.peek().isName())
    return {};
  c.qualifiedName();
  s.tableEnd = c.pos();
  if (c.peek().isName() && !c.peek().is(u"WHERE") && !c.peek().is(u"ORDER"))
    s.alias = c.next().name();
  depth = 0;
  for (size_t i = c.pos(); i < t.size(); ++i) {
    if (t[i].is(u"("))
      ++depth;
    else if (t[i].is(u")"))
      --depth;
    else if (depth == 0 && (t[i].is(u",") || t[i].is(u"JOIN") || t[i].is(u"GROUP") || t[i].is(u"UNION") ||
                            t[i].is(u"MINUS") || t[i].is(u"INTERSECT") || t[i].is(u"CONNECT")))
      return {};
  }
  return s;
}

} // namespace

std::unique_ptr<LocalDynaset> LocalDynaset::open(std::shared_ptr<LocalConnection> c, const std::vector<SqlToken>& t,
                                                 int options) {
  SqlTranslator tr = c->translator();
  QString sql;
  QString deleteSql;
  std::pair<QString, QString> target; // the owner and table a Delete() deletes from
  const SingleTable single = options == Updatable ? singleTable(t) : SingleTable{};
  if (single.from) {
    const QString table = tr.translate(t, single.tableBegin, single.tableEnd);
    const QString qualifier = single.alias.isEmpty() ? table : SqlTranslator::quoteName(single.alias);
    sql = tr.translate(t, 0, single.from) + QStringLiteral(", ") + qualifier + QStringLiteral(".rowid AS ") +
          SqlTranslator::quoteName(RowidLabel) + u' ' + tr.translate(t, single.from, t.size());
    deleteSql = QStringLiteral("DELETE FROM ") + table + QStringLiteral(" WHERE rowid = ?1");
    TokenCursor name(t, single.tableBegin);
    std::tie(target.first, target.second) = name.qualifiedName();
  } else {
    sql = tr.translate(t);
  }
  return std::unique_ptr<LocalDynaset>(
      new LocalDynaset(std::move(c), sql, options, deleteSql, tr.textColumns(), target));
}

LocalDynaset::LocalDynaset(std::shared_ptr<LocalConnection> connection, const QString& sql, int options,
                           QString deleteSql, const QList<bool>& textColumns, std::pair<QString, QString> target)
    : m_connection(std::move(connection)), m_sql(sql), m_options(options), m_deleteSql(std::move(deleteSql)),
      m_target(std::move(target)) {
  try {
    m_stmt = std::make_unique<SqliteStmt>(m_connection->db(), sql);
  } catch (const SqliteFailure& f) {
    throw m_connection->oracleError(f);
  }
  const int n = m_stmt->columnCount() - (m_deleteSql.isEmpty() ? 0 : 1);
  for (int i = 0; i < n; ++i) {
    const QString declared = m_stmt->declaredType(i);
    const bool text = !declared.isEmpty() || textColumns.value(i);
    m_dates.push_back(declared == u"DATE" ? DateColumn::Yes : text ? DateColumn::No : DateColumn::Maybe);
    m_names.append(m_stmt->columnName(i));
  }
}

// DATE values read in the session's format; until the session sets one, in the stored form
// without the time when it is midnight. A DATE column may hold a value as it was written
// ('2004/1/5'): it reads in the full form. An expression (MAX(date), SYSDATE, TO_DATE(...)) has
// no declared type: its text tells, so a text that reads as a date in the stored form is shown
// as one, unless the select list made it text (TO_CHAR, ||).
QVariant LocalDynaset::shown(QVariant value, int column) const {
  if (column >= int(m_dates.size()) || m_dates[size_t(column)] == DateColumn::No ||
      value.typeId() != QMetaType::QString)
    return value;
  const QString text = value.toString();
  const SessionSettings& session = m_connection->settings();
  const bool canonical = text.size() == 19 && text[4] == u'/' && text[7] == u'/' && text[10] == u' ' &&
                         text[13] == u':' && text[16] == u':' && text[0].isDigit();
  if (canonical && session.dateFormat.isEmpty())
    return text.endsWith(QStringLiteral(" 00:00:00")) ? QVariant(text.left(10)) : value;
  if (!canonical && m_dates[size_t(column)] == DateColumn::Maybe && !(text.size() >= 8 && text[4] == u'/'))
    return value;
  try {
    if (const auto date = OracleDateTime::parseStored(text))
      return session.dateText(*date);
  } catch (const OraError&) {
    // Not a date after all: shown as the text it is.
  }
  return value;
}

bool LocalDynaset::fetchTo(qint64 row) {
  while (!m_done && row >= m_first + qint64(m_rows.size())) {
    bool more = false;
    try {
      more = m_stmt->step();
    } catch (const SqliteFailure& f) {
      m_done = true;
      throw m_connection->oracleError(f);
    }
    if (!more) {
      m_done = true;
      m_stmt.reset(); // gives the table back to DDL and to other writers
      break;
    }
    QVariantList values = m_stmt->row();
    for (int i = 0; i < int(m_dates.size()); ++i) {
      if (m_dates[size_t(i)] != DateColumn::No)
        values[i] = shown(values[i], i);
      // A NUMBER with a fraction reads as Oracle prints it (.5), not as a double (0.5).
      if (values[i].typeId() == QMetaType::Double)
        values[i] = SqliteNumber::text(values[i].toDouble(), m_connection->settings().wideNumbers);
      else if (values[i].typeId() == QMetaType::QString && values[i].toString().startsWith(u'\x1f'))
        values[i] = OracleTimestamp::shown(values[i].toString());
    }
    if (m_options == NoCache && !m_rows.empty()) {
      m_first += qint64(m_rows.size());
      m_rows.clear();
    }
    m_rows.push_back(std::move(values));
  }
  return row >= m_first && row < m_first + qint64(m_rows.size());
}

const QVariantList& LocalDynaset::current() {
  std::lock_guard lock(m_connection->mutex());
  m_connection->checkAlive();
  if (m_closed || !fetchTo(m_pos))
    throw OraError(1002, QStringLiteral("fetch out of sequence"));
  return m_rows[size_t(m_pos - m_first)];
}

qint64 LocalDynaset::RecordCount() {
  std::lock_guard lock(m_connection->mutex());
  m_connection->checkAlive();
  if (m_count >= 0)
    return m_count;
  if (m_options == NoCache && !m_done) {
    // Counting must not move the cursor nor keep millions of rows.
    try {
      m_count = sqliteValue(m_connection->db(), QStringLiteral("SELECT count(*) FROM (") + m_sql + u')').toLongLong();
    } catch (const SqliteFailure& f) {
      throw m_connection->oracleError(f);
    }
    return m_count;
  }
  fetchTo(std::numeric_limits<qint64>::max());
  m_count = m_first + qint64(m_rows.size());
  return m_count;
}

QVariant LocalDynaset::Fields(int index) {
  m_names.check(index);
  return current()[index];
}

QVariantList LocalDynaset::Row() {
  QVariantList values = current();
  // An updatable dynaset carries each row's rowid after its columns; it is not a field.
  if (values.size() != FieldCount())
    values.resize(FieldCount());
  return values;
}

void LocalDynaset::MoveNext() {
  std::lock_guard lock(m_connection->mutex());
  if (m_pos < m_first + qint64(m_rows.size()) || !m_done)
    ++m_pos;
}

bool LocalDynaset::IsEOF() {
  std::lock_guard lock(m_connection->mutex());
  m_connection->checkAlive();
  return m_closed || !fetchTo(m_pos);
}

void LocalDynaset::Delete() {
  if (m_deleteSql.isEmpty())
    throw OraError(1732, QStringLiteral("data manipulation operation not legal on this view"));
  std::lock_guard lock(m_connection->mutex());
  // Each delete is a call of its own, as a round trip to a server would be: a kill that has
  // returned to its killer fails it at once, after rolling back the deletes before it.
  m_connection->startCall();
  const QVariant rowid = current().back();
  m_connection->checkAccess(m_target.first.isEmpty() ? m_connection->user() : m_target.first, m_target.second,
                            QStringLiteral("DELETE"));
  bool began = false;
  try {
    began = m_connection->beginPending();
    sqliteExec(m_connection->db(), m_deleteSql, {rowid});
  } catch (const SqliteFailure& f) {
    const OraError error = m_connection->oracleError(f, {}, {}, SqlErrors::Dml::Delete);
    if (began)
      m_connection->abandonPending();
    throw error;
  }
}

void LocalDynaset::Close() {
  std::lock_guard lock(m_connection->mutex());
  m_stmt.reset();
  m_rows.clear();
  m_closed = true;
}
