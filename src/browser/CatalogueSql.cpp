#include "browser/CatalogueSql.h"

namespace {

QString ownerIs(const QString& column, const QString& user) {
  return QStringLiteral(" WHERE upper(") + column + QStringLiteral(") = upper('") + user + QStringLiteral("')");
}

const QString ColumnFacts =
    QStringLiteral("select A.COLUMN_NAME,A.DATA_TYPE ,A.DATA_PRECISION ,A.DATA_SCALE ,A.DATA_LENGTH ");

// The columns of one table or index with COLNM_K, their display name: the master's (when there is
// one to join), else the comment, else the ID.
struct CommentedColumns {
  QString facts;      // the select list before COLNM_K
  QString extra;      // what follows COLNM_K
  QString view;       // the dictionary view, as A
  QString owner;      // A's owner column
  QString key;        // A's column naming the table or index
  QString commentJoin; // the join to the comments, and the order
};

const CommentedColumns TableColumns{
    ColumnFacts, QString(), QStringLiteral("ALL_TAB_COLUMNS"), QStringLiteral("A.OWNER"), QStringLiteral("A.TABLE_NAME"),
    QStringLiteral(
        "AND A.TABLE_NAME = C.TABLE_NAME AND A.COLUMN_NAME = C.COLUMN_NAME AND A.OWNER = C.OWNER  ORDER BY A.COLUMN_ID")};
const CommentedColumns IndexColumns{QStringLiteral("select A.COLUMN_NAME,A.COLUMN_POSITION ,A.COLUMN_LENGTH,A.DESCEND "),
                                    QStringLiteral(",C.COMMENTS "), QStringLiteral("ALL_IND_COLUMNS"),
                                    QStringLiteral("A.TABLE_OWNER"), QStringLiteral("A.INDEX_NAME"),
                                    QStringLiteral("AND A.TABLE_NAME = C.TABLE_NAME AND A.COLUMN_NAME = C.COLUMN_NAME ")};

QString commentedColumnsSql(const CommentedColumns& q, const QString& user, const QString& name,
                            const MasterTable* m) {
  const QString owned = ownerIs(q.owner, user) + QStringLiteral(" AND ") + q.key + QStringLiteral(" = '") + name;
  if (!m)
    return q.facts + QStringLiteral(",NVL(C.COMMENTS,A.COLUMN_NAME) COLNM_K ") + q.extra + QStringLiteral(" from ") +
           q.view + QStringLiteral(" A,ALL_COL_COMMENTS C ") + owned + QStringLiteral("' ") + q.commentJoin;
  return q.facts + QStringLiteral(",NVL(B.") + m->nameColumn + QStringLiteral(",NVL(C.COMMENTS,A.COLUMN_NAME)) COLNM_K ") +
         q.extra + QStringLiteral(" from ") + q.view + QStringLiteral(" A,") + m->table +
         QStringLiteral(" B,ALL_COL_COMMENTS C ") + owned + QStringLiteral("'  AND B.") + m->idColumn +
         QStringLiteral(" (+) = A.COLUMN_NAME ") + q.commentJoin;
}

// A search by columns of a dictionary view: which objects hold the first column, then which of
// those hold the next, and so on. The object's name is selected as select, matched as inColumn;
// owner closes each column test.
struct NestedSearch {
  QString select;
  QString view;
  QString inColumn;
  QString owner;
};

// The condition of the last column's test, over the objects the nested tests of all the others
// found: " where COLUMN_NAME = '…'" alone for a single column.
QString lastColumnTest(const NestedSearch& n, const QStringList& columns) {
  QString s;
  for (qsizetype k = 0; k + 1 < columns.size(); ++k) {
    s = s.isEmpty() ? QStringLiteral("select ") + n.select + QStringLiteral(" from ") + n.view +
                          QStringLiteral(" where COLUMN_NAME = '") + columns[k] + n.owner + u' '
                    : QStringLiteral("select ") + n.select + QStringLiteral(" from ") + n.view + QStringLiteral(" WHERE ") +
                          n.inColumn + QStringLiteral(" in (") + s + QStringLiteral(") and COLUMN_NAME = '") +
                          columns[k] + n.owner;
  }
  const QString within = s.isEmpty() ? QStringLiteral(" where COLUMN_NAME = '")
                                     : QStringLiteral(" WHERE ") + n.inColumn + QStringLiteral(" in (") + s +
                                           QStringLiteral(") and COLUMN_NAME = '");
  return within + (columns.isEmpty() ? QString() : columns.last()) + n.owner;
}

} // namespace

QString TableCatalogueSql(const QString& user, const MasterTable& m) {
  return QStringLiteral("select A.TABLE_NAME TBLNM_A,A.NUM_ROWS NUMROWS,NVL(B.") + m.nameColumn +
         QStringLiteral(",NVL(C.COMMENTS,A.TABLE_NAME)) TBLNM_K from ALL_TABLES A,") + m.table +
         QStringLiteral(" B,ALL_TAB_COMMENTS C ") + ownerIs(QStringLiteral("A.OWNER"), user) + QStringLiteral(" AND B.") +
         m.idColumn +
         QStringLiteral(" (+) = A.TABLE_NAME  AND A.TABLE_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+) UNION "
                        "select A.VIEW_NAME TBLNM_A,-1 NUMROWS,NVL(B.") +
         m.nameColumn + QStringLiteral(",NVL(C.COMMENTS,A.VIEW_NAME)) TBLNM_K from ALL_VIEWS A,") + m.table +
         QStringLiteral(" B,ALL_TAB_COMMENTS C ") + ownerIs(QStringLiteral("A.OWNER"), user) + QStringLiteral(" AND B.") +
         m.idColumn +
         QStringLiteral(" (+) = A.VIEW_NAME  AND A.VIEW_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+)  order by 1");
}

