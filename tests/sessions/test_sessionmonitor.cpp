// The session monitor on an embedded instance with three sessions held by other processes:
// the list, killing a session (answered No and Yes, and refused), the timer's rules, a tick
// during a question, a failing refresh, and the main window's status panel that opens it.
#include "../db/EngineFixture.h"
#include "GridText.h"
#include "MainWindowFixture.h"
#include "OciDoubleFixture.h"
#include "db/OraDatabase.h"
#include "sessions/FDBSWEEP_SS.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTimer>

using Answer = MessageBoxes::Answer;
using Box = MessageBoxes::Box;

namespace {

const QColor Yellow(255, 255, 0), Cyan(0, 255, 255), Red(255, 0, 0), White(255, 255, 255);

} // namespace

class TestSessionMonitor final : public QObject {
  Q_OBJECT

  Machine m;
  QString folder;
  BDBSWEEP state;
  std::vector<std::unique_ptr<QProcess>> children;

  // The grid row of a user's session, 0 when it is not listed.
  int rowOf(FlexGrid& grid, const QString& user) {
    const QString sid = rowsOf(*state.gDatabase, "select sid from v$session where username = '" + user + "'").value(0);
    for (int r = 1; r < grid.Rows(); ++r)
      if (!sid.isEmpty() && grid.TextMatrix(r, 1) == sid)
        return r;
    return 0;
  }
  static QColor colourOf(FlexGrid& g, int row) { return g.CellBackColor(row, 3); }
  static void click(FlexGrid& g, int row) { QTest::mouseClick(g.viewport(), Qt::LeftButton, {}, cellCenter(g, row, 3)); }

private Q_SLOTS:
  void initTestCase() {
    folder = m.instance().mid(6);
    auto system = LocalEngine::connect(folder, "system", "manager");
    for (const char* user : {"S1", "S2", "S3"}) {
      system->execute(QString("CREATE USER %1 IDENTIFIED BY pw").arg(user));
      system->execute(QString("GRANT CONNECT, RESOURCE TO %1").arg(user));
      LocalEngine::connect(folder, user, "pw")->execute("create table t (x number)");
      // Each holds its session, with an insert pending, until it reads a line.
      auto child = std::make_unique<QProcess>();
      child->start(ENGINE_SESSION, {folder, user, "pw", "t", "1"});
      QVERIFY(child->waitForReadyRead(10000));
      QCOMPARE(child->readLine().trimmed(), QByteArray("READY"));
      children.push_back(std::move(child));
    }
    state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes);
    state.gDatabase = std::make_shared<OraDatabase>(LocalEngine::connect(folder, "system", "manager"));
  }
  void cleanupTestCase() {
    for (auto& child : children) {
      child->kill();
      child->waitForFinished();
    }
  }

  void listsTheSessionsOfTheOtherProcesses() {
    FDBSWEEP_SS window(state, m.boxes, 800, nullptr);
    FlexGrid& g = *window.findChild<FlexGrid*>("grdData");
    QCOMPARE(window.windowTitle(), QString("セッション情報照会"));
    QCOMPARE(window.findChild<QLabel*>("lblTable")->text(), QString("SELECT SID,SERIAL#,MACHINE,PROGRAM FROM V$SESSION"));
    QCOMPARE(rowOf(g, ""), 0); // no session without a user
    QCOMPARE(::rowOf(g, 0), (QStringList{"", "SID", "ｼﾙｱﾙ", "ｺﾝﾋﾟｭｰﾀ", "ﾌﾟﾛｸﾞﾗﾑ", ""}));
    QCOMPARE(g.Rows(), 5);
    QCOMPARE(window.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 4件"));
    QCOMPARE(column(g, 4).count("engine_session"), 3);
    for (const char* user : {"S1", "S2", "S3"})
      QVERIFY(rowOf(g, user) > 0);
    QCOMPARE(column(g, 0), (QStringList{"1", "2", "3", "4"}));
    QCOMPARE(colourOf(g, 1), White);
  }

  void aKillAskedThenDoneEndsTheOtherProcessesSession() {
    FDBSWEEP_SS window(state, m.boxes, 800, nullptr);
    window.show();
    FlexGrid& g = *window.findChild<FlexGrid*>("grdData");
    const int before = int(m.boxes.shown().size());
    QStringList seen; // the text of each box with the row's colour and mark behind it
    int row = rowOf(g, "S1");
    m.boxes.whileShown([&](const Box& box) {
      seen << box.text.section(u'\n', 0, 0).trimmed() + u'|' + colourOf(g, row).name() + u'|' + g.TextMatrix(row, 5);
    });
    const QString sid = g.TextMatrix(row, 1), serial = g.TextMatrix(row, 2);

    // No: the row goes back to white with no mark.
    m.boxes.expect(Answer::No);
    click(g, row);
    const Box question = m.boxes.shown()[before];
    QCOMPARE(question.text, "セッションを削除しますか？\r\nSID=[" + sid + "],SERIAL#=[" + serial + "]");
    QCOMPARE(question.title, QString("セッション削除確認"));
    QCOMPARE(question.buttons, MessageBoxes::Buttons::YesNo);
    QCOMPARE(question.defaultButton, 2);
    row = rowOf(g, "S1");
    QCOMPARE(colourOf(g, row), White);
    QCOMPARE(g.TextMatrix(row, 5), QString());

    // Yes: cyan and the notice, then the list without that session; the process learns of it.
    m.boxes.expect(Answer::Yes);
    m.boxes.expect(Answer::Ok);
    click(g, row);
    QCOMPARE(seen, (QStringList{"セッションを削除しますか？|#ffff00|ﾚ", "セッションを削除しますか？|#ffff00|ﾚ",
                                "正常終了しました|#00ffff|ﾚ"}));
    QCOMPARE(m.boxes.shown().last().title, QString("セッション削除"));
    // As on Oracle, the killed session stays listed until its process makes its next call,
    // which fails; then it is gone.
    children[0]->write("\n");
    QVERIFY(children[0]->waitForFinished(10000));
    QCOMPARE(children[0]->readAll().trimmed(), QByteArray("ORA-00028: your session has been killed"));
    QTest::mouseClick(window.findChild<QPushButton*>("cmdRefresh"), Qt::LeftButton);
    QCOMPARE(rowOf(g, "S1"), 0);
    QCOMPARE(window.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 3件"));

    // One's own session cannot be killed: red under the message, then white again.
    seen.clear();
    row = rowOf(g, "SYSTEM");
    m.boxes.expect(Answer::Yes);
    m.boxes.expect(Answer::Ok);
    click(g, row);
    QCOMPARE(seen.last(), "セッションを削除できません|#ff0000|ﾚ");
    QCOMPARE(m.boxes.shown().last().title, QString("エラー"));
    QCOMPARE(colourOf(g, rowOf(g, "SYSTEM")), White);
    QCOMPARE(window.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 3件"));
    m.boxes.whileShown({});

    // The heading row kills nothing.
    const int boxes = int(m.boxes.shown().size());
    QTest::mouseClick(g.horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(30, 5));
    QCOMPARE(m.boxes.shown().size(), boxes);
  }

  void theTimerKeepsItsRulesAndWaitsForAnOpenQuestion() {
    FDBSWEEP_SS window(state, m.boxes, 800, nullptr);
    window.show();
    FlexGrid& g = *window.findChild<FlexGrid*>("grdData");
    auto* seconds = window.findChild<QLineEdit*>("txtTimer");
    auto* timer = window.findChild<QTimer*>("timTimer");
    QCOMPARE(seconds->text(), QString("0"));
    seconds->selectAll();
    QTest::keyClicks(seconds, "99");
    QCOMPARE(seconds->text(), QString("65"));
    QCOMPARE(timer->interval(), 65000);
    seconds->selectAll();
    QTest::keyClicks(seconds, "a");
    QCOMPARE(seconds->text(), QString("0"));
    seconds->selectAll();
    QTest::keyClicks(seconds, "1");
    QTest::mouseClick(window.findChild<QCheckBox*>("chkTimer"), Qt::LeftButton);
    QVERIFY(timer->isActive());

    // A tick while the kill question is open leaves the asked-about row as it is.
    const int row = rowOf(g, "S2");
    QColor afterTicks;
    m.boxes.whileShown([&](const Box&) {
      QTest::qWait(1500);
      afterTicks = colourOf(g, row);
    });
    m.boxes.expect(Answer::No);
    click(g, row);
    m.boxes.whileShown({});
    QCOMPARE(afterTicks, Yellow);
    QTest::mouseClick(window.findChild<QCheckBox*>("chkTimer"), Qt::LeftButton);
    QVERIFY(!timer->isActive());
  }

  void aFailingRefreshKeepsTheListAndShowsNoTotal() {
    FDBSWEEP_SS window(state, m.boxes, 800, nullptr);
    FlexGrid& g = *window.findChild<FlexGrid*>("grdData");
    const QStringList sids = column(g, 1);
    const auto database = std::exchange(state.gDatabase, nullptr);
    m.boxes.expect(Answer::Ok);
    QTest::mouseClick(window.findChild<QPushButton*>("cmdRefresh"), Qt::LeftButton);
    state.gDatabase = database;
    QCOMPARE(m.boxes.shown().last().text, QString("セッション情報を取得できません(サーバ未接続、権限不足等)"));
    QCOMPARE(m.boxes.shown().last().title, QString("エラー"));
    QCOMPARE(column(g, 1), sids);
    QCOMPARE(window.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 0件"));
  }

  void worksOnOracleThroughTheClientLibrary() {
    using namespace OciDouble;
    constexpr unsigned short Number = 2, Varchar2 = 1;
    OciDoubleAnswer list;
    list.columns = {column("SID", Number, 22), column("SERIAL#", Number, 22), column("MACHINE", Varchar2, 64),
                    column("PROGRAM", Varchar2, 48)};
    list.rows = {{"12", "345", "WORKGROUP\\PC01", "sqlplus.exe"}, {"40", "7", "dbhost", "oracle@dbhost (PMON)"}};
    OciDoubleAnswer killed;
    OciDoubleAnswer refused;
    refused.error = 27;
    refused.errorText = "cannot kill current session";
    {
      auto& s = server();
      std::lock_guard lock(s.mutex);
      s.answers["SELECT SID,SERIAL#,MACHINE,PROGRAM FROM V$SESSION"] = list;
      s.answers["ALTER SYSTEM KILL SESSION '12,345'"] = killed;
      s.answers["ALTER SYSTEM KILL SESSION '40,7'"] = refused;
    }
    BDBSWEEP oracle;
    oracle.gDatabase = std::make_shared<OraDatabase>(OciConnection::connect(
        OciLibrary::load(search()), QStringLiteral("ORCL"), QStringLiteral("scott"), QStringLiteral("tiger"), {}));
    FDBSWEEP_SS window(oracle, m.boxes, 800, nullptr);
    window.show();
    FlexGrid& g = *window.findChild<FlexGrid*>("grdData");
    QCOMPARE(::rowOf(g, 1), (QStringList{"1", "12", "345", "WORKGROUP\\PC01", "sqlplus.exe", ""}));
    QCOMPARE(window.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 2件"));
    const size_t logStart = [] {
      auto& s = server();
      std::lock_guard lock(s.mutex);
      return s.log.size();
    }();
    for (Answer a : {Answer::Yes, Answer::Ok, Answer::Yes, Answer::Ok})
      m.boxes.expect(a);
    click(g, 1);
    QCOMPARE(m.boxes.shown().last().text, QString("正常終了しました"));
    click(g, 2);
    QCOMPARE(m.boxes.shown().last().text, QString("セッションを削除できません"));
    const auto log = logFrom(logStart);
    QVERIFY(std::any_of(log.begin(), log.end(), [](const std::string& l) {
      return l.find("ALTER SYSTEM KILL SESSION '12,345'") != std::string::npos;
    }));
  }

  void theMainWindowsSessionPanelOpensIt() {
    m.setSetting("PATH", m.env.db.programFolder); // not a first start
    Start start(m);
    start.load();
    m.boxes.expect(Answer::Ok); // not logged on: no sessions to read
    QCOMPARE(ModalOpenedBy(start.find<StatusPanel>("stsBar_3")), QString("FDBSWEEP_SS"));
  }

};

QTEST_MAIN(TestSessionMonitor)
#include "test_sessionmonitor.moc"
