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
};

QTEST_GUILESS_MAIN(TestMerge)
#include "test_merge.moc"
