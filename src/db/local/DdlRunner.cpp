#include "db/local/DdlRunner.h"
#include "db/local/OracleDate.h"

#include "db/local/Catalogue.h"
#include "db/local/ColumnTypes.h"
#include "db/local/LocalConnection.h"

#include <QDateTime>

namespace {

const QString Unimplemented = QStringLiteral("unimplemented feature");

QString q(const QString& name) { return SqlTranslator::quoteName(name); }

} // namespace

DdlRunner::DdlRunner(LocalConnection& connection, const std::vector<SqlToken>& tokens, const QString& sql)
    : m_c(connection), m_sql(sql), m_t(tokens) {}

qint64 DdlRunner::run() {
  // DDL commits what the session had pending before it even looks at its objects, as Oracle
  // does; killing a session is not DDL and leaves the killer's work pending.
  if (!(m_t.peek().is(u"ALTER") && m_t.peek(1).is(u"SYSTEM")))
    m_c.commitPending();
  if (m_t.accept(u"CREATE")) {
    const bool replace = m_t.accept(u"OR") ? (m_t.expect(u"REPLACE", 922), true) : false;
    if (m_t.accept(u"GLOBAL"))
      m_t.expect(u"TEMPORARY", 901);
    // Stored PL/SQL does not run here: its CREATE is refused whole rather than half-kept.
    if (!m_t.accept(u"EDITIONABLE"))
      m_t.accept(u"NONEDITIONABLE");
    for (const char16_t* unit : {u"PROCEDURE", u"FUNCTION", u"PACKAGE", u"TRIGGER", u"TYPE", u"LIBRARY"})
      if (m_t.peek().is(unit))
        throw OraError(3001, QStringLiteral("unimplemented feature"));
    const bool isPublic = m_t.accept(u"PUBLIC");
    if (m_t.accept(u"SYNONYM"))
      createSynonym(replace, isPublic);
    else if (isPublic)
      TokenCursor::fail(901);
    else if (m_t.accept(u"TABLE") && !replace)
      createTable();
    else if (m_t.peek().is(u"UNIQUE") && !replace)
      m_t.next(), m_t.expect(u"INDEX", 901), createIndex(true);
    else if (m_t.accept(u"INDEX") && !replace)
      createIndex(false);
    else if (m_t.accept(u"SEQUENCE") && !replace)
      createSequence();
    else if (m_t.accept(u"USER") && !replace)
      createUser();
    else {
      m_t.accept(u"NO");
      m_t.accept(u"FORCE");
      m_t.expect(u"VIEW", 901);
      createView(replace);
    }
  } else if (m_t.accept(u"ALTER")) {
    missingStoredUnit();
    if (m_t.accept(u"TABLE"))
      alterTable();
    else if (m_t.accept(u"USER"))
      alterUser();
    else if (m_t.accept(u"SYSTEM"))
      alterSystem();
    else
      TokenCursor::fail(940);
  } else if (m_t.accept(u"DROP")) {
    missingStoredUnit();
    drop();
  } else if (m_t.accept(u"RENAME")) {
    const QString from = m_t.name(903);
    if (m_t.accept(u"."))
      throw OraError(1765, QStringLiteral("specifying owner's name of the table is not allowed"));
    m_t.expect(u"TO", 946);
    const QString to = m_t.name(903);
    if (!m_t.atEnd())
      TokenCursor::fail(933);
    requireTable(m_c.user(), from);
    renameTable(m_c.user(), from, schemaFor(m_c.user(), 942), to);
  } else if (m_t.accept(u"TRUNCATE")) {
    truncate();
  } else if (m_t.accept(u"COMMENT")) {
    comment();
  } else if (m_t.accept(u"GRANT")) {
    grant(false);
  } else if (m_t.accept(u"REVOKE")) {
    grant(true);
  } else {
    TokenCursor::fail(900);
  }
  return 0;
}

// No stored PL/SQL can be created here, so ALTER or DROP of a unit names one that does not exist.
void DdlRunner::missingStoredUnit() {
  const bool trigger = m_t.peek().is(u"TRIGGER");
  if (!trigger && !m_t.peek().is(u"PROCEDURE") && !m_t.peek().is(u"FUNCTION") && !m_t.peek().is(u"PACKAGE") &&
      !m_t.peek().is(u"TYPE"))
    return;
  m_t.next();
  if (m_t.peek().is(u"BODY"))
    m_t.next();
  const auto [owner, name] = m_t.qualifiedName();
  if (trigger)
    throw OraError(4080, QStringLiteral("trigger '%1' does not exist").arg(name));
  throw OraError(4043, QStringLiteral("object %1 does not exist").arg(name));
}

QString DdlRunner::ownerOr(const QString& owner) const { return owner.isEmpty() ? m_c.user() : owner; }

void DdlRunner::requireDba() const {
  if (!m_c.isDba())
    throw OraError(1031, QStringLiteral("insufficient privileges"));
}

void DdlRunner::requireAccess(const QString& owner) const {
  if (owner != m_c.user())
    requireDba();
}

void DdlRunner::requireCreate(const QString& owner, const QString& kind) const {
  if (owner == m_c.user())
    m_c.requireSystemPrivilege(QString(QStringLiteral("CREATE ") + kind));
  else
    requireAccess(owner);
}

