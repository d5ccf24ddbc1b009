#include "db/local/Catalogue.h"

#include "db/local/Sqlite.h"

#include <QCryptographicHash>
#include <QRandomGenerator>
#include <QRegularExpression>

namespace Catalogue {

namespace {

// Synonyms, public ones under the owner PUBLIC, and the expressions of function-based indexes.
const QString SynonymTables = QStringLiteral(R"(
CREATE TABLE CAT.synonyms(owner TEXT, synonym_name TEXT, table_owner TEXT, table_name TEXT,
  PRIMARY KEY(owner, synonym_name));
CREATE TABLE CAT.ind_expressions(index_owner TEXT, index_name TEXT, table_owner TEXT, table_name TEXT,
  column_expression TEXT, column_position INTEGER, PRIMARY KEY(index_owner, index_name, column_position));
)");

} // namespace

QString schemaFile(const QString& folder, const QString& owner) {
  return folder + u'/' + owner + QStringLiteral(".schema");
}

namespace {

// The object privileges granted, each by its grantor.
QString tabPrivs(const QString& name) {
  return QStringLiteral("CREATE TABLE %1(grantee TEXT, owner TEXT, table_name TEXT, privilege TEXT, grantor TEXT NOT "
                        "NULL, grantable TEXT NOT NULL DEFAULT 'NO', PRIMARY KEY(grantee, owner, table_name, "
                        "privilege, grantor));")
      .arg(name);
}

// The system privileges and roles granted.
const char* const SystemPrivileges = R"(
CREATE TABLE CAT.sys_privs(grantee TEXT, privilege TEXT, admin_option TEXT NOT NULL, PRIMARY KEY(grantee, privilege));
CREATE TABLE CAT.role_privs(grantee TEXT, granted_role TEXT, admin_option TEXT NOT NULL,
  PRIMARY KEY(grantee, granted_role));
)";

} // namespace

