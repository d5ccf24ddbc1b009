#include "browser/CatalogueSql.h"

namespace {

QString ownerIs(const QString& column, const QString& user) {
  return QStringLiteral(" WHERE upper(") + column + QStringLiteral(") = upper('") + user + QStringLiteral("')");
}

const QString ColumnFacts =
    QStringLiteral("select A.COLUMN_NAME,A.DATA_TYPE ,A.DATA_PRECISION ,A.DATA_SCALE ,A.DATA_LENGTH ");
const QString ColumnCommentJoin = QStringLiteral(
    "AND A.TABLE_NAME = C.TABLE_NAME AND A.COLUMN_NAME = C.COLUMN_NAME AND A.OWNER = C.OWNER  ORDER BY A.COLUMN_ID");

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
  return ColumnFacts + QStringLiteral(",NVL(B.") + m.nameColumn +
         QStringLiteral(",NVL(C.COMMENTS,A.COLUMN_NAME)) COLNM_K  from ALL_TAB_COLUMNS A,") + m.table +
         QStringLiteral(" B,ALL_COL_COMMENTS C ") + ownerIs(QStringLiteral("A.OWNER"), user) +
         QStringLiteral(" AND A.TABLE_NAME = '") + table + QStringLiteral("'  AND B.") + m.idColumn +
         QStringLiteral(" (+) = A.COLUMN_NAME ") + ColumnCommentJoin;
}

QString ColumnCatalogueFallbackSql(const QString& user, const QString& table) {
  return ColumnFacts +
         QStringLiteral(",NVL(C.COMMENTS,A.COLUMN_NAME) COLNM_K  from ALL_TAB_COLUMNS A,ALL_COL_COMMENTS C ") +
         ownerIs(QStringLiteral("A.OWNER"), user) + QStringLiteral(" AND A.TABLE_NAME = '") + table +
         QStringLiteral("' ") + ColumnCommentJoin;
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
  const QString owner = QStringLiteral("' and upper(owner) = upper('") + user + QStringLiteral("')");
  QString s;
  for (qsizetype k = 0; k + 1 < columns.size(); ++k) {
    s = s.isEmpty() ? QStringLiteral("select distinct table_name from ALL_TAB_COLUMNS where COLUMN_NAME = '") +
                          columns[k] + owner + u' '
                    : QStringLiteral("select distinct table_name from ALL_TAB_COLUMNS WHERE TABLE_NAME in (") + s +
                          QStringLiteral(") and COLUMN_NAME = '") + columns[k] + owner;
  }
  const QString last = columns.isEmpty() ? QString() : columns.last();
  const QString within = s.isEmpty() ? QStringLiteral(" where COLUMN_NAME = '")
                                     : QStringLiteral(" WHERE TABLE_NAME in (") + s +
                                           QStringLiteral(") and COLUMN_NAME = '");
  if (!master)
    return QStringLiteral("select distinct table_name,TABLE_NAME TBLNM_K from ALL_TAB_COLUMNS") + within + last +
           owner + u' ';
  return QStringLiteral("select distinct table_name,NVL(B.") + master->nameColumn +
         QStringLiteral(",TABLE_NAME) TBLNM_K from ALL_TAB_COLUMNS,") + master->table + QStringLiteral(" B") + within +
         last + owner + QStringLiteral(" AND B.") + master->idColumn + QStringLiteral(" (+) = TABLE_NAME") +
         (s.isEmpty() ? QStringLiteral(" ") : QString());
}
