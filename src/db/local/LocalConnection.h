#pragma once

#include "db/DbConnection.h"
#include "db/OraError.h"
#include "db/local/SessionSettings.h"
#include "db/local/SessionWatch.h"
#include "db/local/SqlErrors.h"
#include "db/local/SqlTranslator.h"
#include "db/local/Sqlite.h"

#include <QHash>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>

// One logged-on session of an embedded instance. Its own schema is SQLite's "main", the
// catalogue is attached as CAT, and other owners' schemas are attached under their names when a
// statement names them.
class LocalConnection final : public DbConnection, public std::enable_shared_from_this<LocalConnection> {
public:
  struct Logon {
    QString folder;
    QString user;
    bool dba = false;
    bool flushing = true; // see LocalEngine::Flushing
  };

  // Takes over db (schema and catalogue attached) and side (the catalogue alone, for work that
  // commits on its own: sessions and sequences).
  LocalConnection(Logon logon, sqlite3* db, sqlite3* side);
  ~LocalConnection() override;
  LocalConnection(const LocalConnection&) = delete;
  LocalConnection& operator=(const LocalConnection&) = delete;

  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override;
  qint64 execute(const QString& sql) override;
  void begin() override;
  void commit() override;
  void rollback() override;
  QString serverVersion() override;
  QString clientVersion() override;
  void interrupt() override;
  // SQLite offers no limit on a call's time: only interrupt() stops a long one.
  bool setCallTimeout(int) override { return false; }
  void enableServerOutput(bool on) override;
  QStringList takeServerOutput() override;

  // For the statement runners and dynasets of this engine.
  sqlite3* db() const { return m_db; }
  sqlite3* side() const { return m_side; }
  const QString& user() const { return m_logon.user; }
  const QString& folder() const { return m_logon.folder; }
  bool isDba() const { return m_logon.dba; }
  bool flushing() const { return m_logon.flushing; }
  qint64 sid() const { return m_watch ? m_watch->sid() : 0; }
  void killSession(qint64 sid, qint64 serial) { m_watch->kill(sid, serial); }
  std::recursive_mutex& mutex() { return m_mutex; }
  // "main" for the session's own schema, the attached name for another user's, "" when there is
  // no such user.
  QString schemaOf(const QString& owner);
  // binds: the statement holds the engine's own ?N parameters, which its caller binds.
  SqlTranslator translator(bool binds = false);
  // The statement naming the objects its synonyms stand for, which every statement runner
  // works on.
  std::vector<SqlToken> resolveSynonyms(const std::vector<SqlToken>& tokens) const;
  // Raises ORA-00028 once the session is known to have been killed; cheap enough for every
  // field read.
  void checkAlive();
  // The same at the start of a call, which also sees a kill the watch has not noticed yet: a
  // kill that has returned to its killer fails the victim's very next call, after rolling back
  // the victim's pending work.
  void startCall();
  // Starts the SQLite transaction of an explicit one before the first change; true when this
  // call started it.
  bool beginPending();
  // Ends the transaction beginPending has just started, after that first change failed: nothing
  // is pending. Left open, it would keep any lock the change took, and its next read would pin a
  // snapshot from which no change can be made once another session commits, so every later
  // change would fail with ORA-00054 until a rollback.
  void abandonPending() { rollbackQuietly(); }
  // DDL commits whatever is pending, as Oracle does.
  void commitPending();
  // The Oracle error for a failed SQLite call; table is the statement's target, if it has one.
  OraError oracleError(const SqliteFailure& failure, const QString& owner = {}, const QString& table = {},
                       SqlErrors::Dml dml = SqlErrors::Dml::None,
                       const std::optional<SqlErrors::ForeignKey>& violated = std::nullopt) const;
  QHash<QString, qint64>& currentValues() { return m_currval; }
  // ORA-01031 unless the session holds the system privilege ("CREATE TABLE",
  // "CREATE PUBLIC SYNONYM" ...), directly, through a role or as a DBA.
  void requireSystemPrivilege(QStringView privilege) const;
  // Whether the session may use owner's table for privilege (SELECT, INSERT, UPDATE, DELETE):
  // its own tables and, for a DBA or a holder of privilege ANY TABLE, every table; others only
  // as granted to it or to PUBLIC.
  // ORA-00942 when it holds no privilege on the table, ORA-01031 when not this one.
  void checkAccess(const QString& owner, const QString& table, const QString& privilege);
  const SessionSettings& settings() const { return m_settings; }
  // A sequence's value in the row a statement is at, where the statement names its NEXTVAL more
  // than once: the first reference of a row takes a new number, the others in it repeat it.
  struct RowValue {
    qint64 statement = 0;
    qint64 calls = 0;
    qint64 value = 0;
  };
  QHash<QString, RowValue>& rowValues() { return m_rowValues; }

  // Runs one statement of any kind, as execute() does, for the statements of a block.
  qint64 runStatement(const std::vector<SqlToken>& tokens, const QString& sql);
  // INSERT, UPDATE or DELETE translated once and run as often as wanted, with the values of its
  // ?N parameters.
  struct Dml {
    QString sqlite;
    QString owner, table;
    SqlErrors::Dml kind = SqlErrors::Dml::None;
  };
  Dml translateDml(const std::vector<SqlToken>& tokens, bool binds);
  qint64 runDml(const Dml& dml, const QVariantList& values = {});
  // Runs work as one statement: an error undoes all of it, and nothing else.
  void asOneCall(const std::function<void()>& work);
  // DBMS_OUTPUT: text for the current line, and the line's end.
  void putOutput(const QString& text, bool endLine);
  void setOutputEnabled(bool on) { m_outputEnabled = on; }

private:
  qint64 runBlock(const std::vector<SqlToken>& tokens, const QString& sql);
  void rollbackQuietly();
  qint64 savepoint(const std::vector<SqlToken>& tokens);
  void registerFunctions();
  qint64 alterSession(const std::vector<SqlToken>& tokens);
  // SELECT ... FOR UPDATE: the locks of query t, waiting waitMs for them (-1: the usual wait).
  void lockForUpdate(const std::vector<SqlToken>& t, int waitMs);

  Logon m_logon;
  sqlite3* m_db;
  sqlite3* m_side;
  std::recursive_mutex m_mutex;
  std::unique_ptr<SessionWatch> m_watch;
  bool m_explicit = false; // after begin(): changes wait for commit() or rollback()
  bool m_inTransaction = false;
  QStringList m_attached;   // other schemas, least recently used first
  QStringList m_savepoints; // of the pending transaction, oldest first
  QHash<QString, qint64> m_currval;
  QHash<QString, RowValue> m_rowValues;
  SessionSettings m_settings;
  // The table a DML statement changes and the privilege that takes, while it is translated.
  QString m_targetOwner, m_targetTable, m_targetPrivilege;
  QHash<QString, bool> m_users;
  qint64 m_transactionsEnded = 0; // a savepoint lives only as long as the transaction it was set in
  int m_callDepth = 0; // calls of asOneCall running, for the names of their savepoints
  bool m_outputEnabled = false;
  QStringList m_outputLines;
  QString m_outputLine;
};
