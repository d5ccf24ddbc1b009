#include "EngineFixture.h"

#include "db/local/Catalogue.h"

#include <sqlite3.h>

// Object privileges as Oracle keeps them: another schema's table is out of reach until its owner
// or a DBA grants a privilege on it, to the user or to PUBLIC; each statement needs its own
// privilege; the ALL_ views list what the session can reach, and only a DBA has DBA_ views.
class TestPrivileges final : public QObject {
  Q_OBJECT

  std::unique_ptr<EngineFixture> m_fx;
  std::shared_ptr<OraDatabase> m_sales;
  std::shared_ptr<OraDatabase> m_clerk;
  std::shared_ptr<OraDatabase> m_auditor;

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
    system->ExecuteSQL("create user auditor identified by a");
    system->ExecuteSQL("grant connect, resource to clerk, auditor");
    m_sales = m_fx->sales();
    m_sales->ExecuteSQL("create table prices (k number, p number)");
    m_sales->ExecuteSQL("insert into prices values (1, 5)");
    m_sales->ExecuteSQL("create table hidden (k number)");
    m_clerk = m_fx->open("clerk", "c");
    m_auditor = m_fx->open("auditor", "a");
  }
  void cleanupTestCase() {
    m_auditor.reset();
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

  void theGrantOptionPassesAPrivilegeOn() {
    m_sales->ExecuteSQL("create table rates (k number)");
    m_sales->ExecuteSQL("grant select, insert on rates to clerk with grant option");
    m_sales->ExecuteSQL("grant update on rates to clerk");
    QCOMPARE(clerkRuns("grant select on sales.rates to auditor"), 0);
    QCOMPARE(rowsOf(*m_auditor, "select count(*) from sales.rates"), QStringList({"0"}));
    // Only what the grantor holds with the option, and never to PUBLIC with it.
    QCOMPARE(clerkRuns("grant update on sales.rates to auditor"), 1031);
    QCOMPARE(clerkRuns("grant delete on sales.rates to auditor"), 1031);
    QString text;
    QCOMPARE(clerkRuns("grant select on sales.rates to public with grant option", &text), 1926);
    QCOMPARE(text, QString("ORA-01926: cannot GRANT to a role WITH GRANT OPTION"));
    QCOMPARE(clerkRuns("grant select on sales.rates to clerk", &text), 1749);
    QCOMPARE(text, QString("ORA-01749: you may not GRANT/REVOKE privileges to/from yourself"));
    // ALL: what the grantor may pass on.
    QCOMPARE(clerkRuns("grant all on sales.rates to auditor with grant option"), 0);
    QCOMPARE(errorOf([&] { m_auditor->ExecuteSQL("grant insert on sales.rates to sales"); }), 1749);
    const QString privs = "select grantee || ' ' || grantor || ' ' || privilege || ' ' || grantable from %1 "
                          "where table_name = 'RATES' order by 1";
    const QStringList all{"AUDITOR CLERK INSERT YES", "AUDITOR CLERK SELECT YES", "CLERK SALES INSERT YES",
                          "CLERK SALES SELECT YES", "CLERK SALES UPDATE NO"};
    QCOMPARE(rowsOf(*m_sales, privs.arg("user_tab_privs")), all);
    QCOMPARE(rowsOf(*m_clerk, privs.arg("all_tab_privs")), all);
    QCOMPARE(rowsOf(*m_auditor, privs.arg("user_tab_privs")), all.mid(0, 2));
    // Each grantor takes back only its own grants; the owner's revoke cascades through the clerk's.
    QCOMPARE(errorOf([&] { m_auditor->ExecuteSQL("revoke update on sales.rates from clerk"); }), 1927);
    m_sales->ExecuteSQL("revoke select, insert on rates from clerk");
    QCOMPARE(rowsOf(*m_sales, privs.arg("user_tab_privs")), QStringList({"CLERK SALES UPDATE NO"}));
    QCOMPARE(errorOf([&] { rowsOf(*m_auditor, "select * from sales.rates"); }), 942);
    QCOMPARE(clerkRuns("revoke select on sales.rates from auditor"), 1927);
    m_sales->ExecuteSQL("drop table rates");
  }

  void systemPrivilegesGovernWhatAUserMayDo() {
    auto system = m_fx->open("system", "manager");
    system->ExecuteSQL("create user newbie identified by n");
    QString text;
    QCOMPARE(errorOf([&] { m_fx->open("newbie", "n"); }, &text), 1045);
    QCOMPARE(text, QString("ORA-01045: user NEWBIE lacks CREATE SESSION privilege; logon denied"));
    system->ExecuteSQL("grant create session to newbie");
    auto newbie = m_fx->open("newbie", "n");
    const auto runs = [&](const QString& sql) { return errorOf([&] { newbie->ExecuteSQL(sql); }); };
    QCOMPARE(runs("create table t (k number)"), 1031);
    system->ExecuteSQL("grant create table, create sequence to newbie with admin option");
    QCOMPARE(runs("create table t (k number)"), 0);
    QCOMPARE(runs("create sequence s"), 0);
    QCOMPARE(runs("create view v as select * from t"), 1031);
    QCOMPARE(rowsOf(*newbie, "select privilege || ' ' || admin_option from user_sys_privs order by 1"),
             QStringList({"CREATE SEQUENCE YES", "CREATE SESSION NO", "CREATE TABLE YES"}));
    // A holder WITH ADMIN OPTION passes the privilege on, and nothing else.
    QCOMPARE(runs("grant create table to auditor"), 0);
    QCOMPARE(runs("grant create view to auditor"), 1031);
    QCOMPARE(runs("grant create table to auditor with grant option"), 1939);
    QCOMPARE(clerkRuns("grant select on sales.prices to auditor with admin option", &text), 993);
    QCOMPARE(text, QString("ORA-00993: missing GRANT keyword"));
    // Reading or changing another schema's table without an object privilege on it.
    QCOMPARE(errorOf([&] { rowsOf(*newbie, "select k from sales.prices"); }), 942);
    system->ExecuteSQL("grant select any table to newbie");
    QCOMPARE(rowsOf(*newbie, "select k from sales.prices"), QStringList({"1"}));
    // The ALL_ views of a session started with the privilege list what it reaches.
    auto reader = m_fx->open("newbie", "n");
    QCOMPARE(rowsOf(*reader, "select count(*) from all_tables where owner = 'SALES' and table_name = 'HIDDEN'"),
             QStringList({"1"}));
    QCOMPARE(rowsOf(*reader, "select count(*) from all_objects where owner = 'SALES' and object_type = 'SEQUENCE'"),
             QStringList({"0"}));
    reader.reset();
    QCOMPARE(runs("delete from sales.prices"), 1031);
    system->ExecuteSQL("grant delete any table to newbie");
    QCOMPARE(runs("delete from sales.prices"), 0);
    newbie->ExecuteSQL("rollback");
    QCOMPARE(errorOf([&] { rowsOf(*newbie, "select sales.tickets.nextval from dual"); }), 2289);
    system->ExecuteSQL("grant select any sequence to newbie");
    QCOMPARE(rowsOf(*newbie, "select sales.tickets.nextval from dual"), QStringList({"3"}));
    // The roles as Oracle 19c defines them.
    QCOMPARE(rowsOf(*m_clerk, "select privilege from session_privs order by 1"),
             QStringList({"CREATE CLUSTER", "CREATE INDEXTYPE", "CREATE OPERATOR", "CREATE PROCEDURE",
                          "CREATE SEQUENCE", "CREATE SESSION", "CREATE TABLE", "CREATE TRIGGER", "CREATE TYPE"}));
    QCOMPARE(rowsOf(*system, "select privilege from dba_sys_privs where grantee = 'CONNECT'"),
             QStringList({"CREATE SESSION"}));
    QCOMPARE(rowsOf(*m_clerk, "select granted_role from user_role_privs order by 1"),
             QStringList({"CONNECT", "RESOURCE"}));
    QCOMPARE(runs("grant connect to auditor"), 1031);
    QCOMPARE(errorOf([&] { system->ExecuteSQL("grant create nothing to newbie"); }, &text), 990);
    QCOMPARE(text, QString("ORA-00990: missing or invalid privilege"));
    QCOMPARE(errorOf([&] { system->ExecuteSQL("grant wizard to newbie"); }, &text), 1919);
    QCOMPARE(text, QString("ORA-01919: role 'WIZARD' does not exist"));
    QCOMPARE(errorOf([&] { system->ExecuteSQL("revoke create view from newbie"); }, &text), 1952);
    QCOMPARE(text, QString("ORA-01952: system privileges not granted to 'NEWBIE'"));
    QCOMPARE(errorOf([&] { system->ExecuteSQL("revoke connect from newbie"); }), 1951);
    system->ExecuteSQL("revoke create session from newbie");
    QCOMPARE(errorOf([&] { m_fx->open("newbie", "n"); }), 1045);
    system->ExecuteSQL("revoke create table from auditor");
  }

  void aCatalogueOfAnEarlierVersionKeepsItsUsersAndGrants() {
    EngineFixture fx;
    fx.sales()->ExecuteSQL("create table kept (k number)");
    fx.sales()->ExecuteSQL("grant select on kept to public");
    // The catalogue as versions before grantors and system privileges made it.
    sqlite3* catalogue = nullptr;
    QCOMPARE(sqlite3_open(QString(fx.folder + "/" + Catalogue::FileName).toUtf8().constData(), &catalogue), SQLITE_OK);
    QCOMPARE(sqlite3_exec(catalogue,
                          "CREATE TABLE old(grantee TEXT, owner TEXT, table_name TEXT, privilege TEXT, PRIMARY "
                          "KEY(grantee, owner, table_name, privilege)); INSERT INTO old SELECT grantee, owner, "
                          "table_name, privilege FROM tab_privs; DROP TABLE tab_privs; ALTER TABLE old RENAME TO "
                          "tab_privs; DROP TABLE sys_privs; DROP TABLE role_privs",
                          nullptr, nullptr, nullptr),
             SQLITE_OK);
    sqlite3_close(catalogue);
    auto sales = fx.sales();
    sales->ExecuteSQL("create table made_after (k number)");
    QCOMPARE(rowsOf(*sales, "select grantor || ' ' || grantee || ' ' || privilege from user_tab_privs"),
             QStringList({"SALES PUBLIC SELECT"}));
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
