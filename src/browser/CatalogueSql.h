#pragma once

#include "browser/NameMasters.h"

#include <QString>
#include <QStringList>

// The catalogue queries, built by plain concatenation as the DBA would type them: IDs go between
// single quotes as they are, and the owner test upper-cases both sides so any spelling of the
// user name matches. Each query that joins a name-master table has a fallback without it, for a
// schema where the master or one of its configured columns does not exist.

// Every table and view of user: TBLNM_A (ID), NUMROWS (-1 for views), TBLNM_K (display name:
// master, else comment, else the ID), ordered by ID.
QString TableCatalogueSql(const QString& user, const MasterTable& master);
QString TableCatalogueFallbackSql(const QString& user);

// The columns of one table in COLUMN_ID order: COLUMN_NAME, DATA_TYPE, DATA_PRECISION,
// DATA_SCALE, DATA_LENGTH, COLNM_K (master, else comment, else the ID).
QString ColumnCatalogueSql(const QString& user, const QString& table, const MasterTable& master);
QString ColumnCatalogueFallbackSql(const QString& user, const QString& table);

// The same column facts for the viewer and the export, where COLNM_K ignores comments.
QString ColumnInfoSql(const QString& user, const QString& table, const MasterTable& master);
QString ColumnInfoFallbackSql(const QString& user, const QString& table);

// Whether the table-name master exists for user: one row when it does.
QString TableMasterCheckSql(const QString& user, const QString& masterTable);

// The tables of user holding every one of columns (at least one), nested so that the last column
// is tested over the tables holding all the others: table_name and TBLNM_K, which is the master's
// name when master is given and the ID otherwise. Views count as tables.
QString TableSearchSql(const QString& user, const QStringList& columns, const MasterTable* master);

// The constraints of one table other than check constraints, in the server's order: IDXNM (the
// constraint's name, which is also the name of the index a primary or unique key owns) and
// IDXTYPE.
QString IndexCatalogueSql(const QString& user, const QString& table);

// The columns of one index in the server's order: COLUMN_NAME, COLUMN_POSITION, COLUMN_LENGTH,
// DESCEND, COLNM_K (master, else comment, else the ID) and COMMENTS.
QString IndexColumnsSql(const QString& user, const QString& index, const MasterTable& master);
QString IndexColumnsFallbackSql(const QString& user, const QString& index);

// The indexes on user's tables holding every one of columns (at least one), nested as the table
// search nests: INDEX_NAME, and IDXNM_K, the same name again.
QString IndexSearchSql(const QString& user, const QStringList& columns);

// The table of each of user's indexes: INDEX_NAME and TABLE_NAME.
QString IndexTablesSql(const QString& user);
