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

  void alterTableColumns() {
    const auto error = [&](const char* sql) { return errorOf([&] { exec(sql); }); };
    // Added columns: a default fills the rows there; NOT NULL without one needs an empty table.
    exec("alter table src add (x number, y char(1) default 'Y' not null)");
    QCOMPARE(rows("select id || ':' || x || ':' || y from src order by id"), QStringList({"1::Y", "2::Y"}));
    QCOMPARE(error("alter table src add (z number not null)"), 1758);
    // MODIFY changes what the values allow.
    QCOMPARE(error("alter table src modify (name varchar2(1))"), 1441);
    QCOMPARE(error("alter table src modify (amt number(4,1))"), 1440);
    QCOMPARE(error("alter table src modify (amt varchar2(10))"), 1439);
    QCOMPARE(error("alter table src modify (amt not null)"), 2296);
    QCOMPARE(error("alter table src modify (name not null)"), 1442);
    QCOMPARE(error("alter table src modify (amt null)"), 1451);
    QCOMPARE(error("alter table src modify (id null)"), 1451);
    QCOMPARE(error("alter table src modify (nothing null)"), 904);
    exec("alter table src modify (x varchar2(10) default 'q', name varchar2(30) null, y null)");
    QCOMPARE(columns("SRC").mid(1, 1), QStringList({"NAME VARCHAR2 30   Y"}));
    exec("insert into src (id, amt) values (3, 1)");
    QCOMPARE(rows("select x from src where id = 3"), QStringList({"q"}));
    // Renamed and dropped columns; the check constraint follows the new name.
    exec("alter table src rename column amt to amount");
    QCOMPARE(error("insert into src (id, amount) values (4, -1)"), 2290);
    exec("alter table src drop column d");
    exec("alter table src drop (x, y)");
    QCOMPARE(columns("SRC"), QStringList({"ID NUMBER 22 6 0 N", "NAME VARCHAR2 30   Y", "AMOUNT NUMBER 22 8 2 Y"}));
    QCOMPARE(rows("select id || name || amount from src order by id"), QStringList({"1a10", "2bb", "31"}));
    QCOMPARE(error("alter table src drop (id, name, amount)"), 12983);
    // Renaming the table takes its dictionary along.
    exec("rename src to src2");
    exec("alter table src2 rename to src3");
    QCOMPARE(rows("select table_name from user_constraints where constraint_name = 'SRC_AMT_CK'"),
             QStringList({"SRC3"}));
    QCOMPARE(rows("select count(*) from src3"), QStringList({"3"}));
    QCOMPARE(error("select * from src"), 942);
    // A public synonym takes a DBA; a private one reaches the renamed table.
    QCOMPARE(error("create public synonym s3 for src3"), 1031);
    exec("create synonym s3 for src3");
    QCOMPARE(rows("select count(*) from s3"), QStringList({"3"}));
  }

  void identityColumns() {
    const auto error = [&](const char* sql) { return errorOf([&] { exec(sql); }); };
    exec("create table ida (id number generated always as identity, v varchar2(5))");
    exec("insert into ida (v) values ('a')");
    exec("insert into ida (v) select name from src");
    QCOMPARE(rows("select id || v from ida order by id"), QStringList({"1a", "2a", "3bb"}));
    QCOMPARE(error("insert into ida (id, v) values (9, 'x')"), 32795);
    QCOMPARE(error("insert into ida values (9, 'x')"), 32795);
    QCOMPARE(error("update ida set v = 'y', id = 9"), 32796);
    exec("create table idb (id number generated by default as identity (start with 100 increment by 10), v number)");
    exec("insert into idb (v) values (1)");
    exec("insert into idb (id, v) values (5, 2)");
    exec("insert into idb (v) values (3)");
    QCOMPARE(error("insert into idb (id, v) values (null, 4)"), 1400);
    QCOMPARE(rows("select id || ':' || v from idb order by v"), QStringList({"100:1", "5:2", "110:3"}));
    QCOMPARE(rows("select identity_column || nullable || data_default from user_tab_columns where table_name = "
                  "'IDB' and column_name = 'ID'"),
             QStringList({"YESN\"SALES\".\"ISEQ$$_2\".nextval"}));
    exec("drop table idb");
    QCOMPARE(rows("select sequence_name from user_sequences where sequence_name like 'ISEQ%'"),
             QStringList({"ISEQ$$_1"}));
    QCOMPARE(error("create table idc (id number generated by default on null as identity)"), 3001);
  }
};

QTEST_GUILESS_MAIN(TestAlter)
#include "test_alter.moc"
