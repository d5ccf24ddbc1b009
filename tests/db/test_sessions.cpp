#include "EngineFixture.h"

#include "FakeServices.h"
#include "ScriptedMessageBoxes.h"
#include "app/ConnectOracle.h"
#include "common/BDBSWEEP.h"
#include "db/OraSession.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>

#include <atomic>
#include <functional>
#include <thread>

class TestSessions final : public QObject {
  Q_OBJECT

  static QString childSession(OraDatabase& db) {
    const QStringList r = rowsOf(db, "select sid || ',' || serial# from v$session where program = 'engine_session'");
    return r.size() == 1 ? r[0] : QString();
  }

private Q_SLOTS:
  void transactionsAcrossTwoConnections() {
    EngineFixture fx;
    auto a = fx.sales();
    auto b = fx.sales();
    a->ExecuteSQL("create table t (id number primary key)");
    a->ExecuteSQL("insert into t values (1)"); // outside a transaction: commits at once
    QCOMPARE(rowsOf(*b, "select count(*) from t"), QStringList({"1"}));
    a->connection().begin();
    QCOMPARE(a->ExecuteSQL("insert into t values (2)"), qint64(1));
    QCOMPARE(rowsOf(*a, "select count(*) from t"), QStringList({"2"}));
    QCOMPARE(rowsOf(*b, "select count(*) from t"), QStringList({"1"}));
    // The other session waits for the pending change, then gives up.
    QString text;
    QCOMPARE(errorOf([&] { b->ExecuteSQL("insert into t values (3)"); }, &text), 54);
    QCOMPARE(text, QString("ORA-00054: resource busy and acquire with NOWAIT specified or timeout expired"));
    a->connection().commit();
    QCOMPARE(rowsOf(*b, "select count(*) from t"), QStringList({"2"}));
    QCOMPARE(b->ExecuteSQL("insert into t values (3)"), qint64(1));
    // Each connection is a row of V$SESSION; the asking one is ACTIVE.
    QCOMPARE(rowsOf(*a, "select count(*), count(distinct sid) from v$session where username = 'SALES'"),
             QStringList({"2|2"}));
    QCOMPARE(rowsOf(*a, "select count(*) from v$session where status = 'ACTIVE'"), QStringList({"1"}));
  }

  void killingASessionInAnotherProcess() {
    EngineFixture fx;
    auto sales = fx.sales();
    auto system = fx.open("SYSTEM", "manager");
    sales->ExecuteSQL("create table t (id number primary key)");
    QProcess child;
    child.start(ENGINE_SESSION, {fx.folder, "sales", "secret", "t", "1"});
    QVERIFY(child.waitForReadyRead(10000));
    QCOMPARE(child.readLine().trimmed(), QByteArray("READY"));
    const QString id = childSession(*system);
    QVERIFY(!id.isEmpty());
    QCOMPARE(rowsOf(*system, "select username, status from v$session where sid || ',' || serial# = '" + id + "'"),
             QStringList({"SALES|INACTIVE"}));

    QCOMPARE(errorOf([&] { sales->ExecuteSQL("alter system kill session '" + id + "'"); }), 1031);
    QCOMPARE(errorOf([&] { system->ExecuteSQL("alter system kill session '99999,1'"); }), 30);
    QCOMPARE(errorOf([&] { system->ExecuteSQL("alter system kill session 'x'"); }), 26);
    const QString own = rowsOf(*system, "select sid || ',' || serial# from v$session where status = 'ACTIVE'").value(0);
    QCOMPARE(errorOf([&] { system->ExecuteSQL("alter system kill session '" + own + "'"); }), 27);
    QCOMPARE(system->ExecuteSQL("alter system kill session '" + id + "' immediate"), qint64(0));
    QCOMPARE(errorOf([&] { system->ExecuteSQL("alter system kill session '" + id + "'"); }), 30);

    // The victim gives its pending insert back on its own, well within a few seconds.
    QElapsedTimer waited;
    waited.start();
    int error = 54;
    while (error == 54 && waited.elapsed() < 8000)
      error = errorOf([&] { sales->ExecuteSQL("insert into t values (1)"); });
    QCOMPARE(error, 0);
    QVERIFY2(waited.elapsed() < 5000, qPrintable(QString::number(waited.elapsed())));
    // Its next call fails.
    child.write("go\n");
    QVERIFY(child.waitForFinished(10000));
    QCOMPARE(child.readAll().trimmed(), QByteArray("ORA-00028: your session has been killed"));
    QCOMPARE(child.exitCode(), 1);
  }