QString DdlRunner::schemaFor(const QString& owner, int missingUserError) {
  const QString schema = m_c.schemaOf(owner);
  if (schema.isEmpty()) {
    if (missingUserError == 942)
      throw OraError(942, QStringLiteral("table or view does not exist"));
    throw OraError(1918, QStringLiteral("user '%1' does not exist").arg(owner));
  }
  return schema;
}

std::optional<QString> DdlRunner::objectType(const QString& owner, const QString& name) const {
  const QVariant type = sqliteValue(
      m_c.db(), QStringLiteral("SELECT type FROM CAT.objects WHERE owner = ?1 AND name = ?2"), {owner, name});
  return type.isValid() ? std::optional(type.toString()) : std::nullopt;
}

void DdlRunner::requireTable(const QString& owner, const QString& table) const {
  if (objectType(owner, table) != QStringLiteral("TABLE"))
    throw OraError(942, QStringLiteral("table or view does not exist"));
}

void DdlRunner::inTransaction(const std::function<void()>& work) {
  m_c.commitPending();
  sqlite3* db = m_c.db();
  // Rebuilding a table drops it for a moment: the children's keys must not be checked then.
  sqliteExec(db, QStringLiteral("PRAGMA foreign_keys=OFF"));
  try {
    sqliteExec(db, QStringLiteral("BEGIN IMMEDIATE"));
  } catch (const SqliteFailure& f) {
    sqliteExec(db, QStringLiteral("PRAGMA foreign_keys=ON"));
    throw m_c.oracleError(f);
  }
  try {
    work();
    sqliteExec(db, QStringLiteral("COMMIT"));
  } catch (const SqliteFailure& f) {
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_exec(db, "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
    throw m_c.oracleError(f);
  } catch (...) {
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_exec(db, "PRAGMA foreign_keys=ON", nullptr, nullptr, nullptr);
    throw;
  }
  sqliteExec(db, QStringLiteral("PRAGMA foreign_keys=ON"));
}

QString DdlRunner::newConstraintName() {
  return QStringLiteral("SYS_C%1").arg(Catalogue::nextCounter(m_c.db(), QStringLiteral("SYS_C")), 7, 10, QChar(u'0'));
}

// ---- parsing ------------------------------------------------------------------------------

bool DdlRunner::atConstraintStart() const {
  const SqlToken& p = m_t.peek();
  return p.is(u"CONSTRAINT") || p.is(u"PRIMARY") || p.is(u"UNIQUE") || p.is(u"CHECK") || p.is(u"FOREIGN");
}

QStringList DdlRunner::parseColumnList() {
  QStringList columns;
  m_t.expect(u"(", 906);
  do {
    const QString name = m_t.name(904);
    if (columns.contains(name))
      throw OraError(957, QStringLiteral("duplicate column name"));
    columns << name;
  } while (m_t.accept(u","));
  m_t.expect(u")", 907);
  return columns;
}

void DdlRunner::parseReferences(Constraint& k) {
  std::tie(k.refOwner, k.refTable) = m_t.qualifiedName();
  if (m_t.peek().is(u"("))
    k.refColumns = parseColumnList();
  if (m_t.accept(u"ON")) {
    m_t.expect(u"DELETE", 905);
    if (m_t.accept(u"CASCADE"))
      k.deleteRule = QStringLiteral("CASCADE");
    else
      m_t.expect(u"SET", 905), m_t.expect(u"NULL", 905), k.deleteRule = QStringLiteral("SET NULL");
  }
}

// ENABLE / DISABLE, VALIDATE, DEFERRABLE, USING INDEX ... after a constraint.
void DdlRunner::parseConstraintState(Constraint& k) {
  for (;;) {
    if (m_t.accept(u"ENABLE"))
      k.enabled = true;
    else if (m_t.accept(u"DISABLE"))
      k.enabled = false;
    else if (m_t.accept(u"VALIDATE") || m_t.accept(u"NOVALIDATE") || m_t.accept(u"RELY") || m_t.accept(u"NORELY") ||
             m_t.accept(u"DEFERRABLE") || m_t.accept(u"IMMEDIATE") || m_t.accept(u"DEFERRED"))
      continue;
    else if (m_t.peek().is(u"NOT") && m_t.peek(1).is(u"DEFERRABLE"))
      m_t.next(), m_t.next();
    else if (m_t.accept(u"INITIALLY"))
      continue;
    else if (m_t.accept(u"USING")) {
      m_t.expect(u"INDEX", 905);
      while (!m_t.atEnd() && !m_t.peek().is(u",") && !m_t.peek().is(u")")) {
        if (m_t.peek().is(u"("))
          m_t.skipGroup();
        else
          m_t.next();
      }
    } else
      return;
  }
}

void DdlRunner::parseInlineConstraint(Constraint& k) {
  if (m_t.accept(u"NOT")) {
    m_t.expect(u"NULL", 905);
    k.type = u'C';
  } else if (m_t.accept(u"PRIMARY")) {
    m_t.expect(u"KEY", 905);
    k.type = u'P';
  } else if (m_t.accept(u"UNIQUE")) {
    k.type = u'U';
  } else if (m_t.accept(u"CHECK")) {
    k.type = u'C';
    const size_t from = m_t.pos();
    m_t.skipGroup();
    k.condition = m_t.source(m_sql, from + 1, m_t.pos() - 1).trimmed();
  } else if (m_t.accept(u"REFERENCES")) {
    k.type = u'R';
    parseReferences(k);
  } else {
    TokenCursor::fail(905);
  }
  parseConstraintState(k);
}

DdlRunner::Column DdlRunner::parseColumn(std::vector<Constraint>& constraints) {
  Column col;
  col.name = m_t.name(904);
  if (col.name.size() > 128)
    throw OraError(972, QStringLiteral("identifier is too long"));
  col.type = OracleType::parse(m_t);
  for (;;) {
    // An identity column is NOT NULL, as in Oracle.
    if (m_t.accept(u"GENERATED")) {
      col.identity = IdentityColumns::parse(m_t);
      Constraint k;
      k.type = u'C';
      k.columns = {col.name};
      k.condition = q(col.name) + QStringLiteral(" IS NOT NULL");
      constraints.push_back(k);
      continue;
    }
    // Virtual columns have no place in the tables here.
    if (m_t.peek().is(u"AS") && m_t.peek(1).is(u"("))
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    if (m_t.accept(u"DEFAULT")) {
      const size_t from = m_t.pos();
      int depth = 0;
      while (!m_t.atEnd()) {
        const SqlToken& p = m_t.peek();
        if (depth == 0 && (p.is(u",") || p.is(u")") || p.is(u"CONSTRAINT") || p.is(u"NOT") || p.is(u"NULL") ||
                           p.is(u"PRIMARY") || p.is(u"UNIQUE") || p.is(u"CHECK") || p.is(u"REFERENCES")))
          break;
        depth += p.is(u"(") ? 1 : p.is(u")") ? -1 : 0;
        m_t.next();
      }
      col.defaultText = m_t.source(m_sql, from, m_t.pos()).trimmed();
      continue;
    }
    if (m_t.peek().is(u"NULL")) {
      m_t.next();
      continue;
    }
    if (!(m_t.peek().is(u"CONSTRAINT") || m_t.peek().is(u"NOT") || m_t.peek().is(u"PRIMARY") ||
          m_t.peek().is(u"UNIQUE") || m_t.peek().is(u"CHECK") || m_t.peek().is(u"REFERENCES")))
      break;
    Constraint k;
    if (m_t.accept(u"CONSTRAINT"))
      k.name = m_t.name(904);
    parseInlineConstraint(k);
    k.columns = {col.name};
    if (k.type == u'C' && k.condition.isEmpty())
      k.condition = q(col.name) + QStringLiteral(" IS NOT NULL");
    constraints.push_back(k);
  }
  return col;
}

DdlRunner::Constraint DdlRunner::parseTableConstraint() {
  Constraint k;
  if (m_t.accept(u"CONSTRAINT"))
    k.name = m_t.name(904);
  if (m_t.accept(u"PRIMARY")) {
    m_t.expect(u"KEY", 905);
    k.type = u'P';
    k.columns = parseColumnList();
  } else if (m_t.accept(u"UNIQUE")) {
    k.type = u'U';
    k.columns = parseColumnList();
  } else if (m_t.accept(u"CHECK")) {
    k.type = u'C';
    const size_t from = m_t.pos();
    m_t.skipGroup();
    k.condition = m_t.source(m_sql, from + 1, m_t.pos() - 1).trimmed();
  } else if (m_t.accept(u"FOREIGN")) {
    m_t.expect(u"KEY", 905);
    k.type = u'R';
    k.columns = parseColumnList();
    m_t.expect(u"REFERENCES", 905);
    parseReferences(k);
  } else {
    TokenCursor::fail(902);
  }
  parseConstraintState(k);
  return k;
}

// Physical attributes (TABLESPACE, STORAGE (...), ORGANIZATION INDEX, LOGGING ...) change nothing
// here.
void DdlRunner::skipClauses() {
  while (!m_t.atEnd()) {
    if (m_t.peek().is(u"("))
      m_t.skipGroup();
    else if (m_t.peek().is(u"AS") || m_t.peek().is(u";"))
      TokenCursor::fail(m_t.peek().is(u"AS") ? 3001 : 911);
    else
      m_t.next();
  }
}

// ---- tables ---------------------------------------------------------------------------------

void DdlRunner::createTable() {
  auto [ownerText, table] = m_t.qualifiedName();
  const QString owner = ownerOr(ownerText);
  requireCreate(owner, QStringLiteral("TABLE"));
  const QString schema = schemaFor(owner);
  if (m_t.peek().is(u"AS") || (m_t.peek().is(u"(") && m_t.peek(1).isName() &&
                               (m_t.peek(2).is(u",") || (m_t.peek(2).is(u")") && m_t.peek(3).is(u"AS")))))
    return createTableAs(owner, table, schema);
  std::vector<Column> columns;
  std::vector<Constraint> constraints;
  m_t.expect(u"(", 906);
  do {
    if (atConstraintStart()) {
      constraints.push_back(parseTableConstraint());
    } else {
      Column col = parseColumn(constraints);
      for (const Column& c : columns)
        if (c.name == col.name)
          throw OraError(957, QStringLiteral("duplicate column name"));
      columns.push_back(col);
    }
  } while (m_t.accept(u","));
  m_t.expect(u")", 907);
  bool iot = false;
  if (m_t.peek().is(u"ORGANIZATION") && m_t.peek(1).is(u"INDEX"))
    iot = true;
  if (m_t.peek().is(u"ORGANIZATION") && m_t.peek(1).is(u"HEAP"))
    m_t.next();
  skipClauses();
  if (columns.empty())
    throw OraError(904, QStringLiteral("invalid identifier"));
  inTransaction([&] { addTable(owner, table, schema, columns, constraints, iot); });
}

void DdlRunner::addTable(const QString& owner, const QString& table, const QString& schema,
                         const std::vector<Column>& columns, const std::vector<Constraint>& constraints, bool iot) {
  if (objectType(owner, table))
    throw OraError(955, QStringLiteral("name is already used by an existing object"));
  const QString now = OracleDate::now();
  sqliteExec(m_c.db(),
             QStringLiteral("INSERT INTO CAT.objects(owner, name, type, created) VALUES (?1, ?2, 'TABLE', ?3)"),
             {owner, table, now});
  sqliteExec(m_c.db(), QStringLiteral("INSERT INTO CAT.tables(owner, table_name, iot) VALUES (?1, ?2, ?3)"),
             {owner, table, iot ? 1 : 0});
  int id = 0;
  for (const Column& c : columns)
    addColumn(owner, table, c, ++id);
  for (const Constraint& k : constraints)
    addConstraint(owner, table, k);
  refreshNullable(owner, table);
  sqliteExec(m_c.db(), tableDdl(owner, table, q(schema) + u'.' + q(table)));
  createTriggers(owner, table, schema);
}

void DdlRunner::addColumn(const QString& owner, const QString& table, const Column& c, int columnId) {
  const OracleType& t = c.type;
  const QString defaultText =
      c.identity ? IdentityColumns::createSequence(m_c.db(), owner, *c.identity) : c.defaultText;
  sqliteExec(
      m_c.db(),
      QStringLiteral("INSERT INTO CAT.columns(owner, table_name, column_name, column_id, data_type, data_length, "
                     "data_precision, data_scale, nullable, char_length, data_default, declared, identity) "
                     "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, 'Y', ?9, ?10, ?11, ?12)"),
      {owner, table, c.name, columnId, t.dataType, t.dataLength, t.precision, t.scale, t.charLength,
       defaultText.isEmpty() ? QVariant() : QVariant(defaultText), t.sqliteType,
       c.identity ? QVariant(c.identity->generation) : QVariant()});
}

QStringList DdlRunner::constraintColumns(const QString& owner, const QString& name) const {
  QStringList columns;
  SqliteStmt s(m_c.db(),
               QStringLiteral("SELECT column_name FROM CAT.cons_columns WHERE owner = ?1 AND constraint_name = ?2 "
                              "ORDER BY position"));
  s.bindAll({owner, name});
  while (s.step())
    columns << s.text(0);
  return columns;
}

void DdlRunner::addConstraint(const QString& owner, const QString& table, Constraint k) {
  sqlite3* db = m_c.db();
  if (k.name.isEmpty()) {
    k.name = newConstraintName();
    k.generatedName = true;
  } else if (sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND constraint_name = ?2"),
                         {owner, k.name})
                 .isValid()) {
    throw OraError(2264, QStringLiteral("name already used by an existing constraint"));
  }
  for (const QString& col : k.columns)
    if (!sqliteValue(
             db, QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3"),
             {owner, table, col})
             .isValid())
      throw OraError(904, QStringLiteral("%1: invalid identifier").arg(q(col)));
  if (k.type == u'P' && sqliteValue(db,
                                    QStringLiteral("SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2 "
                                                   "AND constraint_type = 'P'"),
                                    {owner, table})
                            .isValid())
    throw OraError(2260, QStringLiteral("table can have only one primary key"));

  QVariant rOwner, rName;
  if (k.type == u'R') {
    const QString parentOwner = ownerOr(k.refOwner);
    if (objectType(parentOwner, k.refTable) != QStringLiteral("TABLE"))
      throw OraError(942, QStringLiteral("table or view does not exist"));
    // With no columns named, the key refers to the parent's primary key.
    SqliteStmt keys(db,
                    QStringLiteral("SELECT constraint_name, constraint_type FROM CAT.constraints WHERE owner = ?1 "
                                   "AND table_name = ?2 AND constraint_type IN ('P', 'U') ORDER BY constraint_type"));
    keys.bindAll({parentOwner, k.refTable});
    while (keys.step()) {
      const QStringList cols = constraintColumns(parentOwner, keys.text(0));
      if (k.refColumns.isEmpty() ? keys.text(1) == u"P" : cols == k.refColumns) {
        rName = keys.text(0);
        k.refColumns = cols;
        break;
      }
    }
    if (!rName.isValid())
      throw OraError(2270, QStringLiteral("no matching unique or primary key for this column-list"));
    if (k.refColumns.size() != k.columns.size())
      throw OraError(2256, QStringLiteral("number of referencing columns must match referenced columns"));
    rOwner = parentOwner;
  }

  QVariant indexName;
  if (k.type == u'P' || k.type == u'U') {
    // The key uses an index on exactly its columns when there is one, else gets its own.
    SqliteStmt idx(db, QStringLiteral("SELECT index_name FROM CAT.indexes WHERE table_owner = ?1 AND table_name = ?2"));
    idx.bindAll({owner, table});
    while (idx.step()) {
      QStringList cols;
      SqliteStmt ic(db,
                    QStringLiteral("SELECT column_name FROM CAT.ind_columns WHERE index_owner = ?1 AND index_name = ?2 "
                                   "ORDER BY column_position"));
      ic.bindAll({owner, idx.text(0)});
      while (ic.step())
        cols << ic.text(0);
      if (cols == k.columns) {
        indexName = idx.text(0);
        break;
      }
    }
    if (!indexName.isValid()) {
      indexName = k.name;
      sqliteExec(
          db,
          QStringLiteral("INSERT INTO CAT.indexes(owner, index_name, table_owner, table_name, uniqueness, sqlite) "
                         "VALUES (?1, ?2, ?1, ?3, 'UNIQUE', 0)"),
          {owner, k.name, table});
      for (int i = 0; i < k.columns.size(); ++i)
        sqliteExec(
            db,
            QStringLiteral("INSERT INTO CAT.ind_columns(index_owner, index_name, table_owner, table_name, column_name, "
                           "column_position, column_length, descend) SELECT ?1, ?2, ?1, ?3, ?4, ?5, data_length, 'ASC' "
                           "FROM CAT.columns WHERE owner = ?1 AND table_name = ?3 AND column_name = ?4"),
            {owner, k.name, table, k.columns[i], i + 1});
    }
  }
  sqliteExec(db,
             QStringLiteral(
                 "INSERT INTO CAT.constraints(owner, constraint_name, constraint_type, table_name, search_condition, "
                 "r_owner, r_constraint_name, delete_rule, status, generated, index_name) "
                 "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)"),
             {owner, k.name, QString(k.type), table, k.type == u'C' ? QVariant(k.condition) : QVariant(), rOwner, rName,
              k.type == u'R' ? QVariant(k.deleteRule) : QVariant(),
              k.enabled ? QStringLiteral("ENABLED") : QStringLiteral("DISABLED"),
              k.generatedName ? QStringLiteral("GENERATED NAME") : QStringLiteral("USER NAME"), indexName});
  for (int i = 0; i < k.columns.size(); ++i)
    sqliteExec(db,
               QStringLiteral("INSERT INTO CAT.cons_columns(owner, constraint_name, table_name, column_name, position) "
                              "VALUES (?1, ?2, ?3, ?4, ?5)"),
               {owner, k.name, table, k.columns[i], k.type == u'C' ? QVariant() : QVariant(i + 1)});
}

