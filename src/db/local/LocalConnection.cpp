#include "db/local/LocalConnection.h"

#include "db/local/OracleFunctions.h"
#include "db/local/SessionContext.h"

#include "db/local/CastFunction.h"
#include "db/local/Catalogue.h"
#include "db/local/ColumnTypes.h"
#include "db/local/DdlRunner.h"
#include "db/local/DecimalAggregates.h"
#include "db/local/DictionaryViews.h"
#include "db/local/HierarchicalQueries.h"
#include "db/local/IdentityColumns.h"
#include "db/local/LocalDynaset.h"
#include "db/local/LocalEngine.h"
#include "db/local/MergeStatement.h"
#include "db/local/MultiTableInsert.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OrderedAggregates.h"
#include "db/local/Privileges.h"
#include "db/local/RowLocks.h"
#include "db/local/RownumLimits.h"
#include "db/local/SessionContext.h"
#include "db/local/SqlErrors.h"
#include "db/local/Synonyms.h"
#include "db/local/TokenCursor.h"
#include "db/local/ViewDml.h"
#include "db/local/ZoneFunctions.h"
#include "db/local/plsql/PlsqlRunner.h"

#include <QDateTime>
#include <QScopeGuard>

#include <cstring>

namespace {

constexpr int MaxAttached = 8; // SQLite allows ten: CAT and one spare for the DDL of a DBA

enum class Kind { Query, Dml, Merge, Ddl, Transaction, Block, Session, Unknown };

Kind kindOf(const std::vector<SqlToken>& t) {
  const SqlToken& first = t.front();
  if (first.is(u"SELECT") || first.is(u"WITH") || first.is(u"("))
    return Kind::Query;
  if (first.is(u"INSERT") || first.is(u"UPDATE") || first.is(u"DELETE"))
    return Kind::Dml;
  if (first.is(u"MERGE"))
    return Kind::Merge;
  if (first.is(u"COMMIT") || first.is(u"ROLLBACK") || first.is(u"SAVEPOINT"))
    return Kind::Transaction;
  if (first.is(u"BEGIN") || first.is(u"DECLARE"))
    return Kind::Block;
  if ((first.is(u"ALTER") && t.size() > 1 && t[1].is(u"SESSION")) || first.is(u"SET"))
    return Kind::Session;
  if (first.is(u"CREATE") || first.is(u"ALTER") || first.is(u"DROP") || first.is(u"TRUNCATE") || first.is(u"COMMENT") ||
      first.is(u"RENAME") || first.is(u"GRANT") || first.is(u"REVOKE"))
    return Kind::Ddl;
  return Kind::Unknown;
}

// CREATE [OR REPLACE] [EDITIONABLE|NONEDITIONABLE] PROCEDURE|FUNCTION|PACKAGE|TRIGGER|TYPE|LIBRARY:
// stored PL/SQL, whose text ends with the ';' of its last END.
bool createsStoredUnit(const std::vector<SqlToken>& t) {
  size_t i = 1;
  if (!t.front().is(u"CREATE"))
    return false;
  if (t[i].is(u"OR") && i + 1 < t.size() && t[i + 1].is(u"REPLACE"))
    i += 2;
  if (i < t.size() && (t[i].is(u"EDITIONABLE") || t[i].is(u"NONEDITIONABLE")))
    ++i;
  for (const char16_t* unit : {u"PROCEDURE", u"FUNCTION", u"PACKAGE", u"TRIGGER", u"TYPE", u"LIBRARY"})
    if (i < t.size() && t[i].is(unit))
      return true;
  return false;
}

bool canonicalDate(const char* s, int n) {
  return n == 19 && s[4] == '/' && s[7] == '/' && s[10] == ' ' && s[13] == ':' && s[16] == ':';
}

QByteArray normalizedDate(const char* s, int n) {
  const QString text = QString::fromUtf8(s, n);
  try {
    if (const auto date = OracleDateTime::parseStored(text))
      return OracleDateTime::stored(*date).toUtf8();
  } catch (const OraError&) {
    // Not a date after all (2004/02/30): it compares as the text it is.
  }
  return text.toUtf8();
}

// The collation of DATE columns: a column compared with a literal written in the session's
// date format ('2004/12/31', '2004/1/5 9:30') compares as the dates, as Oracle converts the
// literal to a DATE.
int compareDates(void*, int n1, const void* p1, int n2, const void* p2) {
  const auto* s1 = static_cast<const char*>(p1);
  const auto* s2 = static_cast<const char*>(p2);
  if (canonicalDate(s1, n1) && canonicalDate(s2, n2))
    return std::memcmp(s1, s2, 19);
  const QByteArray a = canonicalDate(s1, n1) ? QByteArray(s1, n1) : normalizedDate(s1, n1);
  const QByteArray b = canonicalDate(s2, n2) ? QByteArray(s2, n2) : normalizedDate(s2, n2);
  return a.compare(b);
}

OraError killedError() { return OraError(28, QStringLiteral("your session has been killed")); }

LocalConnection* self(sqlite3_context* ctx) { return static_cast<LocalConnection*>(sqlite3_user_data(ctx)); }

QString argText(sqlite3_value* v) {
  return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(v)), sqlite3_value_bytes(v));
}

