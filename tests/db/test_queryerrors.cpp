#include "EngineFixture.h"

// Queries Oracle refuses are refused with Oracle's error, where SQLite would answer something:
// rows mixed with groups, a query used as a value that gives several rows, an ORDER BY position
// beyond the select list; and parser errors that say what is missing where.
class TestQueryErrors final : public QObject, SalesSession {
  Q_OBJECT

  int error(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { rowsOf(*m_db, sql); }, text);
  }

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table staff (name varchar2(10), dept varchar2(5), salary number)");
    m_db->ExecuteSQL("insert into staff values ('ANN', 'A', 100)");
    m_db->ExecuteSQL("insert into staff values ('BOB', 'A', 300)");
    m_db->ExecuteSQL("insert into staff values ('CAT', 'B', 200)");
  }
  void cleanupTestCase() {
    closeSales();
  }

  void rowsAndGroupsDoNotMix() {
    QString text;
    QCOMPARE(error("select name, count(*) from staff", &text), 937);
    QCOMPARE(text, QString("ORA-00937: not a single-group group function"));
    QCOMPARE(error("select name, max(salary) top from staff"), 937);
    QCOMPARE(error("select name, dept, count(*) from staff group by dept", &text), 979);
    QCOMPARE(text, QString("ORA-00979: not a GROUP BY expression"));
    QCOMPARE(error("select name from staff group by dept"), 979);
    QCOMPARE(error("select salary + 1, count(*) from staff group by salary * 2"), 979);
    QCOMPARE(error("select * from (select name, sum(salary) from staff)"), 937);
    // What Oracle accepts: group expressions, aggregates, constants, and analytic functions.
    QCOMPARE(rows("select dept, count(*), sum(salary) from staff group by dept order by 1"),
             QStringList({"A|2|400", "B|1|200"}));
    QCOMPARE(rows("select s.dept || ':' || max(s.salary) from staff s group by dept order by 1"),
             QStringList({"A:300", "B:200"}));
    QCOMPARE(rows("select lower(dept) d, count(*) n from staff group by lower(dept) order by d"),
             QStringList({"a|2", "b|1"}));
    QCOMPARE(rows("select 1, 'x', count(*), max(salary) - min(salary) from staff"), QStringList({"1|x|3|200"}));
    QCOMPARE(rows("select name, count(*) over () from staff where dept = 'B'"), QStringList({"CAT|1"}));
    QCOMPARE(rows("select count(*) from (select dept from staff group by dept)"), QStringList({"2"}));
    QCOMPARE(rows("select dept from staff group by dept having count(*) > 1"), QStringList({"A"}));
    // A number in GROUP BY is a constant, not a position: one group, and the column is ungrouped.
    QCOMPARE(rows("select count(*) from staff group by 2"), QStringList({"3"}));
    QCOMPARE(error("select dept, count(*) from staff group by 1"), 979);
    QCOMPARE(rows("select dept, count(*) from staff group by dept, 1 order by 1"), QStringList({"A|2", "B|1"}));
    // HAVING and ORDER BY see the groups too; an ORDER BY alias or position stands for its item.
    QCOMPARE(error("select dept from staff group by dept having salary > 100"), 979);
    QCOMPARE(error("select dept, count(*) from staff group by dept order by name"), 979);
    QCOMPARE(error("select count(*) from staff order by salary desc"), 937);
    QCOMPARE(rows("select dept d, sum(salary) total from staff group by dept having max(salary) > 250 order by "
                  "total desc, d, 2 nulls last"),
             QStringList({"A|400"}));
  }

  void parserErrorsNameWhatIsMissing() {
    QString text;
    QCOMPARE(error("select from staff", &text), 936);
    QCOMPARE(text, QString("ORA-00936: missing expression"));
    for (const char* sql : {"select name, from staff", "select salary + from staff", "select count( from staff",
                            "select * from staff where salary = and dept = 'A'", "select 1 from staff order by ,"})
      QCOMPARE(error(sql), 936);
    QCOMPARE(error("select name dept salary from staff", &text), 923);
    QCOMPARE(text, QString("ORA-00923: FROM keyword not found where expected"));
    QCOMPARE(error("select 1 2 from dual"), 923);
    QCOMPARE(error("select 1"), 923);
    QCOMPARE(error("select * from staff where salary >", &text), 921);
    QCOMPARE(text, QString("ORA-00921: unexpected end of SQL command"));
    QCOMPARE(error("select * from"), 903);
    QCOMPARE(error("select 1 from staff s on s.dept = 'A'"), 933);
    QCOMPARE(error("select nothing from staff", &text), 904);
    QCOMPARE(text, QString("ORA-00904: \"NOTHING\": invalid identifier"));
    QCOMPARE(error("select s.nothing from staff s", &text), 904);
    QCOMPARE(text, QString("ORA-00904: \"S\".\"NOTHING\": invalid identifier"));
    // What reads alike but is Oracle's SQL: aliases, typed literals, analytic calls.
    QCOMPARE(rows("select name n, salary as s, interval '1' day d, count(*) over () c from staff where dept = 'B'"),
             QStringList({"CAT|200|+01 00:00:00|1"}));
  }

  void oraclesOwnSyntaxPassesTheParserChecks() {
    // Each may still fail for a reason of its own, but never as a missing expression, a
    // missing FROM, an unexpected end or a missing table.
    for (const char* sql :
         {"select name, salary * 2 as double_pay, -salary neg, (select count(*) from staff) total from staff where "
          "salary between 100 and 300 and name like 'A%' escape '\\' and dept in ('A', 'B') order by name nulls first",
          "select dept, listagg(name, ',') within group (order by name) from staff group by dept",
          "select max(salary) keep (dense_rank first order by name) from staff",
          "select level, prior name, connect_by_root name from staff connect by prior name = dept start with dept = "
          "'A'",
          "select case when salary > 100 then 'hi' else 'lo' end band, count(*) over (partition by dept order by "
          "salary rows between unbounded preceding and current row) from staff",
          "select date '2024-01-01' d, timestamp '2024-01-01 00:00:00' t, interval '1' day i, n'text' from dual",
          "select systimestamp at time zone 'UTC' from dual",
          "select distinct dept from staff", "select unique dept from staff", "select all dept from staff",
          "select count(distinct dept), sum(all salary), count(*) from staff",
          "select name from staff order by 1 desc nulls last offset 0 rows fetch next 1 rows only",
          "with d as (select dept from staff) select * from d", "select name from staff for update",
          "select trim(leading 'A' from name), extract(year from sysdate), cast(salary as varchar2(10)) from staff",
          "select name \"Quoted Alias\", salary s, s.* from staff s",
          "select * from staff where not exists (select 1 from dual) or salary = any (select 100 from dual)",
          "update staff set salary = salary + 0 where dept = 'Z'", "delete from staff where dept = 'Z'",
          "insert into staff (name, dept, salary) select name, dept, salary from staff where 1 = 0"}) {
      const int number = error(sql);
      QVERIFY2(number != 936 && number != 923 && number != 921 && number != 903, sql);
    }
  }

  void foreignKeyErrorsNameTheKeyViolated() {
    m_db->ExecuteSQL("create table parent (id number primary key)");
    m_db->ExecuteSQL("create table child (id number, a number constraint fk_a references parent, "
                     "b number constraint fk_b references parent)");
    m_db->ExecuteSQL("insert into parent values (1)");
    QString text;
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into child values (1, 1, 9)"); }, &text), 2291);
    QCOMPARE(text, QString("ORA-02291: integrity constraint (SALES.FK_B) violated - parent key not found"));
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into child values (1, 9, 1)"); }, &text), 2291);
    QCOMPARE(text, QString("ORA-02291: integrity constraint (SALES.FK_A) violated - parent key not found"));
    m_db->ExecuteSQL("insert into child values (2, 1, null)");
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("update child set b = 5 where id = 2"); }, &text), 2291);
    QCOMPARE(text, QString("ORA-02291: integrity constraint (SALES.FK_B) violated - parent key not found"));
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("delete from parent"); }, &text), 2292);
    QCOMPARE(text, QString("ORA-02292: integrity constraint (SALES.FK_A) violated - child record found"));
    // The failed statements changed nothing.
    QCOMPARE(rows("select count(*) from child"), QStringList({"1"}));
    m_db->ExecuteSQL("drop table child");
    m_db->ExecuteSQL("drop table parent");
  }

  void aQueryUsedAsAValueGivesOneRow() {
    QString text;
    QCOMPARE(error("select (select name from staff) from dual", &text), 1427);
    QCOMPARE(text, QString("ORA-01427: single-row subquery returns more than one row"));
    QCOMPARE(error("select name from staff where salary = (select salary from staff where dept = 'A')"), 1427);
    QCOMPARE(error("select 1 + (select salary from staff) from dual"), 1427);
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("update staff set salary = (select salary from staff)"); }), 1427);
    // One row is its value, none is NULL; IN and EXISTS take any number.
    QCOMPARE(rows("select (select max(salary) from staff), nvl((select name from staff where 1 = 0), 'none') "
                  "from dual"),
             QStringList({"300|none"}));
    QCOMPARE(rows("select name, (select count(*) from staff b where b.dept = a.dept) n from staff a order by name"),
             QStringList({"ANN|2", "BOB|2", "CAT|1"}));
    QCOMPARE(rows("select name from staff where salary > (select avg(salary) from staff) order by name"),
             QStringList({"BOB"}));
    QCOMPARE(rows("select count(*) from staff where salary in (select salary from staff) and exists (select name "
                  "from staff)"),
             QStringList({"3"}));
    QCOMPARE(rows("select count(*) from (select name from staff), (select dept from staff)"), QStringList({"9"}));
    // A query of two columns is a row.
    m_db->ExecuteSQL("update staff set (dept, salary) = (select dept, salary from staff where name = 'ANN') where "
                     "name = 'CAT'");
    QCOMPARE(rows("select dept, salary from staff where name = 'CAT'"), QStringList({"A|100"}));
    m_db->ExecuteSQL("update staff set dept = 'B', salary = 200 where name = 'CAT'");
  }

  void compoundBranchesAgreeOnTypes() {
    QString text;
    QCOMPARE(error("select 1 from dual union select 'a' from dual", &text), 1790);
    QCOMPARE(text, QString("ORA-01790: expression must have same datatype as corresponding expression"));
    QCOMPARE(error("select name, salary from staff union all select dept, name from staff"), 1790);
    QCOMPARE(error("select salary from staff minus select sysdate from dual"), 1790);
    QCOMPARE(error("select extract(year from sysdate) from dual union select name from staff"), 1790);
    QCOMPARE(error("select null from dual union select 1 from dual union select 'x' from dual"), 1790);
    QCOMPARE(error("select count(*) from (select salary from staff intersect select upper(name) from staff)"), 1790);
    QCOMPARE(rows("select name from staff where dept = 'B' union select dept from staff union select null from dual "
                  "order by 1"),
             QStringList({"A", "B", "CAT", "<null>"}));
    QCOMPARE(rows("select salary * 2 from staff where dept = 'B' union select count(*) from staff"),
             QStringList({"3", "400"}));
  }

  void orderByPositionsNameSelectItems() {
    QString text;
    QCOMPARE(error("select name from staff order by 2", &text), 1785);
    QCOMPARE(text, QString("ORA-01785: ORDER BY item must be the number of a SELECT-list expression"));
    QCOMPARE(error("select name from staff union select dept from staff order by 2"), 1785);
    QCOMPARE(error("select name from staff order by 0"), 1785);
    QCOMPARE(rows("select name, salary from staff order by 2 desc"), QStringList({"BOB|300", "CAT|200", "ANN|100"}));
  }
};

QTEST_GUILESS_MAIN(TestQueryErrors)
#include "test_queryerrors.moc"
