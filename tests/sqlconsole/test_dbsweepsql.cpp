#include "ConsoleProcess.h"
#include "db/local/LocalEngine.h"
#include "sqlconsole/ConsoleOptions.h"

#include <QFileInfo>
#include <QTest>

#include <dlfcn.h>

using Result = ConsoleProcess::Result;

// Runs the built dbsweep-sql against a fresh embedded instance.
class TestDbsweepSql final : public QObject {
  Q_OBJECT

  Result sql(const QStringList& arguments, const QByteArray& input = {}) const {
    return m_console.run(arguments, input);
  }
  QString script(const QString& name, const QByteArray& text) const { return m_console.script(name, text); }

  QString count(const QString& where) const {
    return sql({QStringLiteral("--csv"), m_logon}, "select count(*) as n from items where " + where.toUtf8() + ";\n")
        .out;
  }

  ConsoleProcess m_console;
  QString m_logon;

private Q_SLOTS:
  void initTestCase() {
    QVERIFY(m_console.dir.isValid());
    m_console.env.insert(QStringLiteral("DBSWEEP_DATA_DIR"), m_console.dir.filePath(QStringLiteral("data")));
    const QString host = QStringLiteral("local:") + m_console.dir.filePath(QStringLiteral("inst"));
    const Result created = sql({"--create-instance", host, "--system-password", "x"});
    QVERIFY2(created.status == 0, qPrintable(created.err));
    QVERIFY(LocalEngine::instanceExists(m_console.dir.filePath(QStringLiteral("inst"))));
    const Result again = sql({"--create-instance", host, "--system-password", "x"});
    QCOMPARE(again.status, 1);
    QVERIFY2(again.err.startsWith("ORA-"), qPrintable(again.err));
    m_logon = QStringLiteral("SYSTEM/x@") + host;
  }

  void commandLineMistakesAreUsageErrors() {
    const ConsoleOptions run = ConsoleOptions::parse({"--csv", "scott@local:/srv/db/inst", "@load.sql"});
    QVERIFY(run.error.isEmpty());
    QCOMPARE(run.user, QString("scott"));
    QCOMPARE(run.password, std::nullopt);
    QCOMPARE(run.host, QString("local:/srv/db/inst"));
    QCOMPARE(run.script, QString("load.sql"));
    // As in SQL*Plus, the words after the script are its arguments.
    QCOMPARE(ConsoleOptions::parse({"u/p@local:x", "@a.sql", "@b.sql", "7"}).scriptArguments,
             QStringList({"@b.sql", "7"}));
    QVERIFY(ConsoleOptions::parse({"/NOLOG"}).noLog);
    QCOMPARE(ConsoleOptions::parse({"u/p@w@local:x"}).password, std::optional<QString>("p@w"));
    for (const QStringList& bad : QList<QStringList>{{},
                                                     {"scott/tiger"},
                                                     {"--fast", "u/p@local:x"},
                                                     {"u/p@local:x", "extra"},
                                                     {"u/p@local:x", "@"},
                                                     {"--create-instance"},
                                                     {"--create-instance", "demo"},
                                                     {"--system-password", "x", "u/p@local:x"}})
      QVERIFY2(!ConsoleOptions::parse(bad).error.isEmpty(), qPrintable(bad.join(' ')));

    const Result usage = sql({"--bogus"});
    QCOMPARE(usage.status, 2);
    QVERIFY(usage.err.contains("--bogus"));
    QVERIFY(usage.out.isEmpty());
    QCOMPARE(sql({"--help"}).status, 0);
  }

  void logonAndInstanceCreationReadStandardInput() {
    const QString host = QStringLiteral("local:") + m_console.dir.filePath(QStringLiteral("piped"));
    QCOMPARE(sql({"--create-instance", host}, "s3cret\n").status, 0);
    const Result query = sql({"--csv", "system@" + host}, "s3cret\nselect 1 as one from dual;\n");
    QCOMPARE(query.out, QString("ONE\n1\n"));
    QCOMPARE(query.status, 0);

    const Result wrong = sql({"system/nope@" + host}, "select 1 from dual;\n");
    QCOMPARE(wrong.status, 1);
    QVERIFY2(wrong.err.contains("ORA-01017"), qPrintable(wrong.err));
    const Result missing = sql({"system/x@local:" + m_console.dir.filePath("none")});
    QCOMPARE(missing.status, 1);
    QVERIFY2(missing.err.contains("ORA-12154"), qPrintable(missing.err));
  }

