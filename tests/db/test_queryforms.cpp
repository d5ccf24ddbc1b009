#include "EngineFixture.h"

// Comparisons with ANY, SOME and ALL under Oracle's three-valued logic; SELECT ... FOR UPDATE.
class TestQueryForms final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table pay (id number, dept number, sal number)");
    for (const char* row : {"1, 10, 300", "2, 10, 100", "3, 20, 400", "4, 20, null"})
      m_db->ExecuteSQL(QString("insert into pay values (%1)").arg(row));
  }
  void cleanupTestCase() { closeSales(); }

  void quantifiedComparisons() {
    QCOMPARE(rows("select id from pay where sal > all (select sal from pay where dept = 10) order by id"),
             QStringList({"3"}));
    // ALL over no rows is true, whatever the value, NULL too; ANY over no rows is false.
    QCOMPARE(rows("select count(*) from pay where sal > all (select sal from pay where dept = 99)"),
             QStringList({"4"}));
    QCOMPARE(rows("select count(*) from pay where sal < any (select sal from pay where dept = 99)"),
             QStringList({"0"}));
    // A NULL among the values leaves ALL unknown unless a comparison is false: NOT does not
    // make unknown true.
    QCOMPARE(rows("select id from pay where not (sal < all (select sal from pay where dept = 20)) order by id"),
             QStringList({"3"}));
    QCOMPARE(rows("select id from pay where sal = any (100, 400) order by id"), QStringList({"2", "3"}));
    QCOMPARE(rows("select id from pay where sal > some ('100', '300') order by id"), QStringList({"1", "3"}));
    QCOMPARE(rows("select id from pay where sal <> all (100, 300, null)"), QStringList());
    QCOMPARE(rows("select id from pay p where sal >= all (select sal from pay q where q.dept = p.dept and q.sal "
                  "is not null) order by id"),
             QStringList({"1", "3"}));
  }

  // The locks last as long as the transaction; another session's NOWAIT fails at once.
  void selectForUpdate() {
    auto other = m_fx->sales();
    m_db->connection().begin();
    QCOMPARE(rows("select id from pay where dept = 10 order by id for update of sal nowait"), QStringList({"1", "2"}));
    QString text;
    QCOMPARE(errorOf([&] { rowsOf(*other, "select id from pay for update nowait"); }, &text), 54);
    QCOMPARE(text, QString("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired"));
    m_db->connection().rollback();
    QCOMPARE(rowsOf(*other, "select count(*) from pay for update wait 1"), QStringList({"4"}));
    QCOMPARE(other->ExecuteSQL("update pay set sal = sal where id = 3"), qint64(1));
    QCOMPARE(errorOf([&] { rows("select id from pay for update skip locked"); }), 3001);
  }
};

QTEST_GUILESS_MAIN(TestQueryForms)
#include "test_queryforms.moc"
