#include "EngineFixture.h"

// Object privileges as Oracle keeps them: another schema's table is out of reach until its owner
// or a DBA grants a privilege on it, to the user or to PUBLIC; each statement needs its own
// privilege; the ALL_ views list what the session can reach, and only a DBA has DBA_ views.
class TestPrivileges final : public QObject {
  Q_OBJECT

  std::unique_ptr<EngineFixture> m_fx;
  std::shared_ptr<OraDatabase> m_sales;
  std::shared_ptr<OraDatabase> m_clerk;

  int clerkRuns(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { m_clerk->ExecuteSQL(sql); }, text);
  }
  int clerkReads(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { rowsOf(*m_clerk, sql); }, text);
  }

private Q_SLOTS:
  void initTestCase() {
    m_fx = std::make_unique<EngineFixture>();
    auto system = m_fx->open("system", "manager");
    system->ExecuteSQL("create user clerk identified by c");
    system->ExecuteSQL("grant connect, resource to clerk");
    m_sales = m_fx->sales();
    m_sales->ExecuteSQL("create table prices (k number, p number)");
    m_sales->ExecuteSQL("insert into prices values (1, 5)");
    m_sales->ExecuteSQL("create table hidden (k number)");
    m_clerk = m_fx->open("clerk", "c");
  }
  void cleanupTestCase() {
    m_clerk.reset();
    m_sales.reset();
    m_fx.reset();
  }

  void eachStatementNeedsItsPrivilege() {
    QString text;
    QCOMPARE(clerkReads("select * from sales.prices", &text), 942);
    QCOMPARE(text, QString("ORA-00942: table or view does not exist"));
    QCOMPARE(clerkRuns("insert into sales.prices values (2, 20)"), 942);
    m_sales->ExecuteSQL("grant select on prices to clerk");
    QCOMPARE(rowsOf(*m_clerk, "select k, p from sales.prices"), QStringList({"1|5"}));
    QCOMPARE(clerkRuns("insert into sales.prices values (2, 20)", &text), 1031);
    QCOMPARE(text, QString("ORA-01031: insufficient privileges"));
    QCOMPARE(clerkRuns("update sales.prices set p = 6"), 1031);
    QCOMPARE(clerkRuns("delete from sales.prices"), 1031);
    {
      // Rows deleted one by one through a query of them need DELETE too.
      auto rows = m_clerk->CreateDynaset("select k from sales.prices", OraDynaset::Updatable);
      QCOMPARE(errorOf([&] { rows->Delete(); }), 1031);
    }
    m_sales->ExecuteSQL("grant insert, update on prices to clerk");
    QCOMPARE(clerkRuns("insert into sales.prices values (2, 20)"), 0);
    QCOMPARE(clerkRuns("update sales.prices set p = p + 1 where k = 2"), 0);
    QCOMPARE(clerkRuns("delete from sales.prices where k = 2"), 1031);
    m_sales->ExecuteSQL("grant all on prices to public");
    QCOMPARE(clerkRuns("delete from sales.prices where k = 2"), 0);
    m_clerk->ExecuteSQL("commit");
    // Taken back: what PUBLIC held goes, what the clerk holds stays.
    m_sales->ExecuteSQL("revoke all on prices from public");
    QCOMPARE(clerkRuns("delete from sales.prices where k = 2"), 1031);
    m_sales->ExecuteSQL("revoke select on prices from clerk");
    QCOMPARE(clerkReads("select * from sales.prices"), 1031);
    m_sales->ExecuteSQL("revoke insert, update on prices from clerk");
    QCOMPARE(clerkReads("select * from sales.prices"), 942);
    QCOMPARE(errorOf([&] { m_sales->ExecuteSQL("revoke select on prices from clerk"); }, &text), 1927);
    QCOMPARE(text, QString("ORA-01927: cannot REVOKE privileges you did not grant"));
  }

  void onlyOwnersAndDbasGrant() {
    QCOMPARE(clerkRuns("grant select on sales.prices to clerk"), 1031);
    QCOMPARE(errorOf([&] { m_sales->ExecuteSQL("grant select on nothing to clerk"); }), 942);
    QCOMPARE(errorOf([&] { m_sales->ExecuteSQL("grant select on prices to nobody"); }), 1917);
    QCOMPARE(errorOf([&] { m_sales->ExecuteSQL("grant execute on prices to clerk"); }), 3001);
    m_sales->ExecuteSQL("create sequence tickets");
    // Another schema's sequence does not exist for a user until SELECT on it is granted.
    QString text;
    QCOMPARE(clerkReads("select sales.tickets.nextval from dual", &text), 2289);
    QCOMPARE(text, QString("ORA-02289: sequence does not exist"));
    QCOMPARE(clerkRuns("grant select on sales.tickets to clerk"), 1031);
    QCOMPARE(errorOf([&] { m_sales->ExecuteSQL("grant alter on tickets to clerk"); }), 3001);
    m_sales->ExecuteSQL("grant select on tickets to clerk");
    QCOMPARE(rowsOf(*m_clerk, "select sales.tickets.nextval from dual"), QStringList({"1"}));
    QCOMPARE(rowsOf(*m_sales, "select tickets.nextval from dual"), QStringList({"2"}));
    m_sales->ExecuteSQL("revoke select on tickets from clerk");
    QCOMPARE(clerkReads("select sales.tickets.nextval from dual"), 2289);
    auto system = m_fx->open("system", "manager");
    QCOMPARE(rowsOf(*system, "select count(*) from sales.hidden"), QStringList({"0"}));
    system->ExecuteSQL("grant select on sales.hidden to clerk");
    QCOMPARE(rowsOf(*m_clerk, "select count(*) from sales.hidden"), QStringList({"0"}));
    system->ExecuteSQL("revoke select on sales.hidden from clerk");
    QCOMPARE(clerkRuns("grant dba to clerk"), 1031);
    QCOMPARE(clerkRuns("alter system kill session '1,1'"), 1031);
  }

  void allViewsListWhatIsReachable() {
    m_sales->ExecuteSQL("grant select on prices to clerk");
    QCOMPARE(rowsOf(*m_clerk, "select table_name from all_tables where owner = 'SALES'"), QStringList({"PRICES"}));
    QCOMPARE(rowsOf(*m_clerk, "select distinct table_name from all_tab_columns where owner = 'SALES'"),
             QStringList({"PRICES"}));
    QCOMPARE(rowsOf(*m_clerk, "select object_name from all_objects where owner = 'SALES' order by 1"),
             QStringList({"PRICES"}));
    QCOMPARE(rowsOf(*m_sales, "select table_name from all_tables where owner = 'SALES' order by 1"),
             QStringList({"HIDDEN", "PRICES"}));
    QCOMPARE(rowsOf(*m_fx->open("system", "manager"), "select count(*) from dba_tables where owner = 'SALES'"),
             QStringList({"2"}));
    QCOMPARE(clerkReads("select count(*) from dba_tables"), 942);
    m_sales->ExecuteSQL("revoke select on prices from clerk");
  }
};

QTEST_GUILESS_MAIN(TestPrivileges)
#include "test_privileges.moc"
