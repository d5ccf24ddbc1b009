#include "EngineFixture.h"

// GROUP BY ROLLUP, CUBE and GROUPING SETS with GROUPING and GROUPING_ID: one row for each group
// of each grouping set, the columns a set leaves out being NULL.
class TestGrouping final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table pay (id number, dept number, job varchar2(5), sal number)");
    for (const char* row : {"1, 10, 'A', 300", "2, 10, 'B', 100", "3, 20, 'A', 400", "4, 20, 'A', null"})
      m_db->ExecuteSQL(QString("insert into pay values (%1)").arg(row));
  }
  void cleanupTestCase() { closeSales(); }

  void rollupAndCube() {
    QCOMPARE(rows("select dept, job, sum(sal), count(*) from pay group by rollup(dept, job) order by dept, job"),
             QStringList({"10|A|300|1", "10|B|100|1", "10|<null>|400|2", "20|A|400|2", "20|<null>|400|2",
                          "<null>|<null>|800|4"}));
    QCOMPARE(rows("select job, grouping(job) g, count(*) from pay group by cube(job) order by job"),
             QStringList({"A|0|3", "B|0|1", "<null>|1|4"}));
    // A plain column beside ROLLUP is in every set.
    QCOMPARE(rows("select dept, job, count(*) from pay group by dept, rollup(job) having grouping(job) = 1 "
                  "order by dept"),
             QStringList({"10|<null>|2", "20|<null>|2"}));
    QCOMPARE(rows("select count(*) from (select dept, job from pay group by cube(dept, job))"), QStringList({"8"}));
    // A column outside every set is no GROUP BY expression.
    QCOMPARE(errorOf([&] { rows("select dept, sal, count(*) from pay group by rollup(dept)"); }), 979);
  }

  void groupingSetsAndIds() {
    QCOMPARE(rows("select dept, job, grouping_id(dept, job) gid, count(*) n from pay "
                  "group by grouping sets ((dept, job), dept, ()) order by gid, dept, job"),
             QStringList({"10|A|0|1", "10|B|0|1", "20|A|0|2", "10|<null>|1|2", "20|<null>|1|2", "<null>|<null>|3|4"}));
    auto d = m_db->CreateDynaset("select dept, sum(sal) from pay group by rollup(dept)", 4);
    QCOMPARE(d->FieldName(0), "DEPT");
    QCOMPARE(d->FieldName(1), "SUM(SAL)");
  }
};

QTEST_GUILESS_MAIN(TestGrouping)
#include "test_grouping.moc"
