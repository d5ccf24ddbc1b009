#include "ConsoleProcess.h"

#include <QDir>
#include <QTest>

using Result = ConsoleProcess::Result;

// The SQL*Plus commands a DBA types out of habit, run by the built dbsweep-sql against a fresh
// embedded instance, with SQL*Plus's own output to compare.
class TestSqlplusHabits final : public QObject {
  Q_OBJECT

  Result sql(const QByteArray& input, const QStringList& more = {}) const {
    return m_console.run(QStringList{m_logon} + more, input);
  }

  ConsoleProcess m_console;
  QString m_logon;

private Q_SLOTS:
  void initTestCase() {
    m_logon = m_console.createInstance(QStringLiteral("inst"));
    QVERIFY(!m_logon.isEmpty());
    const Result made = sql("create table emp (empno number(4) not null, ename varchar2(10 char), sal number(7,2),"
                            " hired date, constraint emp_pk primary key (empno));\n"
                            "insert into emp values (7369, 'SMITH', 800, null);\n"
                            "insert into emp values (7499, 'ALLEN', 1600.5, null);\n");
    QVERIFY2(made.status == 0, qPrintable(made.err));
  }

  void describeShowAndSettings() {
    const Result run = sql("desc emp\n"
                           "describe nosuch;\n"
                           "show user\n"
                           "set feedback off heading off\n"
                           "select ename from emp where empno = 7369;\n"
                           "set pagesize -1\n"
                           "set trimspool on bogus 1\n");
    QCOMPARE(run.out, QString(" Name                                      Null?    Type\n"
                              " ----------------------------------------- -------- ----------------------------\n"
                              " EMPNO                                     NOT NULL NUMBER(4)\n"
                              " ENAME                                              VARCHAR2(10 CHAR)\n"
                              " SAL                                                NUMBER(7,2)\n"
                              " HIRED                                              DATE\n"
                              "USER is \"SYSTEM\"\n"
                              "\nSMITH\n"));
    QCOMPARE(run.err, QString("ERROR:\nORA-04043: object nosuch does not exist\n"
                              "SP2-0267: pagesize option -1 out of range (0 through 50000)\n"
                              "SP2-0158: unknown SET option \"bogus\"\n"));
    // SQL*Plus command errors are no SQL errors: the run goes on and ends well.
    QCOMPARE(run.status, 0);
  }

  // DESCRIBE follows synonyms to their table: a private one missing its object goes on to the
  // public synonym of that name.
  void describeThroughSynonyms() {
    const Result run = sql("set feedback off\n"
                           "create public synonym pemp for emp;\n"
                           "create synonym e2 for pemp;\n"
                           "desc e2\n"
                           "desc sal\n");
    QVERIFY(run.out.endsWith(" SAL                                                NUMBER(7,2)\n"
                             " HIRED                                              DATE\n"));
    QCOMPARE(run.out.count(QStringLiteral("EMPNO ")), 1);
    QCOMPARE(run.err, QString("ERROR:\nORA-04043: object sal does not exist\n"));
  }

  void substitutionVariables() {
    const QString script = m_console.script("vars.sql", "define tab = emp\n"
                                                        "select ename\n  from &tab where empno = &1;\n"
                                                        "select '&&who.s' as w from dual;\n"
                                                        "prompt &who again, &nothing.\n"
                                                        "define who\n"
                                                        "undefine who\n"
                                                        "set verify off\n"
                                                        "select '&who' as w from dual;\n"
                                                        "set define off\n"
                                                        "prompt R&D\n"
                                                        "define tab\n");
    const Result run = m_console.run({"--continue", m_logon, script, "7499"}, "SCOTT\n\nKING\n");
    QCOMPARE(run.out, QString("old   2:   from &tab where empno = &1\n"
                              "new   2:   from emp where empno = 7499\n"
                              "\nENAME\n-----\nALLEN\n\n1 row selected.\n"
                              "old   1: select '&&who.s' as w from dual\n"
                              "new   1: select 'SCOTTs' as w from dual\n"
                              "\nW\n------\nSCOTTs\n\n1 row selected.\n"
                              "SCOTT again,\n"
                              "DEFINE WHO             = \"SCOTT\" (CHAR)\n"
                              "\nW\n----\nKING\n\n1 row selected.\n"
                              "R&D\n"
                              "DEFINE TAB             = \"emp\" (CHAR)\n"));
    QCOMPARE(run.status, 0);
  }

