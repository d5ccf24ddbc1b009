#include "EngineFixture.h"

class TestPlsql final : public QObject, SalesSession {
  Q_OBJECT

  void exec(const QString& sql) { m_db->ExecuteSQL(sql); }
  int error(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { m_db->ExecuteSQL(sql); }, text);
  }
  // What a block writes with DBMS_OUTPUT.
  QStringList output(const QString& block) {
    m_db->connection().enableServerOutput(true);
    m_db->ExecuteSQL(block);
    return m_db->connection().takeServerOutput();
  }

private Q_SLOTS:
  void init() {
    openSales();
    exec("create table t (id number primary key, name varchar2(10), d date)");
    exec("insert into t values (1, 'one', date '2024-01-31')");
  }
  void cleanup() { closeSales(); }

  void variablesLoopsAndConditions() {
    QCOMPARE(output("declare\n"
                    "  n number(5,1) := 2.26;\n"
                    "  s varchar2(10) default 'ab';\n"
                    "  d date := date '2024-02-28';\n"
                    "  b boolean := n > 2;\n"
                    "  k constant pls_integer := 7.5;\n"
                    "  nm t.name%type := 'x';\n"
                    "  s2 s%type;\n"
                    "begin\n"
                    "  dbms_output.put_line(n || ' ' || s || ' ' || k || ' ' || nm || '[' || s2 || ']');\n"
                    "  if b and d + 1 = date '2024-02-29' then dbms_output.put_line('leap'); end if;\n"
                    "  if n > 5 then null; elsif n > 2 then dbms_output.put_line('elsif'); else null; end if;\n"
                    "  if not b then null; else dbms_output.put_line('else'); end if;\n"
                    "  for i in reverse 1..3 loop dbms_output.put(i); end loop;\n"
                    "  dbms_output.new_line;\n"
                    "  for i in 3..1 loop dbms_output.put_line('never'); end loop;\n"
                    "  while length(s) < 5 loop s := s || 'c'; end loop;\n"
                    "  dbms_output.put_line(s);\n"
                    "  loop n := n + 1; exit when n > 4; end loop;\n"
                    "  dbms_output.put_line(n);\n"
                    "  begin declare n number := 1; begin dbms_output.put_line('inner ' || n); end; end;\n"
                    "end;"),
             QStringList({"2.3 ab 8 x[]", "leap", "elsif", "else", "321", "abccc", "4.3", "inner 1"}));
    // Without DBMS_OUTPUT.ENABLE (SET SERVEROUTPUT ON) nothing is kept.
    m_db->connection().enableServerOutput(false);
    exec("begin dbms_output.put_line('lost'); end;");
    QCOMPARE(m_db->connection().takeServerOutput(), QStringList());
  }

  void sqlInsideBlocks() {
    QCOMPARE(output("declare\n"
                    "  id number := 99;\n"
                    "  nm varchar2(10) := 'O''Brien';\n"
                    "  c number;\n"
                    "  cursor late is select id, name from t where id > 2 order by id;\n"
                    "begin\n"
                    "  for i in 2..4 loop insert into t (id, name) values (i, nm || i); end loop;\n"
                    "  update t set name = upper(name) where id = id;\n" // the column, as in Oracle
                    "  dbms_output.put_line(sql%rowcount);\n"
                    "  select count(*) into c from t where name like 'O''B%';\n"
                    "  dbms_output.put_line(c);\n"
                    "  for r in late loop dbms_output.put_line(r.id || r.name); end loop;\n"
                    "  for r in (select d from t where id = 1) loop dbms_output.put_line(r.d + 1); end loop;\n"
                    "  execute immediate 'create table t2 (x number)';\n"
                    "  execute immediate 'insert into t2 values (:a)' using id;\n"
                    "  execute immediate 'select x from t2 where x = :1' into c using 99;\n"
                    "  dbms_output.put_line(c);\n"
                    "  delete from t where id > 100;\n"
                    "  if sql%notfound then dbms_output.put_line('none'); end if;\n"
                    "end;"),
             QStringList({"4", "3", "3O'BRIEN3", "4O'BRIEN4", "2024/02/01", "99", "none"}));
    QCOMPARE(rows("select x from t2"), QStringList({"99"}));
  }

  void handlersAndErrors() {
    QCOMPARE(output("declare\n"
                    "  n number;\n"
                    "  mine exception;\n"
                    "begin\n"
                    "  begin select id into n from t where id = 0;\n"
                    "  exception when no_data_found then dbms_output.put_line(sqlcode || ' ' || sqlerrm); end;\n"
                    "  insert into t (id) values (2);\n"
                    "  begin select id into n from t;\n"
                    "  exception when too_many_rows then dbms_output.put_line(sqlerrm); end;\n"
                    "  begin n := 1 / 0;\n"
                    "  exception when value_error or zero_divide then dbms_output.put_line(sqlcode); end;\n"
                    "  begin insert into t (id) values (1);\n"
                    "  exception when dup_val_on_index then dbms_output.put_line(sqlcode); end;\n"
                    "  begin raise_application_error(-20001, 'bad ' || n);\n"
                    "  exception when others then dbms_output.put_line(sqlcode || ' ' || sqlerrm); end;\n"
                    "  begin raise mine;\n"
                    "  exception when mine then dbms_output.put_line(sqlcode || ' ' || sqlerrm); end;\n"
                    "  dbms_output.put_line(sqlcode || ' ' || sqlerrm);\n"
                    "end;"),
             QStringList({"100 ORA-01403: no data found",
                          "ORA-01422: exact fetch returns more than requested number of rows", "-1476", "-1",
                          "-20001 ORA-20001: bad ", "1 User-Defined Exception",
                          "0 ORA-0000: normal, successful completion"}));
    QString text;
    QCOMPARE(error("declare v varchar2(3);\nbegin\n  v := 'abcd';\nend;", &text), 6502);
    QCOMPARE(text, QString("ORA-06502: PL/SQL: numeric or value error: character string buffer too small\n"
                           "ORA-06512: at line 3"));
    QCOMPARE(error("declare e exception; begin raise e; end;", &text), 6510);
    QCOMPARE(text, QString("ORA-06510: PL/SQL: unhandled user-defined exception\nORA-06512: at line 1"));
    QCOMPARE(error("begin raise_application_error(-1, 'x'); end;", &text), 21000);
    QCOMPARE(error("declare n number; begin n := 'abc'; end;", &text), 6502);
    QCOMPARE(text, QString("ORA-06502: PL/SQL: numeric or value error: character to number conversion error\n"
                           "ORA-06512: at line 1"));
    // Compile errors stop the block before any of it runs, and no handler takes them.
    QCOMPARE(error("begin\n  insert into t (id) values (7);\n  x := 1;\nexception when others then null;\nend;", &text),
             6550);
    QCOMPARE(text, QString("ORA-06550: line 3, column 3:\nPLS-00201: identifier 'X' must be declared"));
    QCOMPARE(error("declare c constant number := 1; begin c := 2; end;", &text), 6550);
    QVERIFY2(text.contains("PLS-00363: expression 'C' cannot be used as an assignment target"), qPrintable(text));
    QCOMPARE(error("begin select id from t; end;", &text), 6550);
    QVERIFY(text.contains("PLS-00428"));
    QCOMPARE(error("begin create table x (n number); end;", &text), 6550);
    QVERIFY(text.endsWith("PLS-00103: Encountered the symbol \"CREATE\""));
    QCOMPARE(error("begin null; end", &text), 6550);
    QVERIFY(text.endsWith("\"end-of-file\""));
    QCOMPARE(rows("select count(*) from t where id = 7"), QStringList({"0"}));
    QCOMPARE(error("create or replace procedure p as begin null; end;"), 3001);
    QCOMPARE(error("create trigger trg before insert on t for each row begin null; end;"), 3001);
    QCOMPARE(error("alter trigger trg disable", &text), 4080);
    QCOMPARE(text, QString("ORA-04080: trigger 'TRG' does not exist"));
    QCOMPARE(error("drop procedure p", &text), 4043);
    QCOMPARE(text, QString("ORA-04043: object P does not exist"));
    QCOMPARE(error("begin open c; end;", &text), 6550);
    QVERIFY(text.endsWith("PLS-00201: identifier 'C' must be declared"));
    QCOMPARE(error("begin\n  exit;\nend;", &text), 6550);
    QCOMPARE(text, QString("ORA-06550: line 2, column 3:\nPLS-00376: illegal EXIT/CONTINUE statement; it must "
                           "appear inside a loop"));
  }

  void explicitCursorsAndRecords() {
    exec("insert into t (id, name) values (2, 'two')");
    QCOMPARE(output("declare\n"
                    "  cursor c is select id, name from t order by id;\n"
                    "  r c%rowtype;\n"
                    "  whole t%rowtype;\n"
                    "begin\n"
                    "  if not c%isopen then open c; end if;\n"
                    "  loop\n"
                    "    fetch c into r;\n"
                    "    exit when c%notfound;\n"
                    "    dbms_output.put_line(c%rowcount || r.id || r.name);\n"
                    "  end loop;\n"
                    "  dbms_output.put_line(c%rowcount);\n"
                    "  close c;\n"
                    "  select * into whole from t where id = 1;\n"
                    "  whole.name := upper(whole.name);\n"
                    "  update t set name = whole.name where id = whole.id;\n"
                    "end;"),
             QStringList({"11one", "22two", "2"}));
    QCOMPARE(rows("select name from t where id = 1"), QStringList({"ONE"}));
    QString text;
    QCOMPARE(error("declare cursor c is select id from t; begin open c; open c; end;", &text), 6511);
    QCOMPARE(text, QString("ORA-06511: PL/SQL: cursor already open\nORA-06512: at line 1"));
    QCOMPARE(error("declare cursor c is select id from t; n number; begin fetch c into n; end;"), 1001);
  }

  void errorsTravelOutwards() {
    QCOMPARE(output("declare\n"
                    "  n number := 0;\n"
                    "  k number;\n"
                    "  outer_e exception;\n"
                    "begin\n"
                    "  for i in 1..6 loop\n"
                    "    continue when mod(i, 2) = 0;\n"
                    "    begin\n"
                    "      k := 10 / (i - 5);\n"
                    "    exception when zero_divide then dbms_output.put_line('stop at ' || i); exit;\n"
                    "    end;\n"
                    "    n := n + i;\n"
                    "  end loop;\n"
                    "  dbms_output.put_line(n);\n"
                    "  while null loop n := 0; end loop;\n"
                    "  begin\n"
                    "    begin select id into k from t where id > 0 and id < 0;\n"
                    "    exception when too_many_rows then null; end;\n"
                    "  exception when no_data_found then dbms_output.put_line('outer ' || sql%rowcount);\n"
                    "  end;\n"
                    "  begin\n"
                    "    begin raise outer_e; exception when others then dbms_output.put_line(sqlcode); raise; end;\n"
                    "  exception when outer_e then dbms_output.put_line('again');\n"
                    "  end;\n"
                    "  insert into t (id) values (2);\n"
                    "  begin select id into k from t; exception when too_many_rows then\n"
                    "    dbms_output.put_line('rows ' || sql%rowcount); end;\n"
                    "end;"),
             QStringList({"stop at 5", "4", "outer 0", "1", "again", "rows 1"}));
    QString text;
    QCOMPARE(error("begin\n  <<outer>> null;\nend;"), 3001);
    QCOMPARE(error("declare cursor c (p number) is select id from t; begin null; end;"), 3001);
    QCOMPARE(error("begin dbms_stats.gather_table_stats(user, 'T'); end;"), 3001);
    QCOMPARE(error("begin no_such_procedure(1); end;", &text), 6550);
    QVERIFY(text.endsWith("PLS-00201: identifier 'NO_SUCH_PROCEDURE' must be declared"));
  }

  void anUnhandledErrorUndoesTheBlock() {
    m_db->connection().begin();
    exec("insert into t (id) values (10)");
    QString text;
    QCOMPARE(error("begin\n  insert into t (id) values (11);\n  raise_application_error(-20002, 'stop');\nend;", &text),
             20002);
    QCOMPARE(text, QString("ORA-20002: stop\nORA-06512: at line 3"));
    // The work pending before the block stays; the block's own is gone.
    QCOMPARE(rows("select id from t where id >= 10 order by id"), QStringList({"10"}));
    m_db->connection().rollback();
    // Outside a transaction a block commits as one statement; its COMMIT keeps what came before.
    QCOMPARE(error("begin insert into t (id) values (12); commit; insert into t (id) values (13);\n"
                   "  insert into t (id) values (12); end;"),
             1);
    QCOMPARE(rows("select id from t where id >= 10 order by id"), QStringList({"12"}));
    exec("begin insert into t (id) values (14); end;");
    m_db->connection().rollback();
    QCOMPARE(rows("select count(*) from t where id = 14"), QStringList({"1"}));
  }
};

QTEST_GUILESS_MAIN(TestPlsql)
#include "test_plsql.moc"