void upgrade(sqlite3* db) {
  const auto sequencesCurrent = [db] {
    return sqliteValue(db, QStringLiteral("SELECT 1 FROM pragma_table_info('sequences', 'CAT') WHERE name = "
                                          "'cache_size'"))
               .isValid() &&
           sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.sqlite_master WHERE name = 'tab_privs'")).isValid();
  };
  const auto identityCurrent = [db] {
    return sqliteValue(db, QStringLiteral("SELECT 1 FROM pragma_table_info('columns', 'CAT') WHERE name = "
                                          "'identity'"))
        .isValid();
  };
  const auto synonymsCurrent = [db] {
    return sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.sqlite_master WHERE name = 'synonyms'")).isValid();
  };
  const auto privilegesCurrent = [db] {
    return sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.sqlite_master WHERE name = 'sys_privs'")).isValid();
  };
  if (sequencesCurrent() && identityCurrent() && synonymsCurrent() && privilegesCurrent())
    return;
  sqliteExec(db, QStringLiteral("BEGIN IMMEDIATE"));
  try {
    // Looked at again inside the transaction: another session may have just done it.
    if (!sequencesCurrent())
      sqliteExec(db, tabPrivs(QStringLiteral("IF NOT EXISTS CAT.tab_privs")) + QStringLiteral(R"(
ALTER TABLE CAT.sequences ADD COLUMN start_with INTEGER;
ALTER TABLE CAT.sequences ADD COLUMN cache_size INTEGER NOT NULL DEFAULT 0;
ALTER TABLE CAT.sequences ADD COLUMN order_flag TEXT NOT NULL DEFAULT 'N';
)"));
    if (!identityCurrent())
      sqliteExec(db, QStringLiteral("ALTER TABLE CAT.columns ADD COLUMN identity TEXT"));
    if (!synonymsCurrent())
      sqliteExec(db, SynonymTables);
    // Object privileges gain their grantor; the users, who could do everything CONNECT and
    // RESOURCE allow before system privileges were kept, are given those roles.
    if (!privilegesCurrent())
      sqliteExec(db,
                 tabPrivs(QStringLiteral("CAT.tab_privs_kept")) + QLatin1String(SystemPrivileges) + QStringLiteral(R"(
INSERT INTO CAT.tab_privs_kept(grantee, owner, table_name, privilege, grantor)
  SELECT grantee, owner, table_name, privilege, owner FROM CAT.tab_privs;
DROP TABLE CAT.tab_privs;
ALTER TABLE CAT.tab_privs_kept RENAME TO tab_privs;
INSERT INTO CAT.role_privs SELECT username, role.column1, 'NO' FROM CAT.users, (VALUES ('CONNECT'), ('RESOURCE')) role
  WHERE is_dba = 0;
)"));
    sqliteExec(db, QStringLiteral("COMMIT"));
  } catch (...) {
    sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
}

void create(sqlite3* db) {
  sqliteExec(db, tabPrivs(QStringLiteral("CAT.tab_privs")) + QLatin1String(SystemPrivileges) + QStringLiteral(R"(
CREATE TABLE CAT.users(username TEXT PRIMARY KEY, password TEXT NOT NULL, is_dba INTEGER NOT NULL DEFAULT 0,
  user_id INTEGER NOT NULL, created TEXT NOT NULL);
CREATE TABLE CAT.sessions(sid INTEGER PRIMARY KEY, serial INTEGER NOT NULL, username TEXT, osuser TEXT, machine TEXT,
  program TEXT, pid INTEGER, logon_time TEXT, killed INTEGER NOT NULL DEFAULT 0);
CREATE TABLE CAT.counters(name TEXT PRIMARY KEY, value INTEGER NOT NULL);
CREATE TABLE CAT.objects(owner TEXT, name TEXT, type TEXT NOT NULL, created TEXT, PRIMARY KEY(owner, name));
CREATE TABLE CAT.tables(owner TEXT, table_name TEXT, iot INTEGER NOT NULL DEFAULT 0, num_rows INTEGER,
  PRIMARY KEY(owner, table_name));
CREATE INDEX CAT.tables_name ON tables(table_name);
CREATE TABLE CAT.views(owner TEXT, view_name TEXT, text TEXT, PRIMARY KEY(owner, view_name));
CREATE TABLE CAT.columns(owner TEXT, table_name TEXT, column_name TEXT, column_id INTEGER, data_type TEXT,
  data_length INTEGER, data_precision INTEGER, data_scale INTEGER, nullable TEXT, char_length INTEGER,
  data_default TEXT, declared TEXT, identity TEXT, PRIMARY KEY(owner, table_name, column_name));
CREATE INDEX CAT.columns_table ON columns(table_name, column_id);
CREATE INDEX CAT.columns_column ON columns(column_name, table_name);
CREATE TABLE CAT.comments(owner TEXT, table_name TEXT, column_name TEXT, comments TEXT,
  PRIMARY KEY(owner, table_name, column_name));
CREATE TABLE CAT.constraints(owner TEXT, constraint_name TEXT, constraint_type TEXT, table_name TEXT,
  search_condition TEXT, r_owner TEXT, r_constraint_name TEXT, delete_rule TEXT, status TEXT,
  generated TEXT, index_name TEXT, PRIMARY KEY(owner, constraint_name));
CREATE INDEX CAT.constraints_table ON constraints(owner, table_name);
CREATE TABLE CAT.cons_columns(owner TEXT, constraint_name TEXT, table_name TEXT, column_name TEXT, position INTEGER,
  PRIMARY KEY(owner, constraint_name, column_name));
CREATE TABLE CAT.indexes(owner TEXT, index_name TEXT, table_owner TEXT, table_name TEXT, uniqueness TEXT,
  sqlite INTEGER NOT NULL DEFAULT 1, PRIMARY KEY(owner, index_name));
CREATE INDEX CAT.indexes_table ON indexes(table_owner, table_name);
CREATE TABLE CAT.ind_columns(index_owner TEXT, index_name TEXT, table_owner TEXT, table_name TEXT, column_name TEXT,
  column_position INTEGER, column_length INTEGER, descend TEXT, PRIMARY KEY(index_owner, index_name, column_position));
CREATE INDEX CAT.ind_columns_table ON ind_columns(table_name);
CREATE TABLE CAT.sequences(owner TEXT, sequence_name TEXT, min_value INTEGER, max_value INTEGER,
  increment_by INTEGER, cycle_flag TEXT, last_number INTEGER, start_with INTEGER,
  cache_size INTEGER NOT NULL DEFAULT 0, order_flag TEXT NOT NULL DEFAULT 'N', PRIMARY KEY(owner, sequence_name));
)") + SynonymTables);
}

void installViews(sqlite3* db, const QString& user, bool dba, bool readsAnyTable, qint64 sid) {
  const QString me = QStringLiteral("'") + QString(user).replace(u'\'', QStringLiteral("''")) + u'\'';
  struct View {
    const char* name;
    const char* select;
    const char* ownerColumn; // dropped from the USER_ twin; null: no twin
    // Who may see a row: its owner, and those granted a privilege on the table it names; null:
    // everyone, or the owner only.
    const char* reachOwner;
    const char* reachName;
  };
  static const View views[] = {
      {"ALL_TABLES",
       "SELECT owner AS OWNER, table_name AS TABLE_NAME, 'USERS' AS TABLESPACE_NAME, "
       "CASE iot WHEN 1 THEN 'IOT' END AS IOT_TYPE, num_rows AS NUM_ROWS FROM CAT.tables",
       "OWNER", "OWNER", "TABLE_NAME"},
      {"ALL_VIEWS",
       "SELECT owner AS OWNER, view_name AS VIEW_NAME, length(text) AS TEXT_LENGTH, text AS TEXT, CASE WHEN EXISTS "
       "(SELECT 1 FROM CAT.constraints c WHERE c.owner = v.owner AND c.table_name = v.view_name AND "
       "c.constraint_type = 'O') THEN 'Y' ELSE 'N' END AS READ_ONLY FROM CAT.views v",
       "OWNER", "OWNER", "VIEW_NAME"},
      {"ALL_TAB_COMMENTS",
       "SELECT o.owner AS OWNER, o.name AS TABLE_NAME, o.type AS TABLE_TYPE, c.comments AS COMMENTS FROM CAT.objects o "
       "LEFT JOIN CAT.comments c ON c.owner = o.owner AND c.table_name = o.name AND c.column_name = '' "
       "WHERE o.type IN ('TABLE', 'VIEW')",
       "OWNER", "OWNER", "TABLE_NAME"},
      {"ALL_COL_COMMENTS",
       "SELECT t.owner AS OWNER, t.table_name AS TABLE_NAME, t.column_name AS COLUMN_NAME, c.comments AS COMMENTS "
       "FROM CAT.columns t LEFT JOIN CAT.comments c ON c.owner = t.owner AND c.table_name = t.table_name "
       "AND c.column_name = t.column_name",
       "OWNER", "OWNER", "TABLE_NAME"},
      {"ALL_TAB_COLUMNS",
       "SELECT owner AS OWNER, table_name AS TABLE_NAME, column_name AS COLUMN_NAME, data_type AS DATA_TYPE, "
       "data_length AS DATA_LENGTH, data_precision AS DATA_PRECISION, data_scale AS DATA_SCALE, nullable AS NULLABLE, "
       "column_id AS COLUMN_ID, data_default AS DATA_DEFAULT, char_length AS CHAR_LENGTH, CASE WHEN data_type IN "
       "('VARCHAR2', 'CHAR') THEN CASE WHEN data_length = 4 * char_length THEN 'C' ELSE 'B' END WHEN data_type IN "
       "('NVARCHAR2', 'NCHAR') THEN 'C' END AS CHAR_USED, CASE WHEN identity IS NULL "
       "THEN 'NO' ELSE 'YES' END AS IDENTITY_COLUMN FROM CAT.columns",
       "OWNER", "OWNER", "TABLE_NAME"},
      {"ALL_CONSTRAINTS",
       "SELECT owner AS OWNER, constraint_name AS CONSTRAINT_NAME, constraint_type AS CONSTRAINT_TYPE, "
       "table_name AS TABLE_NAME, search_condition AS SEARCH_CONDITION, r_owner AS R_OWNER, "
       "r_constraint_name AS R_CONSTRAINT_NAME, delete_rule AS DELETE_RULE, status AS STATUS, "
       "'NOT DEFERRABLE' AS DEFERRABLE, 'VALIDATED' AS VALIDATED, generated AS GENERATED, "
       "index_name AS INDEX_NAME FROM CAT.constraints",
       nullptr, "OWNER", "TABLE_NAME"},
      {"ALL_CONS_COLUMNS",
       "SELECT owner AS OWNER, constraint_name AS CONSTRAINT_NAME, table_name AS TABLE_NAME, column_name AS "
       "COLUMN_NAME, "
       "position AS POSITION FROM CAT.cons_columns",
       nullptr, "OWNER", "TABLE_NAME"},
      // The primary key of an index-organized table is the table's own index.
      {"ALL_INDEXES",
       "SELECT i.owner AS OWNER, i.index_name AS INDEX_NAME, CASE WHEN EXISTS (SELECT 1 FROM CAT.tables t JOIN "
       "CAT.constraints c ON c.owner = t.owner AND c.table_name = t.table_name AND c.constraint_type = 'P' WHERE "
       "t.iot = 1 AND t.owner = i.table_owner AND t.table_name = i.table_name AND c.index_name = i.index_name) "
       "THEN 'IOT - TOP' WHEN EXISTS (SELECT 1 FROM CAT.ind_expressions e WHERE e.index_owner = i.owner AND "
       "e.index_name = i.index_name) THEN 'FUNCTION-BASED NORMAL' ELSE 'NORMAL' END AS INDEX_TYPE, i.table_owner AS "
       "TABLE_OWNER, i.table_name AS TABLE_NAME, "
       "'TABLE' AS TABLE_TYPE, i.uniqueness AS UNIQUENESS, 'DISABLED' AS COMPRESSION, 'USERS' AS TABLESPACE_NAME, "
       "'YES' AS LOGGING, 'VALID' AS STATUS, NULL AS NUM_ROWS, NULL AS LAST_ANALYZED, '1' AS DEGREE, "
       "'NO' AS PARTITIONED, 'N' AS TEMPORARY, CASE WHEN i.index_name GLOB 'SYS_*' THEN 'Y' ELSE 'N' END "
       "AS GENERATED, 'VISIBLE' AS VISIBILITY FROM CAT.indexes i",
       "OWNER", "TABLE_OWNER", "TABLE_NAME"},
      {"ALL_IND_COLUMNS",
       "SELECT index_owner AS INDEX_OWNER, index_name AS INDEX_NAME, table_owner AS TABLE_OWNER, "
       "table_name AS TABLE_NAME, column_name AS COLUMN_NAME, column_position AS COLUMN_POSITION, "
       "column_length AS COLUMN_LENGTH, descend AS DESCEND FROM CAT.ind_columns",
       "INDEX_OWNER", "TABLE_OWNER", "TABLE_NAME"},
      {"ALL_IND_EXPRESSIONS",
       "SELECT index_owner AS INDEX_OWNER, index_name AS INDEX_NAME, table_owner AS TABLE_OWNER, table_name AS "
       "TABLE_NAME, column_expression AS COLUMN_EXPRESSION, column_position AS COLUMN_POSITION FROM "
       "CAT.ind_expressions",
       "TABLE_OWNER", "TABLE_OWNER", "TABLE_NAME"},
      // An unbounded sequence is kept to the widest bound the engine counts to, and shown with
      // Oracle's own: 10^28 - 1 up, -(10^27 - 1) down.
      {"ALL_SEQUENCES",
       "SELECT owner AS SEQUENCE_OWNER, sequence_name AS SEQUENCE_NAME, CASE WHEN min_value = -999999999999999999 "
       "THEN TO_NUMBER('-999999999999999999999999999') ELSE min_value END AS MIN_VALUE, CASE WHEN max_value = "
       "999999999999999999 THEN TO_NUMBER('9999999999999999999999999999') ELSE max_value END AS MAX_VALUE, "
       "increment_by AS INCREMENT_BY, cycle_flag AS CYCLE_FLAG, order_flag AS ORDER_FLAG, cache_size AS CACHE_SIZE, "
       // Oracle writes down a cached sequence's numbers a cache at a time: the number after the
       // last of the cache in use, until the first is taken.
       "CASE WHEN cache_size > 0 AND start_with IS NOT NULL THEN start_with + increment_by * cache_size * "
       "(((last_number - start_with) / increment_by + cache_size - 1) / cache_size) ELSE last_number END "
       "AS LAST_NUMBER, 'N' AS SCALE_FLAG, 'N' AS EXTEND_FLAG, 'N' AS SHARDED_FLAG, 'N' AS SESSION_FLAG, "
       "'N' AS KEEP_VALUE FROM CAT.sequences",
       "SEQUENCE_OWNER", "SEQUENCE_OWNER", nullptr},
      // Indexes, in a namespace of their own, are numbered apart from the other objects.
      {"ALL_OBJECTS",
       "SELECT owner AS OWNER, name AS OBJECT_NAME, NULL AS SUBOBJECT_NAME, id AS OBJECT_ID, CASE WHEN type IN "
       "('TABLE', 'INDEX') THEN id END AS DATA_OBJECT_ID, type AS OBJECT_TYPE, created AS CREATED, created AS "
       "LAST_DDL_TIME, replace(replace(created, '/', '-'), ' ', ':') AS TIMESTAMP, 'VALID' AS STATUS, 'N' AS "
       "TEMPORARY, CASE WHEN name GLOB 'SYS_*' THEN 'Y' ELSE 'N' END AS GENERATED, 'N' AS SECONDARY FROM (SELECT "
       "rowid AS id, owner, name, type, created FROM CAT.objects UNION ALL SELECT 1000000 + i.rowid, i.owner, "
       "i.index_name, 'INDEX', t.created FROM CAT.indexes i LEFT JOIN CAT.objects t ON t.owner = i.table_owner AND "
       "t.name = i.table_name)",
       "OWNER", "OWNER", "OBJECT_NAME"},
      {"ALL_USERS", "SELECT username AS USERNAME, user_id AS USER_ID, created AS CREATED FROM CAT.users", nullptr,
       nullptr, nullptr},
  };
  // Oracle's column names include SQLite keywords (DEFERRABLE, GENERATED ...): quote them all.
  static const QRegularExpression alias(QStringLiteral("\\bAS ([A-Z_]+)\\b"));
  QString sql;
  for (const View& v : views) {
    QString select = QString::fromLatin1(v.select).replace(alias, QStringLiteral("AS \"\\1\""));
    if (!dba && v.reachOwner) {
      // What PUBLIC owns (its synonyms) everyone sees.
      QString reach = QStringLiteral("v.\"%1\" IN (%2, 'PUBLIC')").arg(QLatin1String(v.reachOwner), me);
      if (v.reachName)
        reach += QStringLiteral(" OR EXISTS (SELECT 1 FROM CAT.tab_privs p WHERE p.grantee IN (%1, 'PUBLIC') AND "
                                "p.owner = v.\"%2\" AND p.table_name = v.\"%3\")")
                     .arg(me, QLatin1String(v.reachOwner), QLatin1String(v.reachName));
      // Its sequences are no tables: they stay with their own rule.
      if (v.reachName && readsAnyTable)
        reach += qstrcmp(v.name, "ALL_OBJECTS") == 0 ? QStringLiteral(" OR v.\"OBJECT_TYPE\" <> 'SEQUENCE'")
                                                      : QStringLiteral(" OR 1");
      select = QStringLiteral("SELECT v.* FROM (%1) v WHERE %2").arg(select, reach);
    }
    sql += QStringLiteral("CREATE TEMP VIEW \"%1\" AS %2;\n").arg(QLatin1String(v.name), select);
    // A DBA's DBA_ views show what its ALL_ views show, every owner's objects; others have none.
    if (dba)
      sql += QStringLiteral("CREATE TEMP VIEW \"DBA_%1\" AS SELECT * FROM \"%2\";\n")
                 .arg(QLatin1String(v.name + 4), QLatin1String(v.name));
    if (!v.ownerColumn)
      continue;
    sql += QStringLiteral("CREATE TEMP VIEW \"USER_%1\" AS SELECT * FROM \"%2\" WHERE \"%3\" = %4;\n")
               .arg(QLatin1String(v.name + 4), QLatin1String(v.name), QLatin1String(v.ownerColumn), me);
  }
  // Oracle's USER_CONSTRAINTS and USER_CONS_COLUMNS keep their OWNER column.
  sql +=
      QStringLiteral("CREATE TEMP VIEW \"USER_CONSTRAINTS\" AS SELECT * FROM \"ALL_CONSTRAINTS\" WHERE OWNER = %1;\n"
                     "CREATE TEMP VIEW \"USER_CONS_COLUMNS\" AS SELECT * FROM \"ALL_CONS_COLUMNS\" WHERE OWNER = %1;\n")
          .arg(me);
  sql += QStringLiteral(
             "CREATE TEMP VIEW \"V$SESSION\" AS SELECT sid AS SID, serial AS \"SERIAL#\", username AS USERNAME, "
             "osuser AS OSUSER, machine AS MACHINE, program AS PROGRAM, 'USER' AS TYPE, "
             "CASE WHEN killed = 1 THEN 'KILLED' WHEN sid = %1 THEN 'ACTIVE' ELSE 'INACTIVE' END AS STATUS, "
             "logon_time AS LOGON_TIME FROM CAT.sessions;\n"
             "CREATE TEMP VIEW \"GV$SESSION\" AS SELECT 1 AS INST_ID, * FROM \"V$SESSION\";\n"
             "CREATE TEMP VIEW \"DUAL\" AS SELECT 'X' AS DUMMY;\n")
             .arg(sid);
  sqliteExec(db, sql);
}

namespace {

QByteArray stretch(const QByteArray& salt, const QString& password) {
  QByteArray digest = salt + password.toUtf8();
  for (int i = 0; i < 20000; ++i)
    digest = QCryptographicHash::hash(salt + digest, QCryptographicHash::Sha256);
  return digest;
}

} // namespace

QString hashPassword(const QString& password) {
  QByteArray salt(16, '\0');
  for (char& c : salt)
    c = char(QRandomGenerator::system()->bounded(256));
  return QString::fromLatin1(salt.toHex() + '$' + stretch(salt, password).toHex());
}

bool checkPassword(const QString& password, const QString& stored) {
  const auto parts = stored.split(u'$');
  if (parts.size() != 2)
    return false;
  const QByteArray salt = QByteArray::fromHex(parts[0].toLatin1());
  // Oracle passwords compare without regard to case only in old releases; ours are exact.
  return stretch(salt, password).toHex() == parts[1].toLatin1();
}

qint64 nextCounter(sqlite3* db, const QString& name) {
  sqliteExec(db,
             QStringLiteral("INSERT INTO CAT.counters(name, value) VALUES (?1, 1) "
                            "ON CONFLICT(name) DO UPDATE SET value = value + 1"),
             {name});
  return sqliteValue(db, QStringLiteral("SELECT value FROM CAT.counters WHERE name = ?1"), {name}).toLongLong();
}

} // namespace Catalogue
