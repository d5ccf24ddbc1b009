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