  void otherHostsGoThroughTheOracleClient() {
    if (void* installed = dlopen("libclntsh.so", RTLD_LAZY)) {
      dlclose(installed);
      QSKIP("an Oracle client is installed on this machine");
    }
    QTemporaryDir empty;
    QProcessEnvironment env = m_console.env;
    env.remove(QStringLiteral("ORACLE_HOME"));
    env.remove(QStringLiteral("LD_LIBRARY_PATH"));
    env.insert(QStringLiteral("DBSWEEP_ORACLE_CLIENT"), empty.path());
    std::swap(env, m_console.env);
    const Result none = sql({"scott/tiger@ORCL"}, "select 1 from dual;\n");
    QCOMPARE(none.status, 1);
    QVERIFY2(none.err.contains("No Oracle client library (libclntsh.so) could be loaded."), qPrintable(none.err));
    QVERIFY(none.err.contains(empty.path() + " (DBSWEEP_ORACLE_CLIENT)"));

    // The test double of the client logs on, then knows no statement but its own.
    m_console.env.insert(QStringLiteral("DBSWEEP_ORACLE_CLIENT"), QFileInfo(QStringLiteral(OCI_DOUBLE)).absolutePath());
    const Result reached = sql({"scott/tiger@ORCL"}, "select 1 from dual;\n");
    QVERIFY2(reached.err.contains("ORA-00900: invalid SQL statement"), qPrintable(reached.err));
    QVERIFY2(sql({"scott/lion@ORCL"}).err.contains("ORA-01017"), "a wrong password is Oracle's to refuse");
    std::swap(env, m_console.env);
  }

  void runsScriptsFromStandardInputAndFiles() {
    const Result made = sql({m_logon}, "rem the table the other cases use\n"
                                       "create table items (id number(5) primary key, name varchar2(20));\n"
                                       "insert into items values (1, 'a,b');\n"
                                       "insert into items values (2, 'say \"hi\"');\n"
                                       "insert into items\n  values (3, null)\n/\n"
                                       "prompt loaded\n"
                                       "commit;\n");
    QVERIFY2(made.status == 0, qPrintable(made.err));
    QCOMPARE(made.out, QString("\nTable created.\n\n1 row created.\n\n1 row created.\n\n1 row created.\n"
                               "loaded\n\nCommit complete.\n"));

    const QString file = script("query.sql", "select id, name\n  from items -- all of them\n order by id;\n");
    const Result csv = sql({"--csv", m_logon, file});
    QVERIFY2(csv.status == 0, qPrintable(csv.err));
    QCOMPARE(csv.out, QString("ID,NAME\n1,\"a,b\"\n2,\"say \"\"hi\"\"\"\n3,\n"));
    const Result text = sql({m_logon, file});
    QCOMPARE(text.out, QString("\nID NAME\n-- --------\n 1 a,b\n 2 say \"hi\"\n 3\n\n3 rows selected.\n"));
  }

  void anErrorStopsTheRunAndRollsBackItsWork() {
    const QString file = script("broken.sql", "insert into items values (10, 'x');\n"
                                              "\n"
                                              "select * from missing_table;\n"
                                              "insert into items values (11, 'y');\n");
    const Result stopped = sql({m_logon, file});
    QVERIFY(stopped.status != 0);
    QVERIFY2(stopped.err.startsWith("line 3: ORA-00942: table or view does not exist"), qPrintable(stopped.err));
    QCOMPARE(count("id >= 10"), QString("N\n0\n"));

    const Result continued = sql({"--continue", "--csv", m_logon, file});
    QVERIFY(continued.status != 0);
    QVERIFY2(continued.err.startsWith("line 3: ORA-00942"), qPrintable(continued.err));
    QCOMPARE(count("id >= 10"), QString("N\n2\n"));
  }

  void transactionsFollowTheScript() {
    const Result run = sql({m_logon}, "insert into items values (20, 'gone');\n"
                                      "rollback;\n"
                                      "begin\n"
                                      "  insert into items values (21, 'b1');\n"
                                      "  update items set name = 'b2' where id = 21;\n"
                                      "end;\n"
                                      "/\n");
    QVERIFY2(run.status == 0, qPrintable(run.err));
    QVERIFY(run.out.endsWith("Rollback complete.\n\nPL/SQL procedure successfully completed.\n"));
    QCOMPARE(count("id between 20 and 21 and name = 'b2'"), QString("N\n1\n"));

    QCOMPARE(sql({m_logon}, "insert into items values (30, 'x');\nexit rollback\n").status, 0);
    const Result refused = sql({m_logon}, "insert into items values (31, 'x');\nbegin\n  x := 1;\nend;\n/\n");
    QCOMPARE(refused.status, 1);
    QVERIFY2(refused.err.startsWith("line 2: ORA-06550: line 2, column 3"), qPrintable(refused.err));
    QCOMPARE(count("id >= 30"), QString("N\n0\n"));
  }

  void serverOutputShowsWhatBlocksWrite() {
    const char* block = "begin\n  dbms_output.put('a');\n  dbms_output.put_line('b');\n"
                        "  dbms_output.put_line(1/4);\n  dbms_output.put('unfinished');\nend;\n/\n";
    const Result off = sql({m_logon}, block);
    QCOMPARE(off.out, QString("\nPL/SQL procedure successfully completed.\n"));
    const Result on = sql({m_logon}, QByteArray("set serveroutput on size 1000000 format wrapped\n") + block);
    QVERIFY2(on.status == 0, qPrintable(on.err));
    QCOMPARE(on.out, QString("ab\n.25\n\nPL/SQL procedure successfully completed.\n"));
  }
};

QTEST_GUILESS_MAIN(TestDbsweepSql)
#include "test_dbsweepsql.moc"
