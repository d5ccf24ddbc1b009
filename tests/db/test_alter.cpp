#include "EngineFixture.h"

// Tables made and reshaped: CREATE TABLE AS SELECT and ALTER TABLE.
class TestAlter final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  QStringList columns(const QString& table) {
    return rows("select column_name || ' ' || data_type || ' ' || data_length || ' ' || data_precision || ' ' || "
                "data_scale || ' ' || nullable from user_tab_columns where table_name = '" +
                table + "' order by column_id");
  }

private Q_SLOTS:
  void init() {
    openSales();
    exec("create table src (id number(6) primary key, name varchar2(20) not null, amt number(8,2), "
         "d date default sysdate, constraint src_amt_ck check (amt > 0))");
    exec("insert into src (id, name, amt) values (1, 'a', 10)");
    exec("insert into src (id, name, amt) values (2, 'bb', null)");
  }
  void cleanup() { closeSales(); }

  void createTableAsSelect() {
    QCOMPARE(m_db->ExecuteSQL("create table c1 as select id, name, amt, d, amt * 2 dbl from src"), qint64(0));
    // Types come from the columns; NOT NULL only where declared (the key's is not copied).
    QCOMPARE(columns("C1"), QStringList({"ID NUMBER 22 6 0 Y", "NAME VARCHAR2 20   N", "AMT NUMBER 22 8 2 Y",
                                         "D DATE 7   Y", "DBL NUMBER 22   Y"}));
    QCOMPARE(rows("select count(*) from user_constraints where table_name = 'C1'"), QStringList({"1"}));
    QCOMPARE(rows("select id || name || amt || dbl from c1 order by id"), QStringList({"1a1020", "2bb"}));
    exec("create table c2 (a, b) as select id, name from src where 1 = 0");
    QCOMPARE(columns("C2"), QStringList({"A NUMBER 22 6 0 Y", "B VARCHAR2 20   N"}));
    QCOMPARE(rows("select count(*) from c2"), QStringList({"0"}));
    QCOMPARE(errorOf([&] { exec("create table c3 as select upper(name) from src"); }), 998);
    QCOMPARE(errorOf([&] { exec("create table c3 (a) as select id, name from src"); }), 1730);
    QCOMPARE(errorOf([&] { exec("create table c1 as select * from src"); }), 955);
  }
};

QTEST_GUILESS_MAIN(TestAlter)
#include "test_alter.moc"
