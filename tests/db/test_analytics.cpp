#include "EngineFixture.h"

// Analytic functions over partitions and windows, with Oracle's place for NULLs in OVER's ORDER
// BY, and the row limiting clause.
class TestAnalytics final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table pay (id number, dept number, sal number)");
    for (const char* row : {"1, 10, 300", "2, 10, 100", "3, 10, 100", "4, 20, 400", "5, 20, null", "6, 20, 200"})
      m_db->ExecuteSQL(QString("insert into pay values (%1)").arg(row));
  }
  void cleanupTestCase() { closeSales(); }

  void rankingAndOffsets() {
    QCOMPARE(rows("select id, rank() over (partition by dept order by sal), dense_rank() over (partition by dept "
                  "order by sal) from pay order by id"),
             QStringList({"1|3|2", "2|1|1", "3|1|1", "4|2|2", "5|3|3", "6|1|1"}));
    // NULLs last going up, first going down, as in a query's own ORDER BY.
    QCOMPARE(rows("select id, row_number() over (order by sal desc, id) from pay order by id"),
             QStringList({"1|3", "2|5", "3|6", "4|2", "5|1", "6|4"}));
    QCOMPARE(rows("select id, ntile(4) over (order by id) from pay order by id"),
             QStringList({"1|1", "2|1", "3|2", "4|2", "5|3", "6|4"}));
    QCOMPARE(rows("select lag(sal, 1, 0) over (order by id), lead(id) over (order by id) from pay where dept = 10 "
                  "order by id"),
             QStringList({"0|2", "300|3", "100|<null>"}));
  }

  void aggregatesOverWindows() {
    QCOMPARE(rows("select sum(sal) over (partition by dept), count(sal) over (partition by dept), "
                  "max(sal) over (partition by dept) from pay where id in (1, 5)"),
             QStringList({"300|1|300", "<null>|0|<null>"}));
    QCOMPARE(rows("select sum(sal) over (order by id rows between 1 preceding and current row) from pay "
                  "where dept = 10 order by id"),
             QStringList({"300", "400", "200"}));
    QCOMPARE(rows("select f, l from (select id, first_value(sal) over (partition by dept order by sal) f, "
                  "last_value(sal) over (partition by dept order by sal rows between unbounded preceding and "
                  "unbounded following) l from pay) where id = 6"),
             QStringList({"200|<null>"}));
    QCOMPARE(rows("select ratio_to_report(sal) over (partition by dept) from pay where dept = 10 order by id"),
             QStringList({".6", ".2", ".2"}));
    QCOMPARE(errorOf([&] { rows("select ratio_to_report(sal) from pay"); }), 30484);
  }

  void orderedAggregates() {
    // NULLs of a key go last going up; a NULL value is left out.
    QCOMPARE(rows("select dept, listagg(id, ',') within group (order by sal, id), listagg(sal, '-') within group "
                  "(order by sal desc) from pay group by dept order by dept"),
             QStringList({"10|2,3,1|300-100-100", "20|6,4,5|400-200"}));
    QCOMPARE(rows("select listagg(distinct sal, ',') within group (order by sal) from pay where dept = 10"),
             QStringList({"100,300"}));
    QCOMPARE(rows("select id, listagg(id, ',') within group (order by id) over (partition by dept) from pay "
                  "where dept = 10 order by id"),
             QStringList({"1|1,2,3", "2|1,2,3", "3|1,2,3"}));
    // KEEP aggregates the rows of the first or last rank only; ASC puts NULL keys last.
    QCOMPARE(rows("select dept, min(id) keep (dense_rank first order by sal), max(id) keep (dense_rank last order "
                  "by sal), count(*) keep (dense_rank first order by sal) from pay group by dept order by dept"),
             QStringList({"10|2|1|2", "20|6|5|1"}));
    QCOMPARE(rows("select sum(sal) keep (dense_rank first order by dept), avg(sal) keep (dense_rank last order by "
                  "dept nulls first) from pay"),
             QStringList({"500|300"}));
    QCOMPARE(rows("select id, max(sal) keep (dense_rank first order by id desc) over (partition by dept) from pay "
                  "order by id"),
             QStringList({"1|100", "2|100", "3|100", "4|200", "5|200", "6|200"}));
    QCOMPARE(errorOf([&] { rows("select id, min(sal) keep (dense_rank first order by id) from pay"); }), 937);
  }

  void rowLimitingClause() {
    QCOMPARE(rows("select id from pay order by sal desc fetch first 2 rows only"), QStringList({"5", "4"}));
    QCOMPARE(rows("select id from pay order by id offset 4 rows"), QStringList({"5", "6"}));
    QCOMPARE(rows("select id from pay order by id offset 1 row fetch next 2 rows only"), QStringList({"2", "3"}));
    QCOMPARE(rows("select id from pay order by id fetch first row only"), QStringList({"1"}));
    QCOMPARE(rows("select count(*) from (select id from pay order by id offset -3 rows fetch first 0 rows only)"),
             QStringList({"0"}));
    // Fractions are cut off; an offset or a count of NULL leaves no rows.
    QCOMPARE(rows("select id from pay order by id offset 1.9 rows fetch next 1.5 rows only"), QStringList({"2"}));
    QCOMPARE(rows("select id from pay order by id offset null rows"), QStringList());
    QCOMPARE(rows("select id from pay order by id fetch first null rows only"), QStringList());
    // WITH TIES adds the rows that sort equal to the last; PERCENT rounds the share of rows up.
    QCOMPARE(rows("select dept from pay order by dept fetch first 1 row with ties"), QStringList({"10", "10", "10"}));
    QCOMPARE(rows("select id, sal s from pay order by s desc fetch first 2 rows with ties"),
             QStringList({"5|<null>", "4|400"}));
    QCOMPARE(rows("select count(*) from (select id from pay order by sal fetch first 1 rows with ties)"),
             QStringList({"2"}));
    QCOMPARE(rows("select id from pay order by sal, id offset 1 row fetch next 1 row with ties"), QStringList({"3"}));
    QCOMPARE(rows("select id from pay order by id fetch first 34 percent rows only"), QStringList({"1", "2", "3"}));
    QCOMPARE(rows("select id from pay order by id offset 5 rows fetch first 50 percent rows only"), QStringList({"6"}));
    QCOMPARE(rows("select dept from pay order by dept fetch first 20 percent rows with ties"),
             QStringList({"10", "10", "10"}));
    QCOMPARE(rows("select count(*) from (select dept from pay order by dept fetch first 51 percent rows with ties)"),
             QStringList({"6"}));
  }
};

QTEST_GUILESS_MAIN(TestAnalytics)
#include "test_analytics.moc"
