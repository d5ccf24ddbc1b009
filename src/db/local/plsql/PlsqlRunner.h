#pragma once

#include "db/local/LocalConnection.h"
#include "db/local/Sqlite.h"
#include "db/local/plsql/PlsqlTree.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <memory>
#include <unordered_map>

// Runs an anonymous block on a session. Expressions and conditions are the engine's SQL
// (SELECT expr FROM DUAL), and variables reach every statement as bound parameters, never as
// text spliced into it. Each expression and statement is translated once, however often a loop
// runs it. An error no handler takes leaves the block as the error Oracle reports, followed by
// "ORA-06512: at line N" for the statement it came from.
class PlsqlRunner final {
public:
  PlsqlRunner(LocalConnection& connection, const std::vector<SqlToken>& tokens, const QString& sql);
  ~PlsqlRunner();
  PlsqlRunner(const PlsqlRunner&) = delete;
  PlsqlRunner& operator=(const PlsqlRunner&) = delete;

  // Parses the block: a compile error is ORA-06550 before anything runs.
  void compile();
  void run();

private:
  enum class Flow { Next, Exit, Continue, Return };
  enum class Mode { Value, Condition, Sql };
  struct Variable {
    Plsql::Type type;
    bool constant = false;
    bool notNull = false;
    QVariant value;
  };
  // An explicit cursor: its rows are read when it opens, as Oracle reads them as of then.
  struct Cursor {
    Plsql::Range query;
    int attributes = 0; // the slot of NAME%ISOPEN; %FOUND, %NOTFOUND and %ROWCOUNT follow it
    bool open = false;
    std::vector<std::vector<QVariant>> rows;
    size_t next = 0;
  };
  struct Scope {
    // A record's fields as "RECORD.FIELD", a cursor's attributes as "CURSOR%ATTRIBUTE".
    QHash<QString, int> variables;
    QHash<QString, std::vector<int>> records; // their fields in order
    QHash<QString, Cursor> cursors;
    QSet<QString> exceptions;
  };
  // An expression or statement with its variables as ?N parameters: slots[N - 1] is the
  // variable of ?N.
  struct Compiled {
    std::vector<SqlToken> tokens;
    std::vector<int> slots;
    QString sqlite;
    std::unique_ptr<SqliteStmt> statement;
  };

  Flow runBlock(const Plsql::Block& block);
  void declare(const Plsql::Declaration& d);
  Flow runAll(const Plsql::Statements& list);
  Flow runOne(const Plsql::Statement& s);
  // Runs body for as long as more (which sets up each round) says.
  Flow runLoop(const Plsql::Statements& body, const std::function<bool()>& more);
  Flow forRange(const Plsql::Statement& s);
  Flow forQuery(const Plsql::Statement& s);
  void selectInto(const Plsql::Statement& s);
  void cursorStatement(const Plsql::Statement& s);
  Cursor* findCursor(const QString& name);
  Cursor& cursor(const QString& name, size_t at);
  // The slots INTO names: the fields of a lone record, or the variables named.
  std::vector<int> targets(const QStringList& names, size_t at) const;
  void declareRecord(const QString& name, const QStringList& fields, const QStringList& types);
  void runSql(const Plsql::Statement& s);
  void executeImmediate(const Plsql::Statement& s);
  void call(const Plsql::Statement& s);
  void raise(const Plsql::Statement& s);
  bool handles(const Plsql::Handler& h, const OraError& e) const;
  // SQL%ROWCOUNT, SQL%FOUND and SQL%NOTFOUND after a statement.
  void setRowCount(qint64 rows);

  // Values.
  QVariant evaluate(Plsql::Range r, Mode mode = Mode::Value);
  bool isTrue(Plsql::Range r);
  // skip: tokens left out, as the INTO clause of SELECT ... INTO.
  Compiled& compiled(Plsql::Range r, Mode mode, Plsql::Range skip = {});
  std::vector<SqlToken> substituted(Plsql::Range r, Mode mode, std::vector<int>& slots, Plsql::Range skip = {}) const;
  QVariantList values(const std::vector<int>& slots) const;
  // The rows of a query, with its slots' values or else those given.
  std::vector<std::vector<QVariant>> queryRows(Compiled& c, const QVariantList& given = {});
  // A query's column labels and declared types, from its prepared statement.
  void columnsOf(Compiled& c, QStringList& labels, QStringList& types);
  SqliteStmt& prepared(Compiled& c);
  void assign(int slot, const QVariant& value, const Plsql::Type* from = nullptr);
  QVariant converted(const QVariant& value, const Plsql::Type& to, const Plsql::Type* from);
  QVariant sqlValue(const QString& oracleSql, const QVariant& argument);
  QString text(const QVariant& value, const Plsql::Type* from);
  const Plsql::Type* typeOf(Plsql::Range r) const;
  Plsql::Type anchoredType(Plsql::Range r) const;
  static Plsql::Type typeNamed(const QString& sqlType);

  // Names.
  int lookup(const QString& name) const;
  int target(const QString& name, size_t at) const;
  int declareVariable(const QString& name, const Plsql::Type& type);
  // Whether the name at token at of the SQL statement r is a column of a table it names.
  bool isColumnOfStatement(const QString& name, Plsql::Range r, size_t at) const;
  [[noreturn]] void compileError(size_t at, const QString& error) const;

  LocalConnection& m_c;
  const std::vector<SqlToken>& m_t;
  const QString& m_sql;
  std::unique_ptr<Plsql::Block> m_block;
  std::vector<Variable> m_variables;
  std::vector<Scope> m_scopes;
  std::unordered_map<quint64, Compiled> m_compiled;
  std::unordered_map<size_t, LocalConnection::Dml> m_dml;
  QHash<QString, std::shared_ptr<SqliteStmt>> m_conversions;
  QString m_raised;      // the user-defined exception being raised
  QString m_handled;     // the one the running handler took, which RAISE alone raises again
  size_t m_failedAt = 0; // the statement an unhandled error came from
  bool m_failed = false;
};
