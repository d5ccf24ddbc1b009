#include "EngineFixture.h"

class TestMerge final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }

private Q_SLOTS:
  void init() {
    openSales();
    exec("create table mt (id number primary key, v number, note varchar2(10))");
    exec("create table ms (id number, v number)");
    exec("insert into mt values (1, 10, 'a')");
    exec("insert into mt values (2, 20, 'b')");
    exec("insert into mt values (3, 30, 'c')");
    for (const char* row : {"1, 100", "2, 5", "4, 400", "5, 1"})
      exec(QStringLiteral("insert into ms values (%1)").arg(row));
  }
  void cleanup() { closeSales(); }

  void mergeUpdatesDeletesAndInserts() {
    // DELETE WHERE sees the updated values and removes only rows the MERGE updated; the count is
    // of rows updated or inserted.
    QCOMPARE(m_db->ExecuteSQL("merge into mt t using ms s on (t.id = s.id)\n"
                              "when matched then update set t.v = t.v + s.v, note = 'upd' delete where t.v < 30\n"
                              "when not matched then insert (id, v, note) values (s.id, s.v, 'new') where s.v > 10"),
             qint64(3));
    QCOMPARE(rows("select * from mt order by id"), QStringList({"1|110|upd", "3|30|c", "4|400|new"}));
    QCOMPARE(m_db->ExecuteSQL("merge into mt using (select 9 id from dual) src on (mt.id = src.id)\n"
                              "when not matched then insert values (src.id, 0, 'x')"),
             qint64(1));
    QCOMPARE(rows("select note from mt where id = 9"), QStringList({"x"}));
    // In a block, with variables.
    exec("declare n number := 3; begin merge into mt t using (select n id from dual) s on (t.id = s.id) "
         "when matched then update set v = n * 2; end;");
    QCOMPARE(rows("select v from mt where id = 3"), QStringList({"6"}));
  }

  void mergeRefusesWhatOracleRefuses() {
    exec("insert into ms values (1, 7)");
    QString text;
    QCOMPARE(errorOf([&] { exec("merge into mt t using ms s on (t.id = s.id) when matched then update set v = s.v"); },
                     &text),
             30926);
    QCOMPARE(text, QString("ORA-30926: unable to get a stable set of rows in the source tables"));
    QCOMPARE(errorOf([&] { exec("merge into mt t using ms s on (t.id = s.id) when matched then update set id = 1"); }),
             38104);
    // A failing MERGE leaves nothing of itself behind.
    QCOMPARE(errorOf([&] {
               exec("merge into mt t using (select 7 id, 1 v from dual union all select 1, 2 from dual) s "
                    "on (t.id = s.id) when not matched then insert values (s.id, s.v, 'x') "
                    "when matched then update set note = 'far too long'");
             }),
             12899);
    QCOMPARE(rows("select count(*) from mt"), QStringList({"3"}));
  }

  void multiTableInserts() {
    exec("create table ib (id number, v varchar2(10))");
    // The subquery is read before any row goes in: mt's new rows are not read again.
    QCOMPARE(m_db->ExecuteSQL("insert all into mt (id, v) values (id + 10, v) into ib (id) values (id) "
                              "select id, v from mt"),
             qint64(6));
    QCOMPARE(rows("select count(*) from mt"), QStringList({"6"}));
    exec("delete from ib");
    QCOMPARE(m_db->ExecuteSQL("insert first when id > 10 then into ib values (id, 'big') "
                              "when id > 1 then into ib values (id, 'mid') else into ib values (id, 'low') "
                              "select id from mt where id in (1, 2, 11)"),
             qint64(3));
    QCOMPARE(rows("select id || v from ib order by id"), QStringList({"1low", "2mid", "11big"}));
    exec("delete from ib");
    QCOMPARE(m_db->ExecuteSQL("insert all when id > 10 then into ib values (id, 'a') "
                              "when id > 1 then into ib values (id, 'b') else into ib values (id, 'c') "
                              "select id from mt where id in (1, 2, 11)"),
             qint64(4));
    QCOMPARE(rows("select id || v from ib order by id, v"), QStringList({"1c", "2b", "11a", "11b"}));
    // One failing INTO undoes them all.
    QCOMPARE(errorOf([&] { exec("insert all into ib values (id, 'x') into mt (id) values (1) select id from ms"); }),
             1);
    QCOMPARE(rows("select count(*) from ib where v = 'x'"), QStringList({"0"}));
  }
};

QTEST_GUILESS_MAIN(TestMerge)
#include "test_merge.moc"
