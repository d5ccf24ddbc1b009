// The catalogue, search and job statements exactly as the program builds them, run on the
// embedded engine and compared with what Oracle returns for them.
#include "EngineFixture.h"
#include "browser/CatalogueSql.h"

namespace {

const QString User = QStringLiteral("app"); // as typed at logon: the queries upper() it
const MasterTable ColumnMaster{QStringLiteral("TBCLMM"), QStringLiteral("CLM_NM"), QStringLiteral("CLM_ID")};

QString tableCatalogue(const QString& tblm, const QString& tblid, const QString& tblnm) {
  return TableCatalogueSql(User, MasterTable{tblm, tblnm, tblid});
}

const MasterTable TableMaster{QStringLiteral("TBTBLM"), QStringLiteral("TBL_NM"), QStringLiteral("TBL_ID")};

QString search(const QStringList& keys, bool master) { return TableSearchSql(User, keys, master ? &TableMaster : nullptr); }

} // namespace

class TestCatalogueQueries final : public QObject {
  Q_OBJECT

  EngineFixture m_fx;
  std::shared_ptr<OraDatabase> m_db;

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  static QStringList sorted(QStringList l) {
    l.sort();
    return l;
  }

private Q_SLOTS:
  void initTestCase() {
    auto system = m_fx.open("system", "manager");
    system->ExecuteSQL("create user app identified by pw");
    system->ExecuteSQL("create user other identified by pw");
    system->ExecuteSQL("grant connect, resource, create view to app, other");
    auto other = m_fx.open("other", "pw");
    QStringList wide;
    for (int c = 1; c <= 10; ++c)
      wide << QString("C%1 number").arg(c);
    other->ExecuteSQL("create table kokyaku (kokyaku_no number primary key, name varchar2(40))");
    other->ExecuteSQL("create table w4 (" + wide.join(',') + ")");
    m_db = m_fx.open("app", "pw");
    for (const char* sql : {
             "create table tbtblm (tbl_id varchar2(30), tbl_nm varchar2(60))",
             "create table tbclmm (clm_id varchar2(30), clm_nm varchar2(60))",
             "insert into tbtblm values ('KOKYAKU', '顧客')",
             "insert into tbtblm values ('JUCHU', '受注')",
             "insert into tbtblm values ('W1', 'ワーク1')",
             "insert into tbclmm values ('KOKYAKU_NO', '顧客番号')",
             "create table kokyaku (kokyaku_no number(8) primary key, name varchar2(40) not null)",
             "create table juchu (juchu_no number(10) primary key, kokyaku_no number(8) references kokyaku, "
             "juchu_bi date)",
             "create table memo (kokyaku_no number(8), body varchar2(200))",
             "create table logs (id number)",
             "create index juchu_kokyaku_ix on juchu (kokyaku_no, juchu_bi)",
             "create view v_juchu as select juchu_no, kokyaku_no from juchu",
             "comment on table kokyaku is 'customer master'",
             "comment on table memo is '顧客メモ'",
             "comment on column juchu.juchu_bi is '受注日'",
             "comment on column kokyaku.kokyaku_no is 'the customer number'",
             "insert into kokyaku values (1, '山田')",
             "insert into kokyaku values (2, '鈴木')",
             "insert into juchu values (10, 1, '2024/04/01')",
             "insert into juchu values (11, 1, '2024/04/02')",
             "insert into juchu values (12, 2, null)",
             "insert into memo values (1, 'a')",
             "insert into memo values (2, 'b')",
         })
      exec(sql);
    exec("create table w1 (" + wide.join(',') + ")");
    exec("create table w2 (" + wide.mid(0, 9).join(',') + ")");
    exec("create table w3 (" + QStringList(wide.rbegin(), wide.rend()).join(',') + ")");
  }

  void tableCatalogueWithMasterAndFallback() {
    // The master name wins over the comment, the comment over the ID; views count -1 rows.
    const QStringList expected = {"JUCHU|<null>|受注",    "KOKYAKU|<null>|顧客",  "LOGS|<null>|LOGS",
                                  "MEMO|<null>|顧客メモ", "TBCLMM|<null>|TBCLMM", "TBTBLM|<null>|TBTBLM",
                                  "V_JUCHU|-1|V_JUCHU",   "W1|<null>|ワーク1",    "W2|<null>|W2",
                                  "W3|<null>|W3"};
    QCOMPARE(rowsOf(*m_db, tableCatalogue("TBTBLM", "TBL_ID", "TBL_NM")), expected);
    // A missing master fails, and the fallback query answers with comments.
    QCOMPARE(errorOf([&] { m_db->CreateDynaset(tableCatalogue("NOMASTER", "TBL_ID", "TBL_NM"), 4); }), 942);
    QCOMPARE(errorOf([&] { m_db->CreateDynaset(tableCatalogue("TBTBLM", "NO_COLUMN", "TBL_NM"), 4); }), 904);
    const QStringList fallback = rowsOf(*m_db, TableCatalogueFallbackSql(User));
    QCOMPARE(fallback.size(), 10);
    QCOMPARE(fallback[1], QString("KOKYAKU|<null>|customer master"));
    QCOMPARE(fallback[3], QString("MEMO|<null>|顧客メモ"));
  }