void resultError(sqlite3_context* ctx, const OraError& e) {
  sqlite3_result_error(ctx, e.message().toUtf8().constData(), -1);
}

// Sequence numbers are handed out outside the session's transaction, as Oracle does: a rollback
// never gives a number back.
qint64 takeNext(LocalConnection* c, const QString& owner, const QString& name) {
  sqlite3* side = c->side();
  try {
    sqliteExec(side, QStringLiteral("BEGIN IMMEDIATE"));
    SqliteStmt s(side, QStringLiteral("SELECT last_number, increment_by, min_value, max_value, cycle_flag FROM "
                                      "CAT.sequences WHERE owner = ?1 AND sequence_name = ?2"));
    s.bindAll({owner, name});
    // Another schema's sequence is there only for those granted SELECT on it or on any.
    const bool granted =
        owner == c->user() ||
        Privileges::holdsSystem(side, c->user(), c->isDba(), QStringLiteral("SELECT ANY SEQUENCE")) ||
        sqliteValue(side,
                    QStringLiteral("SELECT 1 FROM CAT.tab_privs WHERE grantee IN (?1, 'PUBLIC') AND owner = ?2 AND "
                                   "table_name = ?3 AND privilege = 'SELECT'"),
                    {c->user(), owner, name})
            .isValid();
    if (!granted || !s.step())
      throw OraError(2289, QStringLiteral("sequence does not exist"));
    const qint64 value = s.column(0).toLongLong();
    const qint64 step = s.column(1).toLongLong();
    const qint64 low = s.column(2).toLongLong();
    const qint64 high = s.column(3).toLongLong();
    if ((step > 0 && value > high) || (step < 0 && value < low))
      throw OraError(
          8004, QStringLiteral("sequence %1.NEXTVAL %2 and cannot be instantiated")
                    .arg(name, step > 0 ? QStringLiteral("exceeds MAXVALUE") : QStringLiteral("goes below MINVALUE")));
    qint64 following = value + step;
    if (s.column(4).toString() == u"Y" && (following > high || following < low))
      following = step > 0 ? low : high;
    sqliteExec(side,
               QStringLiteral("UPDATE CAT.sequences SET last_number = ?3 WHERE owner = ?1 AND sequence_name = ?2"),
               {owner, name, following});
    sqliteExec(side, QStringLiteral("COMMIT"));
    return value;
  } catch (...) {
    sqlite3_exec(side, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

// dbsweep_nextval(owner, name[, statement, references]): with the references of the sequence in
// its statement, one new number a row.
void nextval(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  LocalConnection* c = self(ctx);
  const QString owner = argText(argv[0]);
  const QString name = argText(argv[1]);
  const QString key = owner + u'.' + name;
  try {
    qint64 value = 0;
    const qint64 references = argc == 4 ? sqlite3_value_int64(argv[3]) : 1;
    if (references > 1) {
      LocalConnection::RowValue& row = c->rowValues()[key];
      const qint64 statement = sqlite3_value_int64(argv[2]);
      if (row.statement != statement)
        row = {statement, 0, 0};
      if (row.calls++ % references == 0)
        row.value = takeNext(c, owner, name);
      value = row.value;
    } else {
      value = takeNext(c, owner, name);
    }
    c->currentValues().insert(key, value);
    sqlite3_result_int64(ctx, value);
  } catch (const OraError& e) {
    resultError(ctx, e);
  } catch (const SqliteFailure&) {
    resultError(ctx,
                OraError(54, QStringLiteral("resource busy and acquire with NOWAIT specified or timeout expired")));
  }
}

void currval(sqlite3_context* ctx, int, sqlite3_value** argv) {
  LocalConnection* c = self(ctx);
  const QString key = argText(argv[0]) + u'.' + argText(argv[1]);
  const auto it = c->currentValues().constFind(key);
  if (it == c->currentValues().constEnd())
    resultError(
        ctx,
        OraError(8002, QStringLiteral("sequence %1.CURRVAL is not yet defined in this session").arg(argText(argv[1]))));
  else
    sqlite3_result_int64(ctx, *it);
}

} // namespace

LocalConnection::LocalConnection(Logon logon, sqlite3* db, sqlite3* side)
    : m_logon(std::move(logon)), m_db(db), m_side(side) {
  registerFunctions();
  m_watch = std::make_unique<SessionWatch>(m_logon.folder, m_side, m_logon.user, [this] {
    // Runs on the watch thread: stop whatever the session is doing and give its locks back.
    sqlite3_interrupt(m_db);
    std::lock_guard lock(m_mutex);
    rollbackQuietly();
  });
  Catalogue::installViews(m_db, m_logon.user, m_logon.dba,
                          Privileges::holdsSystem(m_db, m_logon.user, m_logon.dba, QStringLiteral("SELECT ANY TABLE")),
                          m_watch->sid());
  DictionaryViews::install(m_db, m_logon.user, m_logon.dba);
  Synonyms::installViews(m_db, m_logon.user, m_logon.dba);
  Privileges::installViews(m_db, m_logon.user, m_logon.dba);
}

LocalConnection::~LocalConnection() {
  {
    std::lock_guard lock(m_mutex);
    // Work not committed is lost when a session ends, as on a server.
    rollbackQuietly();
  }
  m_watch.reset();
  sqlite3_close_v2(m_db);
  sqlite3_close_v2(m_side);
}

void LocalConnection::registerFunctions() {
  sqlite3_create_collation_v2(m_db, "ORADATE", SQLITE_UTF8, nullptr, compareDates, nullptr);
  OracleFunctions::registerAll(m_db, &m_settings);
  CastFunction::registerAll(m_db, &m_settings);
  ZoneFunctions::registerAll(m_db, &m_settings);
  ColumnTypes::registerFunctions(m_db, &m_settings);
  DecimalAggregates::registerAll(m_db, &m_settings);
  HierarchicalQueries::registerFunctions(m_db);
  SessionContext::registerAll(m_db, this);
  OrderedAggregates::registerFunctions(m_db);
  RownumLimits::registerFunctions(m_db);
  DictionaryViews::registerFunctions(m_db, &m_settings);
  sqlite3_create_function_v2(m_db, "dbsweep_nextval", 2, SQLITE_UTF8, this, nextval, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(m_db, "dbsweep_nextval", 4, SQLITE_UTF8, this, nextval, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(m_db, "dbsweep_currval", 2, SQLITE_UTF8, this, currval, nullptr, nullptr, nullptr);
}

void LocalConnection::checkAlive() {
  if (m_watch && m_watch->killed())
    throw killedError();
}

void LocalConnection::startCall() {
  m_settings.wideNumbers.clear();
  if (m_watch && m_watch->killedNow()) {
    rollbackQuietly();
    throw killedError();
  }
}

void LocalConnection::rollbackQuietly() {
  if (m_inTransaction) {
    sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    ++m_transactionsEnded;
  }
  m_inTransaction = false;
  m_savepoints.clear();
}

// SAVEPOINT name and ROLLBACK [WORK] TO [SAVEPOINT] name: SQLite's savepoints inside the
// session's transaction, which the savepoint starts if nothing is pending yet. Rolling back to
// one keeps it and forgets those set after it, as Oracle does. Outside a transaction every
// statement commits by itself, leaving nothing to roll back to.
qint64 LocalConnection::savepoint(const std::vector<SqlToken>& tokens) {
  TokenCursor c(tokens, 1);
  const bool setting = tokens.front().is(u"SAVEPOINT");
  if (!setting) {
    c.accept(u"WORK");
    c.expect(u"TO", 933);
    c.accept(u"SAVEPOINT");
  }
  const QString name = c.name(setting ? 922 : 933);
  if (!c.atEnd())
    TokenCursor::fail(933);
  const QString sql = QStringLiteral("%1 %2").arg(setting ? QStringLiteral("SAVEPOINT") : QStringLiteral("ROLLBACK TO"),
                                                  SqlTranslator::quoteName(name));
  if (setting) {
    beginPending();
    if (!m_inTransaction)
      return 0;
    m_savepoints.removeAll(name);
    m_savepoints.append(name);
  } else {
    if (!m_savepoints.contains(name))
      throw OraError(1086, QStringLiteral("savepoint '%1' never established in this session or is invalid").arg(name));
    m_savepoints.resize(m_savepoints.indexOf(name) + 1);
  }
  try {
    sqliteExec(m_db, sql);
  } catch (const SqliteFailure& f) {
    throw oracleError(f);
  }
  return 0;
}

QString LocalConnection::schemaOf(const QString& owner) {
  if (owner == m_logon.user)
    return QStringLiteral("main");
  if (m_attached.contains(owner)) {
    m_attached.removeOne(owner);
    m_attached.append(owner);
    return owner;
  }
  auto known = m_users.constFind(owner);
  if (known == m_users.constEnd())
    known = m_users.insert(
        owner, sqliteValue(m_db, QStringLiteral("SELECT 1 FROM CAT.users WHERE username = ?1"), {owner}).isValid());
  if (!*known)
    return {};
  if (m_inTransaction)
    throw OraError(604, QStringLiteral("error occurred at recursive SQL level 1: the schema %1 cannot be opened while "
                                       "changes are pending; commit or roll back first")
                            .arg(owner));
  if (m_attached.size() >= MaxAttached) {
    sqliteExec(m_db, QStringLiteral("DETACH DATABASE ") + SqlTranslator::quoteName(m_attached.front()));
    m_attached.removeFirst();
  }
  sqliteExec(m_db, QStringLiteral("ATTACH DATABASE ?1 AS ") + SqlTranslator::quoteName(owner),
             {Catalogue::schemaFile(m_logon.folder, owner)});
  if (!flushing())
    sqliteExec(m_db, QStringLiteral("PRAGMA %1.synchronous=OFF").arg(SqlTranslator::quoteName(owner)));
  m_attached.append(owner);
  return owner;
}

SqlTranslator LocalConnection::translator(bool binds) {
  SqlTranslator::Context context{m_logon.user, [this](const QString& owner) { return schemaOf(owner); }, {}, {}, {}, {},
                                 binds, {}};
  context.hasColumn = [this](std::vector<SqlToken> item, const QString& column) {
    item.push_back(SqlToken{});
    try {
      SqliteStmt probe(m_db,
                       QStringLiteral("SELECT * FROM ") + translator().translate(item) + QStringLiteral(" WHERE 0"));
      for (int i = 0; i < probe.columnCount(); ++i)
        if (probe.columnName(i).compare(column, Qt::CaseInsensitive) == 0)
          return true;
    } catch (const SqliteFailure&) {
      // A FROM item that does not exist has no columns; the query reports it.
    }
    return false;
  };
  context.checkAccess = [this](const QString& owner, const QString& table) {
    const bool target = owner == m_targetOwner && table == m_targetTable;
    checkAccess(owner, table, target ? m_targetPrivilege : QStringLiteral("SELECT"));
  };
  context.declaredType = [this](const QString& sql) -> std::optional<QString> {
    try {
      return SqliteStmt(m_db, sql).declaredType(0);
    } catch (const SqliteFailure&) {
      return std::nullopt; // a column of an outer query, or none at all
    }
  };
  context.charColumnNames = [this](const QStringList& names) {
    QStringList marks;
    QVariantList values;
    for (const QString& n : names)
      marks << QStringLiteral("?"), values << n;
    SqliteStmt s(m_db, QStringLiteral("SELECT DISTINCT column_name FROM CAT.columns WHERE data_type IN ('CHAR', "
                                      "'NCHAR') AND column_name IN (%1)")
                           .arg(marks.join(u',')));
    s.bindAll(values);
    QSet<QString> found;
    while (s.step())
      found << s.text(0);
    return found;
  };
  context.columnNames = [this](const QString& sql) -> std::optional<QStringList> {
    try {
      SqliteStmt probe(m_db, sql);
      QStringList names;
      for (int i = 0; i < probe.columnCount(); ++i)
        names << probe.columnName(i);
      return names;
    } catch (const SqliteFailure&) {
      return std::nullopt;
    }
  };
  return SqlTranslator(context);
}

std::vector<SqlToken> LocalConnection::resolveSynonyms(const std::vector<SqlToken>& tokens) const {
  return Synonyms::resolve(m_db, m_logon.user, tokens, m_attached);
}

void LocalConnection::requireSystemPrivilege(QStringView privilege) const {
  if (!Privileges::holdsSystem(m_db, m_logon.user, m_logon.dba, privilege.toString()))
    throw OraError(1031, QStringLiteral("insufficient privileges"));
}

void LocalConnection::checkAccess(const QString& owner, const QString& table, const QString& privilege) {
  if (owner == m_logon.user || m_logon.dba ||
      Privileges::holdsSystem(m_db, m_logon.user, false, privilege + QStringLiteral(" ANY TABLE")))
    return;
  SqliteStmt s(m_db, QStringLiteral("SELECT privilege FROM CAT.tab_privs WHERE owner = ?1 AND table_name = ?2 AND "
                                    "grantee IN (?3, 'PUBLIC')"));
  s.bindAll({owner, table, m_logon.user});
  QStringList held;
  while (s.step())
    held << s.text(0);
  // A table read through SELECT ANY TABLE is there, just not for this statement.
  if (held.isEmpty() && !Privileges::holdsSystem(m_db, m_logon.user, false, QStringLiteral("SELECT ANY TABLE")))
    throw OraError(942, QStringLiteral("table or view does not exist"));
  if (!held.contains(privilege))
    throw OraError(1031, QStringLiteral("insufficient privileges"));
}

bool LocalConnection::beginPending() {
  if (!m_explicit || m_inTransaction)
    return false;
  sqliteExec(m_db, QStringLiteral("BEGIN"));
  m_inTransaction = true;
  return true;
}

void LocalConnection::commitPending() {
  if (m_inTransaction) {
    try {
      sqliteExec(m_db, QStringLiteral("COMMIT"));
    } catch (const SqliteFailure& f) {
      throw oracleError(f);
    }
    m_inTransaction = false;
    m_savepoints.clear();
    ++m_transactionsEnded;
  }
}

void LocalConnection::enableServerOutput(bool on) {
  std::lock_guard lock(m_mutex);
  m_outputEnabled = on;
}

QStringList LocalConnection::takeServerOutput() {
  std::lock_guard lock(m_mutex);
  return std::exchange(m_outputLines, {});
}

void LocalConnection::putOutput(const QString& text, bool endLine) {
  if (!m_outputEnabled)
    return;
  m_outputLine += text;
  if (endLine)
    m_outputLines << std::exchange(m_outputLine, {});
}

OraError LocalConnection::oracleError(const SqliteFailure& failure, const QString& owner, const QString& table,
                                      SqlErrors::Dml dml, const std::optional<SqlErrors::ForeignKey>& violated) const {
  if ((failure.code & 0xff) == SQLITE_INTERRUPT && m_watch && m_watch->killed())
    return killedError();
  return SqlErrors::toOracle(m_db, failure, owner.isEmpty() ? m_logon.user : owner, table, dml, violated);
}

void LocalConnection::interrupt() {
  // sqlite3_interrupt may be called from any thread; the call it stops raises ORA-01013.
  sqlite3_interrupt(m_db);
}

void LocalConnection::begin() {
  std::lock_guard lock(m_mutex);
  startCall();
  m_explicit = true;
}

void LocalConnection::commit() {
  std::lock_guard lock(m_mutex);
  startCall();
  commitPending();
  m_explicit = false;
}

void LocalConnection::rollback() {
  std::lock_guard lock(m_mutex);
  startCall();
  rollbackQuietly();
  m_explicit = false;
}

QString LocalConnection::serverVersion() { return QStringLiteral("19.0.0.0.0"); }

QString LocalConnection::clientVersion() {
  return QStringLiteral("%1.%2.%3 (embedded SQLite %4)")
      .arg(DBSWEEP_VERSION_MAJOR)
      .arg(DBSWEEP_VERSION_MINOR)
      .arg(DBSWEEP_VERSION_PATCH)
      .arg(QString::fromLatin1(sqlite3_libversion()));
}

std::unique_ptr<OraDynaset> LocalConnection::query(const QString& sql, int options) {
  std::lock_guard lock(m_mutex);
  startCall();
  auto tokens = tokenizeSql(sql);
  if (kindOf(tokens) != Kind::Query)
    throw OraError(tokens.front().kind == SqlToken::Kind::End ? 900 : 24333,
                   tokens.front().kind == SqlToken::Kind::End ? TokenCursor::textOf(900)
                                                              : QStringLiteral("zero iteration count"));
  tokens = resolveSynonyms(tokens);
  if (const auto locking = RowLocks::read(tokens)) {
    tokens.erase(tokens.begin() + qsizetype(locking->at), tokens.end() - 1);
    lockForUpdate(tokens, locking->waitMs);
  }
  for (const SqlToken& t : tokens)
    if (t.is(u"V$SESSION") || t.is(u"GV$SESSION")) {
      SessionWatch::removeDeadSessions(m_side);
      break;
    }
  return LocalDynaset::open(shared_from_this(), tokens, options);
}

// The write lock of every schema the query reads: held by the pending transaction until it ends;
// outside one, only tried, as the query's own transaction would end with it.
void LocalConnection::lockForUpdate(const std::vector<SqlToken>& t, int waitMs) {
  QStringList schemas{QStringLiteral("main")};
  for (size_t k = 0; k + 2 < t.size(); ++k)
    if (t[k].isName() && t[k + 1].is(u".") && t[k + 2].isName()) {
      const QString schema = schemaOf(t[k].name());
      if (!schema.isEmpty() && !schemas.contains(schema))
        schemas << schema;
    }
  sqlite3_busy_timeout(m_db, waitMs < 0 ? LocalEngine::BusyWaitMs : waitMs);
  const auto restore = qScopeGuard([this] { sqlite3_busy_timeout(m_db, LocalEngine::BusyWaitMs); });
  const bool began = beginPending();
  const bool holding = m_inTransaction;
  try {
    if (!holding)
      sqliteExec(m_db, QStringLiteral("BEGIN"));
    for (const QString& schema : schemas) {
      const QString name = schema == u"main" ? schema : SqlTranslator::quoteName(schema);
      const QVariant version = sqliteValue(m_db, QStringLiteral("PRAGMA %1.user_version").arg(name));
      sqliteExec(m_db, QStringLiteral("PRAGMA %1.user_version = %2").arg(name).arg(version.toLongLong()));
    }
    if (!holding)
      sqliteExec(m_db, QStringLiteral("ROLLBACK"));
  } catch (const SqliteFailure& f) {
    if (began)
      abandonPending();
    else if (!holding)
      sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    throw oracleError(f);
  }
}

qint64 LocalConnection::execute(const QString& sql) {
  std::lock_guard lock(m_mutex);
  startCall();
  const auto tokens = tokenizeSql(sql);
  if (tokens.size() >= 2 && tokens[tokens.size() - 2].is(u";") && kindOf(tokens) != Kind::Block &&
      !createsStoredUnit(tokens))
    throw OraError(911, QStringLiteral("invalid character"));
  return runStatement(tokens, sql);
}

qint64 LocalConnection::runStatement(const std::vector<SqlToken>& tokens, const QString& sql) {
  switch (kindOf(tokens)) {
  case Kind::Query: {
    auto rows = LocalDynaset::open(shared_from_this(), resolveSynonyms(tokens), OraDynaset::ReadOnly);
    rows->Close();
    return 0;
  }
  case Kind::Dml: {
    if (!MultiTableInsert::isOne(tokens))
      return runDml(translateDml(tokens, false));
    qint64 rows = 0;
    asOneCall([&] { rows = MultiTableInsert(*this, tokens).run(); });
    return rows;
  }
  case Kind::Merge: {
    qint64 rows = 0;
    asOneCall([&] { rows = MergeStatement(*this, tokens).run(); });
    return rows;
  }
  case Kind::Transaction: {
    TokenCursor c(tokens, 1);
    if (tokens.front().is(u"SAVEPOINT") || (c.peek().is(u"WORK") ? c.peek(1) : c.peek()).is(u"TO"))
      return savepoint(tokens);
    if (tokens.size() > 2 && !tokens[1].is(u"WORK") && !tokens[1].is(u"TRANSACTION"))
      throw OraError(933, TokenCursor::textOf(933));
    if (tokens.front().is(u"COMMIT"))
      commitPending();
    else
      rollbackQuietly();
    return 0;
  }
  case Kind::Block: return runBlock(tokens, sql);
  case Kind::Session: return alterSession(tokens);
  case Kind::Ddl: {
    // The queries of CREATE VIEW and CREATE TABLE AS; a synonym's own object is not looked up.
    const bool creating = tokens.front().is(u"CREATE") && !containsToken(tokens, 0, tokens.size(), u"SYNONYM");
    return DdlRunner(*this, creating ? resolveSynonyms(tokens) : tokens, sql).run();
  }
  case Kind::Unknown: break;
  }
  throw OraError(900, TokenCursor::textOf(900));
}

LocalConnection::Dml LocalConnection::translateDml(const std::vector<SqlToken>& source, bool binds) {
  // Oracle's "DELETE t" and "UPDATE t a" become SQLite's "DELETE FROM t" and "UPDATE t AS a".
  std::vector<SqlToken> t = resolveSynonyms(source);
  const auto word = [](const char16_t* w) { return SqlToken{SqlToken::Kind::Word, QString::fromUtf16(w), 0, 0, 0}; };
  const bool deleting = t[0].is(u"DELETE");
  size_t target = 1;
  if (deleting && !t[1].is(u"FROM"))
    t.insert(t.begin() + 1, word(u"FROM"));
  if (deleting || t[0].is(u"INSERT")) {
    if (!t[1].is(deleting ? u"FROM" : u"INTO"))
      TokenCursor::fail(t[0].is(u"INSERT") ? 925 : 903);
    target = 2;
  }
  QString owner, table;
  size_t targetEnd = 0;
  const auto readTarget = [&] {
    TokenCursor c(t, target);
    std::tie(owner, table) = c.qualifiedName();
    targetEnd = c.pos();
  };
  readTarget();
  const QString viewOwner = owner.isEmpty() ? m_logon.user : owner;
  if (sqliteValue(m_db, QStringLiteral("SELECT 1 FROM CAT.views WHERE owner = ?1 AND view_name = ?2"),
                  {viewOwner, table})
          .isValid()) {
    t = ViewDml::rewrite(*this, t, target, targetEnd, viewOwner, table);
    readTarget();
  }
  if (!deleting)
    IdentityColumns::checkDml(m_db, t, targetEnd, owner.isEmpty() ? m_logon.user : owner, table);
  if (!t[0].is(u"INSERT") && t[targetEnd].isName() && !t[targetEnd].is(u"SET") && !t[targetEnd].is(u"WHERE"))
    t.insert(t.begin() + qsizetype(targetEnd), word(u"AS"));
  m_targetOwner = owner.isEmpty() ? m_logon.user : owner;
  m_targetTable = table;
  m_targetPrivilege = deleting ? QStringLiteral("DELETE") : t[0].upper();
  const auto translated = qScopeGuard([this] { m_targetOwner.clear(); });
  return Dml{translator(binds).translate(t), owner, table,
             deleting             ? SqlErrors::Dml::Delete
             : t[0].is(u"INSERT") ? SqlErrors::Dml::Insert
                                  : SqlErrors::Dml::Update};
}

qint64 LocalConnection::runDml(const Dml& dml, const QVariantList& values) {
  bool began = false;
  try {
    began = beginPending();
    SqliteStmt stmt(m_db, dml.sqlite);
    stmt.bindPresent(values);
    while (stmt.step()) {
    }
    return sqlite3_changes64(m_db);
  } catch (const SqliteFailure& f) {
    // Running the statement again to name the key would take sequence numbers a second time.
    std::optional<SqlErrors::ForeignKey> violated;
    const QString owner = dml.owner.isEmpty() ? m_logon.user : dml.owner;
    if (f.code == SQLITE_CONSTRAINT_FOREIGNKEY && !dml.sqlite.contains(u"dbsweep_nextval"))
      violated = SqlErrors::violatedForeignKey(m_db, dml.sqlite, schemaOf(owner), owner, values);
    const OraError error = oracleError(f, dml.owner, dml.table, dml.kind, violated);
    if (began)
      abandonPending();
    throw error;
  }
}

// ALTER SESSION SET NLS_DATE_FORMAT changes how the session's dates become text and texts
// become dates; the other parameters, and SET statements, change nothing here.
qint64 LocalConnection::alterSession(const std::vector<SqlToken>& t) {
  if (!t.front().is(u"ALTER"))
    return 0;
  TokenCursor c(t, 2);
  c.expect(u"SET", 922);
  do {
    const QString name = c.name(922);
    c.expect(u"=", 922);
    const SqlToken value = c.next();
    if (name == u"NLS_DATE_FORMAT") {
      if (value.kind != SqlToken::Kind::String)
        TokenCursor::fail(922);
      // A model the format cannot read is refused before it is kept (ORA-01821).
      OracleDateTime::format(OracleDateTime::DateTime{QDate(2004, 6, 17), 0}, value.text);
      m_settings.dateFormat = value.text;
    }
  } while (!c.atEnd());
  return 0;
}

// A block, or a statement run as several, is one call: when an error leaves it, what it changed
// since it started (or since a COMMIT inside it) is undone, and what the session had pending
// before it stays. It runs in one transaction even outside begin(), which then ends with it.
void LocalConnection::asOneCall(const std::function<void()>& work) {
  const bool wasExplicit = m_explicit;
  m_explicit = true;
  const auto restore = qScopeGuard([&] { m_explicit = wasExplicit; });
  const qint64 transaction = m_transactionsEnded;
  const QString mark = QStringLiteral("dbsweep_call%1").arg(++m_callDepth);
  const auto depth = qScopeGuard([this] { --m_callDepth; });
  const bool marked = m_inTransaction;
  if (marked)
    sqliteExec(m_db, QStringLiteral("SAVEPOINT ") + mark);
  try {
    work();
  } catch (...) {
    if (marked && m_inTransaction && m_transactionsEnded == transaction)
      sqlite3_exec(m_db, qPrintable(QStringLiteral("ROLLBACK TO %1; RELEASE %1").arg(mark)), nullptr, nullptr, nullptr);
    else
      rollbackQuietly();
    throw;
  }
  if (marked && m_inTransaction && m_transactionsEnded == transaction)
    sqliteExec(m_db, QStringLiteral("RELEASE ") + mark);
  if (!wasExplicit)
    commitPending();
}

qint64 LocalConnection::runBlock(const std::vector<SqlToken>& t, const QString& sql) {
  PlsqlRunner runner(*this, t, sql);
  runner.compile();
  asOneCall([&] { runner.run(); });
  return 0;
}