QString TableCatalogueFallbackSql(const QString& user) {
  return QStringLiteral("select A.TABLE_NAME TBLNM_A,A.NUM_ROWS NUMROWS,NVL(C.COMMENTS,A.TABLE_NAME) TBLNM_K "
                        "from ALL_TABLES A,ALL_TAB_COMMENTS C ") +
         ownerIs(QStringLiteral("A.OWNER"), user) +
         QStringLiteral("  AND A.TABLE_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+) UNION "
                        "select A.VIEW_NAME TBLNM_A,-1 NUMROWS,NVL(C.COMMENTS,A.VIEW_NAME) TBLNM_K "
                        "from ALL_VIEWS A,ALL_TAB_COMMENTS C ") +
         ownerIs(QStringLiteral("A.OWNER"), user) +
         QStringLiteral("  AND A.VIEW_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+)  order by 1");
}

QString ColumnCatalogueSql(const QString& user, const QString& table, const MasterTable& m) {
  return commentedColumnsSql(TableColumns, user, table, &m);
}

QString ColumnCatalogueFallbackSql(const QString& user, const QString& table) {
  return commentedColumnsSql(TableColumns, user, table, nullptr);
}

QString ColumnInfoSql(const QString& user, const QString& table, const MasterTable& m) {
  return ColumnFacts + QStringLiteral(",NVL(B.") + m.nameColumn +
         QStringLiteral(",A.COLUMN_NAME) COLNM_K from ALL_TAB_COLUMNS A,") + m.table + QStringLiteral(" B") +
         ownerIs(QStringLiteral("OWNER"), user) + QStringLiteral(" AND TABLE_NAME = '") + table +
         QStringLiteral("'  AND B.") + m.idColumn + QStringLiteral(" (+) = A.COLUMN_NAME ORDER BY A.COLUMN_ID");
}

QString ColumnInfoFallbackSql(const QString& user, const QString& table) {
  return ColumnFacts + QStringLiteral(",A.COLUMN_NAME COLNM_K from ALL_TAB_COLUMNS A") +
         ownerIs(QStringLiteral("OWNER"), user) + QStringLiteral(" AND TABLE_NAME = '") + table +
         QStringLiteral("'  ORDER BY A.COLUMN_ID");
}

QString TableMasterCheckSql(const QString& user, const QString& masterTable) {
  return QStringLiteral("select TABLE_NAME from ALL_TABLES") + ownerIs(QStringLiteral("OWNER"), user) +
         QStringLiteral(" AND TABLE_NAME = '") + masterTable + u'\'';
}

QString TableSearchSql(const QString& user, const QStringList& columns, const MasterTable* master) {
  const QString test = lastColumnTest(
      {QStringLiteral("distinct table_name"), QStringLiteral("ALL_TAB_COLUMNS"), QStringLiteral("TABLE_NAME"),
       QStringLiteral("' and upper(owner) = upper('") + user + QStringLiteral("')")},
      columns);
  if (!master)
    return QStringLiteral("select distinct table_name,TABLE_NAME TBLNM_K from ALL_TAB_COLUMNS") + test + u' ';
  return QStringLiteral("select distinct table_name,NVL(B.") + master->nameColumn +
         QStringLiteral(",TABLE_NAME) TBLNM_K from ALL_TAB_COLUMNS,") + master->table + QStringLiteral(" B") + test +
         QStringLiteral(" AND B.") + master->idColumn + QStringLiteral(" (+) = TABLE_NAME") +
         (columns.size() < 2 ? QStringLiteral(" ") : QString());
}

QString IndexCatalogueSql(const QString& user, const QString& table) {
  return QStringLiteral("select A.CONSTRAINT_NAME IDXNM,A.CONSTRAINT_TYPE IDXTYPE  from ALL_CONSTRAINTS A ") +
         ownerIs(QStringLiteral("A.OWNER"), user) + QStringLiteral("  AND A.TABLE_NAME = '") + table +
         QStringLiteral("' AND NOT A.CONSTRAINT_TYPE = 'C' ");
}

QString IndexColumnsSql(const QString& user, const QString& index, const MasterTable& m) {
  return commentedColumnsSql(IndexColumns, user, index, &m);
}

QString IndexColumnsFallbackSql(const QString& user, const QString& index) {
  return commentedColumnsSql(IndexColumns, user, index, nullptr);
}

QString IndexSearchSql(const QString& user, const QStringList& columns) {
  return QStringLiteral("select INDEX_name,INDEX_NAME IDXNM_K from ALL_IND_COLUMNS") +
         lastColumnTest({QStringLiteral("INDEX_name"), QStringLiteral("ALL_IND_COLUMNS"), QStringLiteral("INDEX_NAME"),
                         QStringLiteral("' and upper(TABLE_owner) = upper('") + user + QStringLiteral("')")},
                        columns) +
         u' ';
}

QString IndexTablesSql(const QString& user) {
  return QStringLiteral("select distinct INDEX_NAME,TABLE_NAME from ALL_IND_COLUMNS") +
         ownerIs(QStringLiteral("TABLE_OWNER"), user);
}
