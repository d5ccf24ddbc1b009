#include "FakeServices.h"
#include "ScriptedMessageBoxes.h"
#include "app/FORA_Logon.h"
#include "common/BDBSWEEP.h"
#include "db/OraSession.h"
#include "db/local/LocalEngine.h"
#include "platform/PlatformRegistry.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "settings/RegSetting.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

// One run of the program: its settings store, state and services in a temporary folder, and
// the logon dialog shown over them.
struct Program {
  Program() : registry({dir.filePath("config"), dir.filePath("autostart")}, QProcessEnvironment()) {
    env.tnsAdmin = dir.filePath("tns");
    env.db.dataFolder = dir.filePath("data");
    state.gOracleHome = "ERROR";
    state.gRegistry = std::make_unique<clsREG>(registry, boxes);
  }
  QString setting(const QString& key) { return RegSetting(*state.gRegistry, "R", "JVK", key, "<absent>"); }
  void store(const QString& key, const QString& value) { RegSetting(*state.gRegistry, "W", "JVK", key, value); }
  QString logon() const { return state.gUser + "/" + state.gPassword + "@" + state.gHost; }

  FORA_Logon& show() {
    dialog.show();
    if (!QTest::qWaitForWindowActive(&dialog))
      qWarning("the dialog did not become active");
    return dialog;
  }
  template <typename T = QWidget> T* at(const char* name) { return dialog.findChild<T*>(name); }
  QLineEdit* uid() { return at<QLineEdit>("txtUID"); }
  QLineEdit* pwd() { return at<QLineEdit>("txtPWD"); }
  QComboBox* host() { return at<QComboBox>("cmbHost"); }
  QString fields() { return uid()->text() + "/" + pwd()->text() + "@" + host()->currentText(); }
  // Focus arrives with the text selected, so typing replaces it.
  void type(QWidget* field, const QString& text) {
    field->setFocus();
    QTest::keyClicks(field, text);
  }
  void logon(const QString& user, const QString& password, const QString& hostName) {
    type(uid(), user);
    type(pwd(), password);
    type(host(), hostName);
    QTest::mouseClick(at<QPushButton>("cmdOK"), Qt::LeftButton);
  }

  QTemporaryDir dir;
  FakeServiceSet fakes;
  ScriptedMessageBoxes& boxes = fakes.boxes;
  AppEnvironment& env = fakes.env;
  PlatformRegistry registry;
  BDBSWEEP state;
  FORA_Logon dialog{state, fakes.services};
};

class TestLogon final : public QObject {
  Q_OBJECT

  QTemporaryDir m_dir;
  QString m_host = "local:" + m_dir.filePath("inst");

private Q_SLOTS:
  void initTestCase() {
    LocalEngine::createInstance(m_dir.filePath("inst"), "manager");
    auto system = LocalEngine::connect(m_dir.filePath("inst"), "system", "manager");
    system->execute("CREATE USER scott IDENTIFIED BY tiger");
    system->execute("GRANT CREATE SESSION TO scott");
  }

  void firstStartOffersTheDemoLogon() {
    Program p;
    QDir().mkpath(p.env.tnsAdmin);
    QFile tns(p.env.tnsAdmin + "/tnsnames.ora");
    QVERIFY(tns.open(QIODevice::WriteOnly) && tns.write("ORCL.WORLD =\n  (DESCRIPTION =\n    (HOST = db1)\n  )\n"));
    tns.close();
    FORA_Logon& d = p.show();
    QCOMPARE(d.windowTitle(), QString("Oracle ﾛｸﾞｵﾝ"));
    QVERIFY(d.isModal());
    QCOMPARE(p.at<QGroupBox>("fraStep3")->title(), QString("接続に使用する値"));
    const QStringList labels = {"UserID(&U):", "Password(&P):", "HostName(&B):"};
    const QList<QWidget*> buddies = {p.uid(), p.pwd(), p.host()};
    for (int i = 0; i < 3; ++i) {
      QCOMPARE(p.at<QLabel>(qPrintable(QString("lblStep3_%1").arg(i)))->text(), labels[i]);
      QCOMPARE(p.at<QLabel>(qPrintable(QString("lblStep3_%1").arg(i)))->buddy(), buddies[i]);
    }
    QCOMPARE(p.at<QPushButton>("cmdOK")->text() + p.at<QPushButton>("cmdCancel")->text(), QString("OK(&O)ｷｬﾝｾﾙ"));
    QCOMPARE(p.fields(), QString("QUIL/QTJL@local:demo"));
    QCOMPARE(p.pwd()->echoMode(), QLineEdit::Password);
    QCOMPARE(p.host()->count(), 2);
    QCOMPARE(p.host()->itemText(0) + "," + p.host()->itemText(1), QString("ORCL,local:demo"));
    QCOMPARE(QApplication::focusWidget(), p.uid());
    QCOMPARE(p.uid()->selectedText(), QString("QUIL"));
  }

