#pragma once

#include "db/local/ColumnTypes.h"
#include "db/local/IdentityColumns.h"
#include "db/local/OracleType.h"
#include "db/local/TokenCursor.h"

#include <QHash>

#include <functional>
#include <optional>

class LocalConnection;

// Runs one DDL statement (and the session-level statements that share its shape: GRANT,
// ALTER SYSTEM KILL SESSION, users). The dictionary tables are the truth: a table's SQLite
// definition is generated from them, so adding, enabling or disabling a constraint rebuilds
// the table from its dictionary rows. Each statement commits what the session had pending and
// then changes dictionary and schema in one transaction.
class DdlRunner final {
public:
  DdlRunner(LocalConnection& connection, const std::vector<SqlToken>& tokens, const QString& sql);
  qint64 run();

private:
  struct Constraint {
    QString name; // "" until named
    bool generatedName = false;
    QChar type; // P U R C
    QStringList columns;
    QString condition; // C: source text
    QString refOwner, refTable;
    QStringList refColumns;
    QString deleteRule = QStringLiteral("NO ACTION");
    bool enabled = true;
  };
  struct Column {
    QString name;
    OracleType type;
    QString defaultText;
    std::optional<IdentityColumns::Identity> identity;
  };

  // Statements.
  void createTable();
  void createTableAs(const QString& owner, const QString& table, const QString& schema);
  void createIndex(bool unique);
  void createView(bool replace);
  void createSequence();
  void createUser();
  void createSynonym(bool replace, bool isPublic);
  void dropSynonym(bool isPublic);
  void alterTable();
  void alterUser();
  void alterSystem();
  void drop();
  void dropTable(const QString& owner, const QString& name);
  void dropUser();
  void truncate();
  void comment();
  void grant(bool revoke);
  // ALTER TABLE's changes to columns, and renaming a table.
  void modifyColumns(const QString& owner, const QString& table, const QString& schema);
  void dropColumns(const QString& owner, const QString& table, const QString& schema);
  void renameColumn(const QString& owner, const QString& table, const QString& schema);
  void renameTable(const QString& owner, const QString& table, const QString& schema, const QString& to);
  void missingStoredUnit();
  void grantObject(bool revoke, QStringList privileges, const QString& owner, const QString& object,
                   const QStringList& grantees, bool grantOption);
  void grantSystem(bool revoke, const QStringList& privileges, const QStringList& grantees, bool adminOption);

  // Parsing.
  Column parseColumn(std::vector<Constraint>& constraints);
  Constraint parseTableConstraint();
  void parseInlineConstraint(Constraint& k);
  void parseReferences(Constraint& k);
  void parseConstraintState(Constraint& k);
  QStringList parseColumnList();
  bool atConstraintStart() const;
  void skipClauses();

  // Dictionary and schema.
  QString ownerOr(const QString& owner) const;
  QString schemaFor(const QString& owner, int missingUserError = 1918);
  void requireAccess(const QString& owner) const;
  // CREATE TABLE, VIEW or SEQUENCE (kind) in owner's schema: the system privilege in one's own,
  // a DBA's in another's.
  void requireCreate(const QString& owner, const QString& kind) const;
  void requireDba() const;
  void requireUser(const QString& name) const;
  std::optional<QString> objectType(const QString& owner, const QString& name) const;
  void requireTable(const QString& owner, const QString& table) const;
  void inTransaction(const std::function<void()>& work);
  // The dictionary rows and the SQLite table of a new table.
  void addTable(const QString& owner, const QString& table, const QString& schema, const std::vector<Column>& columns,
                const std::vector<Constraint>& constraints, bool iot);
  void addColumn(const QString& owner, const QString& table, const Column& column, int columnId);
  void addConstraint(const QString& owner, const QString& table, Constraint k);
  void removeConstraint(const QString& owner, const QString& name);
  void refreshNullable(const QString& owner, const QString& table);
  void rebuild(const QString& owner, const QString& table, const QString& schema, const Constraint* validating,
               const QHash<QString, QString>& renamed = {});
  QString tableDdl(const QString& owner, const QString& table, const QString& target) const;
  std::vector<ColumnTypes::Column> columnTypes(const QString& owner, const QString& table) const;
  void createTriggers(const QString& owner, const QString& table, const QString& schema);
  void createSqliteIndexes(const QString& owner, const QString& table, const QString& schema);
  QString translateCondition(const QString& condition) const;
  QStringList constraintColumns(const QString& owner, const QString& name) const;
  QString newConstraintName();

  LocalConnection& m_c;
  const QString& m_sql;
  TokenCursor m_t;
};
