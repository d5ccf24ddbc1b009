#include "db/script/ScriptReader.h"

#include <QTest>

namespace {

using Kind = ScriptItem::Kind;

QList<ScriptItem> read(const char* script) { return ScriptReader::read(QString::fromUtf8(script)); }

QString sqlOf(const ScriptItem& item) { return item.text.simplified(); }

} // namespace

class TestScriptReader final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void semicolonEndsAStatementOnlyAtTheEndOfALine() {
    const auto items = read("select 1\n"
                            "  from dual;\n"
                            "insert into t values ('a;b', 'it''s;\n"
                            "still; text');\n"
                            "select ';' from dual; -- said; twice\n"
                            "update t set a = 1 /* ; */ where b = \"x;\";\n"
                            "select 1 from dual; select 2 from dual;\n"
                            "insert into t values (q'[it's;\n"
                            "]');\n"
                            "select /*+ full(t) */ * from t;\n");
    QCOMPARE(items.size(), 7);
    QCOMPARE(sqlOf(items[0]), QString("select 1 from dual"));
    QCOMPARE(items[0].line, 1);
    QCOMPARE(items[1].text, QString("insert into t values ('a;b', 'it''s;\nstill; text')"));
    QCOMPARE(items[1].line, 3);
    QCOMPARE(sqlOf(items[2]), QString("select ';' from dual"));
    QCOMPARE(sqlOf(items[3]), QString("update t set a = 1 where b = \"x;\""));
    QCOMPARE(items[3].line, 6);
    // SQL*Plus hands a mid-line ';' to the server, which refuses it.
    QCOMPARE(sqlOf(items[4]), QString("select 1 from dual; select 2 from dual"));
    QCOMPARE(items[5].text, QString("insert into t values (q'[it's;\n]')"));
    QCOMPARE(items[5].line, 8);
    QCOMPARE(items[6].text, QString("select /*+ full(t) */ * from t"));
    for (const ScriptItem& item : items)
      QCOMPARE(item.kind, Kind::Statement);
  }

  void slashLineRunsTheBufferOrRunsItAgain() {
    const auto items = read("select 1\nfrom dual\n/\n"
                            "insert into t values (1);\n"
                            "  /  \n"
                            "select 'a\n/\n' from dual\n/\n"
                            "delete from t\n.\n"
                            "prompt kept\n"
                            "/\n");
    QCOMPARE(items.size(), 6);
    QCOMPARE(sqlOf(items[0]), QString("select 1 from dual"));
    QCOMPARE(sqlOf(items[1]), QString("insert into t values (1)"));
    QCOMPARE(items[2].text, items[1].text);
    QCOMPARE(items[2].line, 4);
    QCOMPARE(items[3].text, QString("select 'a\n/\n' from dual"));
    QCOMPARE(items[4].kind, Kind::Prompt);
    // '.' ends typing without running; the later '/' runs it.
    QCOMPARE(sqlOf(items[5]), QString("delete from t"));
    QCOMPARE(items[5].line, 10);
  }

  void sqlplusCommandsBetweenStatements() {
    const auto items = read("\xEF\xBB\xBFREM setup\r\n"
                            "remark more\n"
                            "Rem\n"
                            "-- a comment line\n"
                            "/* a comment\n"
                            "   over ; lines */\n"
                            "\n"
                            "set feedback off\n"
                            "SPOOL out.txt\n"
                            "PROMPT  Loading, please wait;\n"
                            "pro\n"
                            "whenever sqlerror continue\n"
                            "WHENEVER SQLERROR EXIT FAILURE\n"
                            "update t\n"
                            "set a = 1;\n"
                            "set transaction read only;\n"
                            "exit 3 rollback\n"
                            "select 1 from dual;\n");
    QCOMPARE(items.size(), 7);
    QCOMPARE(items[0].kind, Kind::Prompt);
    QCOMPARE(items[0].text, QString("Loading, please wait;"));
    QCOMPARE(items[0].line, 10);
    QCOMPARE(items[1].kind, Kind::Prompt);
    QCOMPARE(items[1].text, QString());
    QCOMPARE(items[2].kind, Kind::ErrorMode);
    QVERIFY(items[2].continueOnError);
    QCOMPARE(items[3].kind, Kind::ErrorMode);
    QVERIFY(!items[3].continueOnError);
    QCOMPARE(items[3].exitCode, std::optional<int>(1));
    // SET inside a statement, and SET TRANSACTION, are SQL.
    QCOMPARE(sqlOf(items[4]), QString("update t set a = 1"));
    QCOMPARE(items[4].line, 14);
    QCOMPARE(sqlOf(items[5]), QString("set transaction read only"));
    QCOMPARE(items[6].kind, Kind::Exit);
    QCOMPARE(items[6].exitCode, std::optional<int>(3));
    QVERIFY(!items[6].commit);

    const auto plainExit = read("quit;\n");
    QCOMPARE(plainExit.size(), 1);
    QCOMPARE(plainExit[0].exitCode, std::nullopt);
    QVERIFY(plainExit[0].commit);
  }

  void blocksAndStoredUnitsGoWhole() {
    // A block goes to the server as one statement, whatever its ';' inside say, up to its '/'.
    const auto items = read("prompt go\n"
                            "begin\n"
                            "  insert into t values (1);\n"
                            "  -- not a statement;\n"
                            "  update t set b = ';'\n"
                            "   where a = 1;\n"
                            "end;\n"
                            "/\n"
                            "DECLARE\n  n number;\nBEGIN\n  n := 1;\nEND main;\n/\n"
                            "begin\n  null;\nend;\n");
    QCOMPARE(items.size(), 4);
    QCOMPARE(items[1].kind, Kind::Statement);
    QCOMPARE(items[1].line, 2);
    QCOMPARE(sqlOf(items[1]), QString("begin insert into t values (1); update t set b = ';' where a = 1; end;"));
    QCOMPARE(sqlOf(items[2]), QString("DECLARE n number; BEGIN n := 1; END main;"));
    QCOMPARE(items[2].line, 9);
    QCOMPARE(items[3].kind, Kind::Unterminated);

    // A stored unit needs its trailing ';' and goes to the server whole.
    const auto unit = read("create or replace procedure p as\nbegin\n  null;\nend;\n/\n");
    QCOMPARE(unit.size(), 1);
    QCOMPARE(unit[0].kind, Kind::Statement);
    QVERIFY(unit[0].text.endsWith("end;"));
    // Its first words may come over several lines; the next statement starts afresh.
    const auto split = read("create or\n\n  replace -- c\nprocedure p as\nbegin\n  null;\nend;\n/\n"
                            "create table t (n number);\nselect 1 from dual;\n");
    QCOMPARE(split.size(), 3);
    QVERIFY(split[0].text.endsWith("end;"));
    QCOMPARE(split[1].text, QString("create table t (n number)"));
    QCOMPARE(split[2].line, 10);
  }
};

QTEST_APPLESS_MAIN(TestScriptReader)
#include "test_scriptreader.moc"