  void aKilledSessionsNextCallFailsAtOnce() {
    EngineFixture fx;
    auto system = fx.open("SYSTEM", "manager");
    auto other = fx.sales();
    other->ExecuteSQL("create table t (id number primary key)");
    const std::pair<const char*, std::function<void(OraDatabase&)>> calls[] = {
        {"query", [](OraDatabase& db) { db.CreateDynaset("select count(*) from t", 4); }},
        {"execute", [](OraDatabase& db) { db.ExecuteSQL("insert into t values (2)"); }},
        {"commit", [](OraDatabase& db) { db.connection().commit(); }},
        {"rollback", [](OraDatabase& db) { db.connection().rollback(); }}};
    for (const bool inAnotherProcess : {false, true})
      for (const auto& [name, call] : calls) {
        const QString round =
            QString("%1 after a kill from %2").arg(name, inAnotherProcess ? "a process" : "a session");
        auto victim = fx.sales();
        const QString id = rowsOf(*victim, "select sid || ',' || serial# from v$session where status = 'ACTIVE'")[0];
        victim->connection().begin();
        victim->ExecuteSQL("insert into t values (1)");
        const QString kill = "alter system kill session '" + id + "'";
        if (inAnotherProcess) {
          QProcess killer;
          killer.start(ENGINE_SESSION, {fx.folder, "system", "manager", kill});
          QVERIFY(killer.waitForFinished(10000));
          QCOMPARE(killer.readAll().trimmed(), QByteArray("DONE"));
        } else {
          system->ExecuteSQL(kill);
        }
        QString text;
        QVERIFY2(errorOf([&] { call(*victim); }, &text) == 28, qPrintable(round));
        QCOMPARE(text, QString("ORA-00028: your session has been killed"));
        QVERIFY2(errorOf([&] { victim->ExecuteSQL("select 1 from dual"); }) == 28, qPrintable(round));
        // The pending insert was rolled back, never committed: another session can make it.
        QVERIFY2(errorOf([&] { other->ExecuteSQL("insert into t values (1)"); }) == 0, qPrintable(round));
        QCOMPARE(rowsOf(*other, "select count(*) from t"), QStringList({"1"}));
        other->ExecuteSQL("delete from t");
      }
  }

  void sessionsOfDeadProcessesDisappear() {
    EngineFixture fx;
    auto system = fx.open("SYSTEM", "manager");
    system->ExecuteSQL("create table t (id number)");
    QProcess child;
    child.start(ENGINE_SESSION, {fx.folder, "system", "manager", "t", "1"});
    QVERIFY(child.waitForReadyRead(10000));
    QVERIFY(!childSession(*system).isEmpty());
    child.kill();
    QVERIFY(child.waitForFinished(10000));
    QCOMPARE(childSession(*system), QString());
    QCOMPARE(rowsOf(*system, "select count(*) from t"), QStringList({"0"}));
  }

