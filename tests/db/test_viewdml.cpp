#include "EngineFixture.h"

class TestViewDml final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  int error(const QString& sql) {
    return errorOf([&] { exec(sql); });
  }

private Q_SLOTS:
  void init() {
    openSales();
    exec("create table vt (id number primary key, name varchar2(20), dept number)");
    for (const char* row : {"1, 'a', 10", "2, 'b', 20", "3, 'c', 10"})
      exec(QStringLiteral("insert into vt values (%1)").arg(row));
  }
  void cleanup() { closeSales(); }

  void dmlThroughASimpleView() {
    exec("create view v10 as select id emp_id, name, dept, id * 2 dbl from vt e where e.dept = 10");
    // Only the rows the view shows change, under the view's names for the columns.
    QCOMPARE(m_db->ExecuteSQL("update v10 set name = upper(name) where emp_id > 0"), qint64(2));
    QCOMPARE(m_db->ExecuteSQL("delete v10 where emp_id = 3 or emp_id = 2"), qint64(1));
    QCOMPARE(m_db->ExecuteSQL("insert into v10 (emp_id, name, dept) values (4, 'd', 20)"), qint64(1));
    QCOMPARE(rows("select id || name || dept from vt order by id"), QStringList({"1A10", "2b20", "4d20"}));
    QCOMPARE(error("insert into v10 (emp_id, dbl) values (5, 1)"), 1733);
    QCOMPARE(error("insert into v10 values (5, 'e', 10, 10)"), 1733);
    exec("create view vall as select * from vt");
    exec("insert into vall values (9, 'z', 30)");
    QCOMPARE(rows("select count(*) from vt"), QStringList({"4"}));
  }

  void viewsOracleWillNotChange() {
    exec("create view vro as select * from vt with read only");
    QCOMPARE(error("delete from vro"), 42399);
    QCOMPARE(rows("select constraint_type from user_constraints where table_name = 'VRO'"), QStringList({"O"}));
    exec("create view vagg as select dept, count(*) n from vt group by dept");
    QCOMPARE(rows("select view_name || read_only from user_views where view_name in ('VRO', 'VAGG') order by 1"),
             QStringList({"VAGGN", "VROY"}));
    QCOMPARE(error("update vagg set dept = 1"), 1732);
    exec("create view vd as select distinct dept from vt");
    QCOMPARE(error("delete from vd"), 1732);
    exec("create view vj as select a.id, b.name from vt a, vt b where a.id = b.id");
    QCOMPARE(error("delete from vj"), 1732);
    QCOMPARE(rows("select count(*) from vt"), QStringList({"3"}));
  }
};

QTEST_GUILESS_MAIN(TestViewDml)
#include "test_viewdml.moc"