  void spoolEchoAndNestedScripts() {
    QVERIFY(QDir(m_console.dir.path()).mkpath("lib"));
    const QString outer = m_console.script("lib/outer.sql", "set echo on\n"
                                                            "spool run\n"
                                                            "@@inner\n"
                                                            "spool off\n"
                                                            "prompt not spooled\n");
    QVERIFY(!m_console.script("lib/inner.sql", "prompt inner\nselect count(*) as n\n  from emp;\n").isEmpty());
    const Result run = m_console.run({m_logon, outer});
    QCOMPARE(run.err, QString());
    const QString echoed("SQL> @@inner\nSQL> prompt inner\ninner\nSQL> select count(*) as n\n  2    from emp;\n"
                         "\nN\n-\n2\n\n1 row selected.\nSQL> spool off\n");
    QCOMPARE(run.out, "SQL> spool run\n" + echoed + "SQL> prompt not spooled\nnot spooled\n");
    QFile spooled(m_console.dir.filePath("run.lst"));
    QVERIFY(spooled.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(spooled.readAll()), echoed);

    const Result again = sql("spool run.lst append\nset termout off\nprompt more\nspool\nspool off\nspool off\n");
    QCOMPARE(again.out, QString());
    spooled.seek(0);
    QCOMPARE(QString::fromUtf8(spooled.readAll()), echoed + "more\ncurrently spooling to run.lst\n");
    QCOMPARE(m_console.run({m_logon, "@missing"}).err, QString("SP2-0310: unable to open file \"missing\"\n"));
  }

  void exitCodesAndConnections() {
    QCOMPARE(sql("exit 3\n").status, 3);
    // WHENEVER SQLERROR EXIT commits what went before unless told ROLLBACK, as SQL*Plus does.
    const Result stopped = sql("whenever sqlerror exit sql.sqlcode\n"
                               "insert into emp (empno) values (1);\n"
                               "select * from nosuch;\n"
                               "insert into emp (empno) values (2);\n");
    QCOMPARE(stopped.status, 942 % 256);
    QCOMPARE(sql("whenever sqlerror exit failure rollback\ninsert into emp (empno) values (3);\nbad;\n").status, 1);
    QCOMPARE(sql("insert into emp (empno) values (4);\nexit rollback\n").status, 0);

    const QString host = m_logon.mid(m_logon.indexOf('@'));
    const Result session = m_console.run({"/nolog"}, "show user\n"
                                                     "select count(*) from emp;\n"
                                                     "connect system" +
                                                         host.toUtf8() +
                                                         "\nx\n"
                                                         "show user\n"
                                                         "select empno from emp where empno < 7000;\n"
                                                         "disconnect\n"
                                                         "connect nobody/none\n");
    QCOMPARE(session.out, QString("USER is \"\"\nConnected.\nUSER is \"SYSTEM\"\n"
                                  "\nEMPNO\n-----\n    1\n\n1 row selected.\n"
                                  "Disconnected from 19.0.0.0.0\n"));
    QCOMPARE(session.err, QString("SP2-0640: Not connected\n"
                                  "ERROR:\nORA-01017: invalid username/password; logon denied\n\n"
                                  "Warning: You are no longer connected to ORACLE.\n"));
  }
};

QTEST_GUILESS_MAIN(TestSqlplusHabits)
#include "test_sqlplushabits.moc"