// NULLABLE follows the enabled primary key and NOT NULL constraints.
void DdlRunner::refreshNullable(const QString& owner, const QString& table) {
  sqliteExec(
      m_c.db(),
      QStringLiteral(
          "UPDATE CAT.columns SET nullable = CASE WHEN column_name IN (SELECT k.column_name FROM CAT.cons_columns k "
          "JOIN CAT.constraints c ON c.owner = k.owner AND c.constraint_name = k.constraint_name "
          "WHERE c.owner = ?1 AND c.table_name = ?2 AND c.status = 'ENABLED' AND (c.constraint_type = 'P' OR "
          "c.search_condition = '\"' || k.column_name || '\" IS NOT NULL')) THEN 'N' ELSE 'Y' END "
          "WHERE owner = ?1 AND table_name = ?2"),
      {owner, table});
}

void DdlRunner::removeConstraint(const QString& owner, const QString& name) {
  sqlite3* db = m_c.db();
  sqliteExec(db,
             QStringLiteral("DELETE FROM CAT.ind_columns WHERE index_owner = ?1 AND index_name = ?2 AND index_name IN "
                            "(SELECT index_name FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2 AND sqlite = 0)"),
             {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2 AND sqlite = 0"),
             {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.cons_columns WHERE owner = ?1 AND constraint_name = ?2"),
             {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.constraints WHERE owner = ?1 AND constraint_name = ?2"),
             {owner, name});
}

QString DdlRunner::translateCondition(const QString& condition) const {
  return m_c.translator().translate(tokenizeSql(condition));
}

QString DdlRunner::tableDdl(const QString& owner, const QString& table, const QString& target) const {
  sqlite3* db = m_c.db();
  QStringList notNull;
  QStringList parts;
  QStringList clauses;
  SqliteStmt cons(
      db, QStringLiteral("SELECT constraint_name, constraint_type, search_condition, r_owner, r_constraint_name, "
                         "delete_rule FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2 "
                         "AND status = 'ENABLED' ORDER BY rowid"));
  cons.bindAll({owner, table});
  QHash<QString, QString> namedNotNull;
  while (cons.step()) {
    const QString name = cons.text(0);
    const QString type = cons.text(1);
    const QStringList cols = constraintColumns(owner, name);
    QStringList quoted;
    for (const QString& c : cols)
      quoted << q(c);
    if (type == u"P") {
      notNull << cols;
      clauses << QStringLiteral("CONSTRAINT %1 PRIMARY KEY (%2)").arg(q(name), quoted.join(QStringLiteral(", ")));
    } else if (type == u"U") {
      clauses << QStringLiteral("CONSTRAINT %1 UNIQUE (%2)").arg(q(name), quoted.join(QStringLiteral(", ")));
    } else if (type == u"C" && cols.size() == 1 && cons.text(2) == q(cols[0]) + QStringLiteral(" IS NOT NULL")) {
      namedNotNull.insert(cols[0], name);
    } else if (type == u"C") {
      clauses << QStringLiteral("CONSTRAINT %1 CHECK (%2)").arg(q(name), translateCondition(cons.text(2)));
    } else if (type == u"R" && cons.text(3) == owner) {
      // Keys across schemas live in different files, out of SQLite's reach; the dictionary
      // still reports them.
      const QString parent =
          sqliteValue(
              db, QStringLiteral("SELECT table_name FROM CAT.constraints WHERE owner = ?1 AND constraint_name = ?2"),
              {owner, cons.text(4)})
              .toString();
      QStringList refQuoted;
      for (const QString& c : constraintColumns(owner, cons.text(4)))
        refQuoted << q(c);
      QString clause =
          QStringLiteral("CONSTRAINT %1 FOREIGN KEY (%2) REFERENCES %3 (%4)")
              .arg(q(name), quoted.join(QStringLiteral(", ")), q(parent), refQuoted.join(QStringLiteral(", ")));
      if (cons.text(5) != u"NO ACTION")
        clause += QStringLiteral(" ON DELETE ") + cons.text(5);
      clauses << clause;
    }
  }
  SqliteStmt cols(db, QStringLiteral("SELECT column_name, declared, data_default FROM CAT.columns WHERE owner = ?1 "
                                     "AND table_name = ?2 ORDER BY column_id"));
  cols.bindAll({owner, table});
  const std::vector<ColumnTypes::Column> types = columnTypes(owner, table);
  for (size_t k = 0; cols.step(); ++k) {
    const QString name = cols.text(0);
    QString def = q(name) + u' ' + cols.text(1);
    if (cols.text(1) == u"DATE")
      def += QStringLiteral(" COLLATE ORADATE");
    if (k < types.size())
      def += ColumnTypes::clauses(types[k]);
    if (namedNotNull.contains(name))
      def += QStringLiteral(" CONSTRAINT %1 NOT NULL").arg(q(namedNotNull.value(name)));
    else if (notNull.contains(name))
      def += QStringLiteral(" NOT NULL");
    if (!cols.text(2).isEmpty())
      def += QStringLiteral(" DEFAULT (%1)").arg(translateCondition(cols.text(2)));
    parts << def;
  }
  return QStringLiteral("CREATE TABLE %1 (%2)").arg(target, (parts + clauses).join(QStringLiteral(", ")));
}

std::vector<ColumnTypes::Column> DdlRunner::columnTypes(const QString& owner, const QString& table) const {
  std::vector<ColumnTypes::Column> columns;
  SqliteStmt s(m_c.db(), QStringLiteral("SELECT column_name, data_type, data_length, char_length, data_precision, "
                                        "data_scale FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                        "ORDER BY column_id"));
  s.bindAll({owner, table});
  while (s.step())
    columns.push_back({owner, table, s.text(0), s.text(1), s.column(2).toLongLong(), s.column(3).toLongLong(),
                       s.column(4), s.column(5)});
  return columns;
}

void DdlRunner::createTriggers(const QString& owner, const QString& table, const QString& schema) {
  for (const QString& sql : ColumnTypes::triggers(schema, table, columnTypes(owner, table)))
    sqliteExec(m_c.db(), sql);
}

void DdlRunner::createSqliteIndexes(const QString& owner, const QString& table, const QString& schema) {
  // Collected first: schema changes wait for every open statement of the connection.
  QStringList statements;
  SqliteStmt idx(m_c.db(),
                 QStringLiteral("SELECT owner, index_name, uniqueness FROM CAT.indexes WHERE table_owner = ?1 "
                                "AND table_name = ?2 AND sqlite = 1"));
  idx.bindAll({owner, table});
  while (idx.step()) {
    QStringList cols;
    SqliteStmt ic(m_c.db(),
                  QStringLiteral("SELECT k.column_name, k.descend, e.column_expression FROM CAT.ind_columns "
                                 "k LEFT JOIN CAT.ind_expressions e ON e.index_owner = k.index_owner AND "
                                 "e.index_name = k.index_name AND e.column_position = k.column_position "
                                 "WHERE k.index_owner = ?1 AND k.index_name = ?2 ORDER BY k.column_position"));
    ic.bindAll({idx.text(0), idx.text(1)});
    while (ic.step())
      cols << (ic.column(2).isNull() ? q(ic.text(0)) : translateCondition(ic.text(2))) + u' ' + ic.text(1);
    statements << QStringLiteral("CREATE %1INDEX %2.%3 ON %4 (%5)")
                      .arg(idx.text(2) == u"UNIQUE" ? QStringLiteral("UNIQUE ") : QString(), q(schema),
                           q(QStringLiteral("IX$") + idx.text(1)), q(table), cols.join(QStringLiteral(", ")));
  }
  for (const QString& sql : statements)
    sqliteExec(m_c.db(), sql);
}

// Re-creates the SQLite table from the dictionary and copies the rows over; the copy is what
// validates a constraint being added or enabled. A column the dictionary has and the old table
// has not (one just added) takes its default; renamed maps new column names to old ones.
void DdlRunner::rebuild(const QString& owner, const QString& table, const QString& schema, const Constraint* validating,
                        const QHash<QString, QString>& renamed) {
  sqlite3* db = m_c.db();
  refreshNullable(owner, table);
  const QString temp = QStringLiteral("%1$REBUILD").arg(table);
  sqliteExec(db, tableDdl(owner, table, q(schema) + u'.' + q(temp)));
  QStringList old;
  SqliteStmt info(db, QStringLiteral("PRAGMA %1.table_info(%2)").arg(q(schema), q(table)));
  while (info.step())
    old << info.text(1);
  QStringList into, from;
  SqliteStmt cols(db, QStringLiteral("SELECT column_name FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                     "ORDER BY column_id"));
  cols.bindAll({owner, table});
  while (cols.step()) {
    const QString source = renamed.value(cols.text(0), cols.text(0));
    if (old.contains(source))
      into << q(cols.text(0)), from << q(source);
  }
  try {
    sqliteExec(
        db, QStringLiteral("INSERT INTO %1.%2 (%4) SELECT %5 FROM %1.%3")
                .arg(q(schema), q(temp), q(table), into.join(QStringLiteral(", ")), from.join(QStringLiteral(", "))));
  } catch (const SqliteFailure& f) {
    if (!validating)
      throw;
    const QString name = owner + u'.' + validating->name;
    const int code = f.code;
    if (code == SQLITE_CONSTRAINT_NOTNULL)
      throw OraError(2296, QStringLiteral("cannot enable (%1) - null values found").arg(name));
    if (validating->type == u'P')
      throw OraError(2437, QStringLiteral("cannot validate (%1) - primary key violated").arg(name));
    if (validating->type == u'U')
      throw OraError(2299, QStringLiteral("cannot validate (%1) - duplicate keys found").arg(name));
    throw OraError(2293, QStringLiteral("cannot validate (%1) - check constraint violated").arg(name));
  }
  sqliteExec(db, QStringLiteral("DROP TABLE %1.%2").arg(q(schema), q(table)));
  sqliteExec(db, QStringLiteral("ALTER TABLE %1.%2 RENAME TO %3").arg(q(schema), q(temp), q(table)));
  createSqliteIndexes(owner, table, schema);
  createTriggers(owner, table, schema);
  if (validating && validating->type == u'R') {
    SqliteStmt check(db, QStringLiteral("PRAGMA %1.foreign_key_check(%2)").arg(q(schema), q(table)));
    if (check.step())
      throw OraError(2298,
                     QStringLiteral("cannot validate (%1.%2) - parent keys not found").arg(owner, validating->name));
  }
}

void DdlRunner::alterTable() {
  auto [ownerText, table] = m_t.qualifiedName();
  const QString owner = ownerOr(ownerText);
  requireAccess(owner);
  const QString schema = schemaFor(owner, 942);
  requireTable(owner, table);
  sqlite3* db = m_c.db();

  if (m_t.accept(u"ADD")) {
    std::vector<Column> columns;
    std::vector<Constraint> constraints;
    const bool grouped = m_t.accept(u"(");
    do {
      if (atConstraintStart())
        constraints.push_back(parseTableConstraint());
      else
        columns.push_back(parseColumn(constraints));
    } while (grouped && m_t.accept(u","));
    if (grouped)
      m_t.expect(u")", 907);
    skipClauses();
    inTransaction([&] {
      int id =
          sqliteValue(db, QStringLiteral("SELECT max(column_id) FROM CAT.columns WHERE owner = ?1 AND table_name = ?2"),
                      {owner, table})
              .toInt();
      const bool empty =
          !sqliteValue(db, QStringLiteral("SELECT 1 FROM %1.%2 LIMIT 1").arg(q(schema), q(table))).isValid();
      for (const Column& c : columns) {
        // Rows already there would have no value for it.
        for (const Constraint& k : constraints)
          if (!empty && c.defaultText.isEmpty() && k.columns == QStringList{c.name} &&
              (k.type == u'P' || k.condition == q(c.name) + QStringLiteral(" IS NOT NULL")))
            throw OraError(1758, QStringLiteral("table must be empty to add mandatory (NOT NULL) column"));
        if (sqliteValue(
                db,
                QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3"),
                {owner, table, c.name})
                .isValid())
          throw OraError(1430, QStringLiteral("column being added already exists in table"));
        addColumn(owner, table, c, ++id);
      }
      for (Constraint& k : constraints) {
        if (k.name.isEmpty())
          k.name = newConstraintName(), k.generatedName = true;
        addConstraint(owner, table, k);
      }
      rebuild(owner, table, schema, constraints.size() == 1 ? &constraints.front() : nullptr);
      // With several constraints at once each one is still validated by the copy; name the
      // first of its kind when the copy fails.
    });
    return;
  }

  const bool enable = m_t.peek().is(u"ENABLE");
  if (m_t.accept(u"ENABLE") || m_t.accept(u"DISABLE")) {
    m_t.accept(u"VALIDATE") || m_t.accept(u"NOVALIDATE");
    m_t.expect(u"CONSTRAINT", 905);
    const QString name = m_t.name(904);
    const bool cascade = m_t.accept(u"CASCADE");
    m_t.accept(u"KEEP") || m_t.accept(u"DROP");
    m_t.accept(u"INDEX");
    if (!m_t.atEnd())
      TokenCursor::fail(933);
    inTransaction([&] {
      const QString type = sqliteValue(db,
                                       QStringLiteral("SELECT constraint_type FROM CAT.constraints WHERE owner = ?1 "
                                                      "AND constraint_name = ?2 AND table_name = ?3"),
                                       {owner, name, table})
                               .toString();
      if (type.isEmpty())
        throw OraError(2431, QStringLiteral("cannot %1 constraint (%2) - no such constraint")
                                 .arg(enable ? QStringLiteral("enable") : QStringLiteral("disable"), name));
      Constraint k;
      k.name = name;
      k.type = type.at(0);
      k.columns = constraintColumns(owner, name);
      if (!enable && (k.type == u'P' || k.type == u'U')) {
        // Keys that other tables' enabled foreign keys point at cannot go quietly.
        SqliteStmt children(
            db, QStringLiteral("SELECT owner, constraint_name, table_name FROM CAT.constraints WHERE r_owner = ?1 "
                               "AND r_constraint_name = ?2 AND status = 'ENABLED'"));
        children.bindAll({owner, name});
        QList<QStringList> dependants;
        while (children.step())
          dependants << QStringList{children.text(0), children.text(1), children.text(2)};
        if (!dependants.isEmpty() && !cascade)
          throw OraError(2297,
                         QStringLiteral("cannot disable constraint (%1.%2) - dependencies exist").arg(owner, name));
        for (const QStringList& d : dependants) {
          sqliteExec(db,
                     QStringLiteral(
                         "UPDATE CAT.constraints SET status = 'DISABLED' WHERE owner = ?1 AND constraint_name = ?2"),
                     {d[0], d[1]});
          if (d[0] == owner && d[2] != table)
            rebuild(owner, d[2], schema, nullptr);
        }
      }
      sqliteExec(db, QStringLiteral("UPDATE CAT.constraints SET status = ?3 WHERE owner = ?1 AND constraint_name = ?2"),
                 {owner, name, enable ? QStringLiteral("ENABLED") : QStringLiteral("DISABLED")});
      rebuild(owner, table, schema, enable ? &k : nullptr);
    });
    return;
  }

  if (m_t.accept(u"MODIFY"))
    return modifyColumns(owner, table, schema);
  if (m_t.accept(u"RENAME")) {
    if (m_t.accept(u"TO"))
      return renameTable(owner, table, schema, m_t.name(903));
    m_t.expect(u"COLUMN", 905);
    return renameColumn(owner, table, schema);
  }
  if (m_t.peek().is(u"DROP") && (m_t.peek(1).is(u"COLUMN") || m_t.peek(1).is(u"("))) {
    m_t.next();
    return dropColumns(owner, table, schema);
  }
  if (m_t.accept(u"DROP")) {
    QString name;
    if (m_t.accept(u"PRIMARY")) {
      m_t.expect(u"KEY", 905);
      name =
          sqliteValue(db,
                      QStringLiteral("SELECT constraint_name FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2 "
                                     "AND constraint_type = 'P'"),
                      {owner, table})
              .toString();
      if (name.isEmpty())
        throw OraError(2441, QStringLiteral("Cannot drop nonexistent primary key"));
    } else {
      m_t.expect(u"CONSTRAINT", 905);
      name = m_t.name(904);
    }
    const bool cascade = m_t.accept(u"CASCADE");
    inTransaction([&] {
      if (!sqliteValue(
               db,
               QStringLiteral(
                   "SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND constraint_name = ?2 AND table_name = ?3"),
               {owner, name, table})
               .isValid())
        throw OraError(2443, QStringLiteral("Cannot drop constraint  - nonexistent constraint"));
      SqliteStmt children(
          db, QStringLiteral("SELECT owner, constraint_name, table_name FROM CAT.constraints WHERE r_owner = ?1 "
                             "AND r_constraint_name = ?2"));
      children.bindAll({owner, name});
      QList<QStringList> dependants;
      while (children.step())
        dependants << QStringList{children.text(0), children.text(1), children.text(2)};
      if (!dependants.isEmpty() && !cascade)
        throw OraError(2273, QStringLiteral("this unique/primary key is referenced by some foreign keys"));
      for (const QStringList& d : dependants) {
        removeConstraint(d[0], d[1]);
        if (d[0] == owner && d[2] != table)
          rebuild(owner, d[2], schema, nullptr);
      }
      removeConstraint(owner, name);
      rebuild(owner, table, schema, nullptr);
    });
    return;
  }
  throw OraError(1735, QStringLiteral("invalid ALTER TABLE option"));
}