  void aRunningQueryCanBeInterrupted() {
    EngineFixture fx;
    auto sales = fx.sales();
    sales->ExecuteSQL("CREATE TABLE n (x NUMBER)");
    sales->connection().begin();
    for (int i = 0; i < 300; ++i)
      sales->ExecuteSQL(QStringLiteral("INSERT INTO n VALUES (%1)").arg(i));
    sales->connection().commit();
    std::atomic<int> error = 0;
    std::atomic<bool> done = false;
    std::thread worker([&] {
      error = errorOf(
          [&] { sales->CreateDynaset("SELECT COUNT(*) FROM n a, n b, n c WHERE a.x + b.x < c.x", 4)->RecordCount(); });
      done = true;
    });
    // An interrupt before the query starts stops nothing: repeat it until the query has ended.
    while (!done) {
      sales->connection().interrupt();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    worker.join();
    QCOMPARE(error.load(), 1013);
    QCOMPARE(rowsOf(*sales, "SELECT COUNT(*) FROM n"), QStringList({"300"}));
  }

  void droppingAUserTakesItsSchemaOnlyWhenAsked() {
    EngineFixture fx;
    {
      auto system = fx.open("system", "manager");
      system->ExecuteSQL("create user temp identified by pw");
      system->ExecuteSQL("grant connect, resource to temp");
      {
        auto temp = fx.open("temp", "pw");
        temp->ExecuteSQL("create table scratch (a number)");
        QCOMPARE(errorOf([&] { system->ExecuteSQL("drop user temp cascade"); }), 1940);
      }
      QCOMPARE(errorOf([&] { system->ExecuteSQL("drop user temp"); }), 1922);
      system->ExecuteSQL("drop user temp cascade");
      QCOMPARE(rowsOf(*system, "select count(*) from all_objects where owner = 'TEMP'"), QStringList({"0"}));
      QCOMPARE(errorOf([&] { fx.open("temp", "pw"); }), 1017);
      QCOMPARE(errorOf([&] { system->ExecuteSQL("drop user temp"); }), 1918);
    }
  }

  void logonAndConnectOracle() {
    EngineFixture fx;
    QCOMPARE(errorOf([&] { fx.open("sales", "wrong"); }), 1017);
    QCOMPARE(errorOf([&] { fx.open("nobody", "secret"); }), 1017);
    QCOMPARE(errorOf([&] { LocalEngine::connect(fx.dir.path() + "/none", "sales", "secret"); }), 12154);
    QCOMPARE(errorOf([&] { LocalEngine::createInstance(fx.folder, "x"); }), 1501);

    // The host string picks the engine: local:/folder here, local:NAME under the data folder.
    BDBSWEEP state;
    ScriptedMessageBoxes boxes;
    const DbEnvironment env{fx.dir.path()};
    state.gUser = "sales";
    state.gPassword = "secret";
    state.gHost = "local:" + fx.folder;
    QVERIFY(ConnectOracle(state, boxes, env));
    QCOMPARE(state.gLogonCaption, "User:sales\r\nHost:local:" + fx.folder);
    QVERIFY(!state.gWindowsUser.isEmpty());
    // Versions in Oracle's dotted form, as the status bar shows them.
    QVERIFY(QRegularExpression(R"(^\d+(\.\d+){4}$)").match(state.gDatabase->RDBMSVersion()).hasMatch());
    QVERIFY(QRegularExpression(R"(^\d+\.\d+\.\d+)").match(state.gSession->OipVersionNumber()).hasMatch());
    const auto first = state.gDatabase;

    // A wrong password: the caption already shows the attempt, the box says the session could
    // not be established, and the previous database stays in use.
    state.gPassword = "wrong";
    state.gWindowsUser.clear();
    boxes.expect(MessageBoxes::Answer::Ok);
    QVERIFY(!ConnectOracle(state, boxes, env));
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown()[0].text, QString("オラクルセッションが確立できません。"));
    QCOMPARE(boxes.shown()[0].title, QString("エラー"));
    QCOMPARE(boxes.shown()[0].icon, MessageBoxes::Icon::Critical);
    QCOMPARE(boxes.shown()[0].buttons, MessageBoxes::Buttons::Ok);
    QCOMPARE(state.gDatabase, first);
    QVERIFY(state.gWindowsUser.isEmpty());
    QCOMPARE(rowsOf(*state.gDatabase, "select user from dual"), QStringList({"SALES"}));

    // Named instances live under the data folder.
    LocalEngine::createInstance(LocalEngine::folderFor("named", env), "pw");
    state.gUser = "system";
    state.gPassword = "pw";
    state.gHost = "local:named";
    QVERIFY(ConnectOracle(state, boxes, env));
    state.gSession->BeginTrans();
    state.gDatabase->ExecuteSQL("create table x (a number)");
    state.gDatabase->ExecuteSQL("insert into x values (1)");
    state.gSession->Rollback();
    QCOMPARE(rowsOf(*state.gDatabase, "select count(*) from x"), QStringList({"0"}));
  }
};

QTEST_GUILESS_MAIN(TestSessions)
#include "test_sessions.moc"