  void storedLogonThenCurrentLogonPrefill() {
    Program p;
    p.store("ORA_USER", "SCOTT");
    p.store("ORA_PASS", "ukjiw");
    p.store("ORA_HOST", "ORCL");
    p.show();
    QCOMPARE(p.fields(), QString("SCOTT/tiger@ORCL"));
    // Every showing reloads: now this process has tried a logon, and a new instance exists.
    p.dialog.hide();
    p.state.gHost = "local:other";
    p.state.gUser = "HR";
    p.state.gPassword = "hrpw";
    LocalEngine::createInstance(p.env.db.dataFolder + "/instances/other", "manager");
    p.show();
    QCOMPARE(p.fields(), QString("HR/hrpw@local:other"));
    QCOMPARE(p.host()->itemText(1), QString("local:other"));
  }

  void successfulLogonIsRememberedScrambled() {
    Program p;
    p.state.gCurTableID = "T_ORDER";
    p.show();
    p.logon("scott", "tiger", m_host);
    QCOMPARE(p.dialog.result(), int(QDialog::Accepted));
    QVERIFY(!p.dialog.isVisible() && p.boxes.shown().isEmpty());
    QCOMPARE(p.logon(), "scott/tiger@" + m_host);
    QVERIFY(!p.state.gSession->OipVersionNumber().isEmpty() && !p.state.gDatabase->RDBMSVersion().isEmpty());
    QCOMPARE(p.state.gOo4oVersionText, "OO4O\u3000Ver:" + p.state.gSession->OipVersionNumber());
    QCOMPARE(p.state.gOracleVersionText, "ORCLE Ver:" + p.state.gDatabase->RDBMSVersion());
    QCOMPARE(QStringList({p.setting("ORA_USER"), p.setting("ORA_PASS"), p.setting("ORA_HOST")}),
             QStringList({"scott", "ukjiw", m_host}));
    QCOMPARE(p.state.gCurTableID, QString(""));

    // Failing to reconnect keeps the open database; the typed values stay for the next showing.
    const auto database = p.state.gDatabase;
    const QString version = p.state.gOracleVersionText;
    p.state.gCurTableID = "T_ORDER";
    p.boxes.expect(MessageBoxes::Answer::Ok);
    p.boxes.expect(MessageBoxes::Answer::Ok);
    p.show();
    p.logon("scott", "wrong", m_host);
    QCOMPARE(p.boxes.shown().size(), 2);
    QCOMPARE(p.boxes.shown()[0].text, QString("オラクルセッションが確立できません。"));
    QCOMPARE(p.boxes.shown()[1].text, QString("サーバーの接続に失敗しました。"));
    for (const MessageBoxes::Box& box : p.boxes.shown())
      QVERIFY(box.title == "エラー" && box.icon == MessageBoxes::Icon::Critical &&
              box.buttons == MessageBoxes::Buttons::Ok);
    QCOMPARE(p.dialog.result(), int(QDialog::Rejected));
    QVERIFY(!p.dialog.isVisible());
    QCOMPARE(p.logon(), "scott/wrong@" + m_host);
    QCOMPARE(p.state.gDatabase, database);
    QCOMPARE(p.state.gOracleVersionText, version);
    QCOMPARE(p.state.gCurTableID, QString("T_ORDER"));
    QCOMPARE(p.setting("ORA_PASS"), QString("ukjiw"));
    p.show();
    QCOMPARE(p.fields(), "scott/wrong@" + m_host);
  }

  void cancelChangesNothing() {
    Program p;
    p.state.gHost = "local:demo";
    p.state.gUser = "QUIL";
    p.state.gPassword = "QTJL";
    p.show();
    p.type(p.uid(), "someone");
    p.type(p.host(), "ORCL");
    QTest::mouseClick(p.at<QPushButton>("cmdCancel"), Qt::LeftButton);
    QCOMPARE(p.dialog.result(), int(QDialog::Rejected));
    QCOMPARE(p.logon(), QString("QUIL/QTJL@local:demo"));
    QVERIFY(!p.state.gSession && p.boxes.shown().isEmpty());
    QCOMPARE(p.setting("ORA_USER"), QString("<absent>"));
  }

  void enterMovesToTheNextFieldAndFocusSelectsAll() {
    Program p;
    p.show();
    QTest::keyClick(p.uid(), Qt::Key_Return);
    QCOMPARE(QApplication::focusWidget(), p.pwd());
    QCOMPARE(p.pwd()->selectedText(), QString("QTJL"));
    QTest::keyClick(p.pwd(), Qt::Key_Enter);
    QCOMPARE(QApplication::focusWidget(), p.host());
    QCOMPARE(p.host()->lineEdit()->selectedText(), QString("local:demo"));
    QTest::keyClick(p.host(), Qt::Key_Return);
    QCOMPARE(QApplication::focusWidget(), p.at("cmdOK"));
    QVERIFY(p.dialog.isVisible() && p.boxes.shown().isEmpty());
    QCOMPARE(p.host()->count(), 1);
    QTest::keyClick(&p.dialog, Qt::Key_P, Qt::AltModifier);
    QCOMPARE(QApplication::focusWidget(), p.pwd());
    QTest::mouseClick(p.uid(), Qt::LeftButton);
    QTRY_COMPARE(p.uid()->selectedText(), QString("QUIL"));
    // On a button Enter presses it.
    p.at("cmdCancel")->setFocus();
    QTest::keyClick(p.at("cmdCancel"), Qt::Key_Return);
    QVERIFY(!p.dialog.isVisible());
    QCOMPARE(p.dialog.result(), int(QDialog::Rejected));
  }
};

QTEST_MAIN(TestLogon)
#include "test_logon.moc"