  void columnCatalogue() {
    QCOMPARE(rowsOf(*m_db, ColumnCatalogueSql(User, "JUCHU", ColumnMaster)),
             QStringList({"JUCHU_NO|NUMBER|10|0|22|JUCHU_NO", "KOKYAKU_NO|NUMBER|8|0|22|顧客番号",
                          "JUCHU_BI|DATE|<null>|<null>|7|受注日"}));
    // The master beats the comment.
    QCOMPARE(rowsOf(*m_db, ColumnCatalogueSql(User, "KOKYAKU", ColumnMaster)).value(0), QString("KOKYAKU_NO|NUMBER|8|0|22|顧客番号"));
    // Column facts for the viewer: master else ID, no comments.
    QCOMPARE(rowsOf(*m_db, ColumnInfoSql(User, "MEMO", ColumnMaster)),
        QStringList({"KOKYAKU_NO|NUMBER|8|0|22|顧客番号", "BODY|VARCHAR2|<null>|<null>|200|BODY"}));
  }

  void searchNestsTenKeyLevels() {
    QStringList keys;
    for (int c = 1; c <= 10; ++c)
      keys << QString("C%1").arg(c);
    // W2 lacks C10; OTHER.W4 belongs to another owner.
    QCOMPARE(sorted(rowsOf(*m_db, search(keys, true))), QStringList({"W1|ワーク1", "W3|W3"}));
    QCOMPARE(sorted(rowsOf(*m_db, search(keys, false))), QStringList({"W1|W1", "W3|W3"}));
    QCOMPARE(sorted(rowsOf(*m_db, search(keys.mid(0, 9), false))), QStringList({"W1|W1", "W2|W2", "W3|W3"}));
    // One key: views count as tables.
    QCOMPARE(sorted(rowsOf(*m_db, search({"KOKYAKU_NO"}, true))),
             QStringList({"JUCHU|受注", "KOKYAKU|顧客", "MEMO|MEMO", "V_JUCHU|V_JUCHU"}));
    QCOMPARE(
        rowsOf(*m_db, TableMasterCheckSql(User, "TBTBLM")).size(),
        1);
    // The result's column is read as TABLE_NAME whatever case the query wrote.
    auto d = m_db->CreateDynaset(search({"KOKYAKU_NO"}, false), 4);
    QCOMPARE(d->FieldName(0), QString("TABLE_NAME"));
    QVERIFY(d->Fields("TABLE_NAME").isValid());
  }

  void indexBrowserQueries() {
    QCOMPARE(
        sorted(rowsOf(*m_db,
                      "select A.CONSTRAINT_NAME IDXNM,A.CONSTRAINT_TYPE IDXTYPE  from ALL_CONSTRAINTS A  WHERE "
                      "upper(A.OWNER) = upper('app')  AND A.TABLE_NAME = 'JUCHU' AND NOT A.CONSTRAINT_TYPE = 'C' "))
            .size(),
        2);
    QCOMPARE(rowsOf(*m_db,
                    "select A.COLUMN_NAME,A.COLUMN_POSITION ,A.COLUMN_LENGTH,A.DESCEND ,NVL(B.CLM_NM,NVL(C.COMMENTS,"
                    "A.COLUMN_NAME)) COLNM_K ,C.COMMENTS  from ALL_IND_COLUMNS A,TBCLMM B,ALL_COL_COMMENTS C  WHERE "
                    "upper(A.TABLE_OWNER) = upper('app') AND A.INDEX_NAME = 'JUCHU_KOKYAKU_IX'  AND B.CLM_ID (+) = "
                    "A.COLUMN_NAME AND A.TABLE_NAME = C.TABLE_NAME AND A.COLUMN_NAME = C.COLUMN_NAME "),
             QStringList({"KOKYAKU_NO|1|22|ASC|顧客番号|<null>", "JUCHU_BI|2|7|ASC|受注日|受注日"}));
    QCOMPARE(
        rowsOf(*m_db,
               "select INDEX_name,INDEX_NAME IDXNM_K from ALL_IND_COLUMNS WHERE INDEX_NAME in (select INDEX_name from "
               "ALL_IND_COLUMNS where COLUMN_NAME = 'KOKYAKU_NO' and upper(TABLE_owner) = upper('app') ) and "
               "COLUMN_NAME = 'JUCHU_BI' and upper(TABLE_owner) = upper('app') "),
        QStringList({"JUCHU_KOKYAKU_IX|JUCHU_KOKYAKU_IX"}));
  }

