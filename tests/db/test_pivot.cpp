#include "EngineFixture.h"

// PIVOT turns the values of a column into columns of aggregates, grouped by the source's other
// columns; UNPIVOT turns columns into rows of a name and a value column.
class TestPivot final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table pay (dept number, job varchar2(5), sal number)");
    for (const char* row : {"10, 'A', 300", "10, 'B', 100", "20, 'A', 400", "20, 'A', 50", "20, 'C', null"})
      m_db->ExecuteSQL(QString("insert into pay values (%1)").arg(row));
    m_db->ExecuteSQL("create table q (id number, q1 number, q2 number)");
    m_db->ExecuteSQL("insert into q values (1, 5, null)");
    m_db->ExecuteSQL("insert into q values (2, null, null)");
  }
  void cleanupTestCase() { closeSales(); }

  void pivotColumnsAndGroups() {
    // DEPT is the one column left over, so the rows are grouped by it.
    auto d = m_db->CreateDynaset("select * from pay pivot (sum(sal) for job in ('A', 'B' as b)) order by dept", 4);
    QCOMPARE(d->FieldCount(), 3);
    QCOMPARE(d->FieldName(1), "'A'");
    QCOMPARE(d->FieldName(2), "B");
    QCOMPARE(rows("select * from pay pivot (sum(sal) for job in ('A', 'B' as b)) order by dept"),
                  QStringList({"10|300|100", "20|450|<null>"}));
    // Aliased aggregates name the columns value_aggregate; COUNT of no rows is 0.
    d = m_db->CreateDynaset("select * from (select job, sal from pay) pivot (sum(sal) as s, count(*) as n "
                            "for job in ('A' as a, 'C' as c))", 4);
    QCOMPARE(d->FieldName(0), "A_S");
    QCOMPARE(d->FieldName(3), "C_N");
    QCOMPARE(rows("select * from (select job, sal from pay) pivot (sum(sal) as s, count(*) as n "
                  "for job in ('A' as a, 'C' as c))"),
             QStringList({"750|3|<null>|1"}));
    // The FOR column is no column of the result.
    QCOMPARE(errorOf([&] { rows("select dept from (select dept, sal from pay) pivot (max(sal) for dept in (10))"); }),
             904);
    QCOMPARE(rows("select p.\"10\", p.\"20\" from (select dept, sal from pay) p pivot (max(sal) for dept in (10, 20)) p"),
             QStringList({"300|400"}));
  }

  void unpivotRows() {
    QCOMPARE(rows("select * from q unpivot (v for quarter in (q1, q2 as 'Second')) order by id, quarter"),
             QStringList({"1|Q1|5"}));
    QCOMPARE(rows("select id, quarter, v from q unpivot include nulls (v for quarter in (q1, q2 as 'Second')) "
                  "order by id, quarter"),
             QStringList({"1|Q1|5", "1|Second|<null>", "2|Q1|<null>", "2|Second|<null>"}));
    auto d = m_db->CreateDynaset("select * from q unpivot exclude nulls (v for quarter in (q1, q2))", 4);
    QCOMPARE(d->FieldName(0), "ID");
    QCOMPARE(d->FieldName(1), "QUARTER");
    QCOMPARE(d->FieldName(2), "V");
  }

  void refusedForms() {
    QCOMPARE(errorOf([&] { rows("select * from pay pivot xml (sum(sal) for job in (any))"); }), 3001);
    QCOMPARE(errorOf([&] { rows("select * from pay pivot (sum(sal) for job in (any))"); }), 3001);
    QCOMPARE(errorOf([&] { rows("select * from pay pivot (sum(sal), max(sal) for job in ('A'))"); }), 918);
  }
};

QTEST_GUILESS_MAIN(TestPivot)
#include "test_pivot.moc"