  void viewerSessionAndJobStatements() {
    auto groups = m_db->CreateDynaset("select COUNT(*) ,KOKYAKU_NO from JUCHU GROUP BY KOKYAKU_NO", 4);
    QCOMPARE(groups->FieldName(0), QString("COUNT(*)"));
    QCOMPARE(rowsOf(*m_db, "select COUNT(*) ,KOKYAKU_NO from JUCHU GROUP BY KOKYAKU_NO"), QStringList({"2|1", "1|2"}));
    QVERIFY(!rowsOf(*m_db, "SELECT SID,SERIAL#,MACHINE,PROGRAM FROM V$SESSION").isEmpty());
    auto count = m_db->CreateDynaset("select KOKYAKU_NO from JUCHU where KOKYAKU_NO = '1'", 8);
    QCOMPARE(count->RecordCount(), qint64(2));
    QCOMPARE(m_db->ExecuteSQL("DELETE FROM MEMO where KOKYAKU_NO = '1' and BODY like 'a%'"), qint64(1));
    QCOMPARE(m_db->ExecuteSQL("truncate table LOGS"), qint64(0));
    QCOMPARE(m_db->ExecuteSQL("drop table LOGS"), qint64(0));
  }

  void outerJoinsOracleRefuses() {
    QString text;
    const auto err = [&](const QString& sql) { return errorOf([&] { m_db->CreateDynaset(sql, 4); }, &text); };
    QCOMPARE(
        err("select * from kokyaku a, juchu b where a.kokyaku_no(+) = b.kokyaku_no and b.juchu_no(+) = a.kokyaku_no"),
        1416);
    QCOMPARE(err("select * from kokyaku a, juchu b where a.kokyaku_no(+) = b.kokyaku_no or a.name = 'x'"), 1719);
    QCOMPARE(err("select * from kokyaku a, juchu b where a.kokyaku_no(+) in (1, 2)"), 1719);
    QCOMPARE(err("select * from kokyaku a, juchu b where a.kokyaku_no(+) = b.kokyaku_no(+)"), 1468);
    QCOMPARE(err("select * from kokyaku a join juchu b on a.kokyaku_no = b.kokyaku_no, memo m where m.kokyaku_no(+) = "
                 "a.kokyaku_no"),
             25156);
    QCOMPARE(err("select a.name(+) from kokyaku a, juchu b"), 30563);
    QCOMPARE(err("select * from kokyaku a, juchu b where 1 (+) = a.kokyaku_no"), 936);
    QCOMPARE(err("select * from kokyaku a, juchu b where z.kokyaku_no(+) = a.kokyaku_no"), 904);
    QCOMPARE(text, QString("ORA-00904: \"Z\".\"KOKYAKU_NO\": invalid identifier"));
    // Outer rows are kept with Nulls; a plain condition on the outer table still filters.
    QCOMPARE(rowsOf(*m_db,
                    "select a.kokyaku_no, b.juchu_no from kokyaku a, juchu b where b.kokyaku_no(+) = a.kokyaku_no "
                    "and b.juchu_bi(+) = '2024/04/02' order by 1"),
             QStringList({"1|11", "2|<null>"}));
    QCOMPARE(rowsOf(*m_db,
                    "select a.kokyaku_no, b.juchu_no from kokyaku a, juchu b where b.kokyaku_no(+) = a.kokyaku_no "
                    "and b.juchu_bi = '2024/04/02'"),
             QStringList({"1|11"}));
    // An unqualified (+) column belongs to the table that has it.
    QCOMPARE(rowsOf(*m_db,
                    "select a.kokyaku_no, body from kokyaku a, memo where body(+) = 'zzz' and memo.kokyaku_no(+) = "
                    "a.kokyaku_no order by 1"),
             QStringList({"1|<null>", "2|<null>"}));
    // Subqueries are rewritten on their own.
    QCOMPARE(rowsOf(*m_db,
                    "select count(*) from kokyaku where kokyaku_no in (select a.kokyaku_no from kokyaku a, juchu b "
                    "where b.kokyaku_no (+) = a.kokyaku_no and b.juchu_no is null)"),
             QStringList({"0"}));
  }
};

QTEST_GUILESS_MAIN(TestCatalogueQueries)
#include "test_catalogue_queries.moc"
