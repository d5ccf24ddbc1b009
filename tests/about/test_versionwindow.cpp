// The version window: its texts, the contact line that copies itself, and the system
// information tool or the message that there is none; opened from the main window.
#include "MainWindowFixture.h"
#include "about/FDBSWEEP_Ver.h"
#include "about/SystemInfoTool.h"
#include "app/FrameTexts.h"
#include "app/MainToolBar.h"
#include "services/UrlOpener.h"

#include <QApplication>
#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>

class TestVersionWindow final : public QObject {
  Q_OBJECT

  FakeServiceSet fakes;
  QTemporaryDir bin;

  // An executable file called name in the test's own program folder.
  void install(const QString& name) {
    QFile f(bin.path() + u'/' + name);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("#!/bin/sh\n");
    f.setPermissions(f.permissions() | QFile::ExeOwner);
  }

private Q_SLOTS:
  void showsTheProgramAndCopiesTheContactLine() {
    FDBSWEEP_Ver window(fakes.services, {bin.path()});
    QCOMPARE(window.windowTitle(), QString("DBSWEEPのﾊﾞｰｼﾞｮﾝ情報"));
    QCOMPARE(window.findChild<QLabel*>("lblTitle")->text(), QString("DBSWEEP"));
    QCOMPARE(window.findChild<QLabel*>("lblVersion")->text(), "ﾊﾞｰｼﾞｮﾝ " + ProgramVersionNumbers());
    QVERIFY(window.findChild<QLabel*>("lblVersion")->text().contains(QRegularExpression("^ﾊﾞｰｼﾞｮﾝ \\d+\\.\\d+\\.\\d+$")));
    QCOMPARE(window.findChild<QLabel*>("lblDes")->text(),
             QString("オラクルデータを削除、件数カウントしたり、ランチャーも出来たり．．．"));
    QCOMPARE(window.findChild<QPushButton*>("cmdSysInfo")->text(), QString("ｼｽﾃﾑ情報(&S)..."));
    window.show();
    QApplication::clipboard()->setText("before");
    QLabel* mail = window.findChild<QLabel*>("lblMail");
    QTest::mouseClick(mail, Qt::LeftButton);
    QCOMPARE(QApplication::clipboard()->text(), mail->text());
    QTest::mouseClick(window.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
    QVERIFY(!window.isVisible());
  }

  void startsTheSystemInformationToolOrSaysThereIsNone() {
    FDBSWEEP_Ver window(fakes.services, {bin.path()});
    fakes.boxes.expect(MessageBoxes::Answer::Ok);
    QTest::mouseClick(window.findChild<QPushButton*>("cmdSysInfo"), Qt::LeftButton);
    QCOMPARE(fakes.boxes.shown().size(), 1);
    QCOMPARE(fakes.boxes.shown()[0].text, QString("現時点ではｼｽﾃﾑ情報を使用できません"));
    QCOMPARE(fakes.boxes.shown()[0].buttons, MessageBoxes::Buttons::Ok);
    QVERIFY(fakes.launcher.launches().isEmpty());

    // The first tool of the list wins; a desktop page gets the argument that opens its page.
    install("gnome-control-center");
    install("hardinfo");
    QTest::mouseClick(window.findChild<QPushButton*>("cmdSysInfo"), Qt::LeftButton);
    QCOMPARE(fakes.launcher.launches().size(), 1);
    QCOMPARE(fakes.launcher.launches()[0].program, bin.path() + "/hardinfo");
    QVERIFY(fakes.launcher.launches()[0].arguments.isEmpty());
    QFile::remove(bin.path() + "/hardinfo");
    QCOMPARE(FindSystemInfoTool({bin.path()})->arguments, QStringList{"info-overview"});

    // A tool that will not start is no tool.
    fakes.launcher.setSucceeds(false);
    fakes.boxes.expect(MessageBoxes::Answer::Ok);
    QTest::mouseClick(window.findChild<QPushButton*>("cmdSysInfo"), Qt::LeftButton);
    QCOMPARE(fakes.boxes.shown().size(), 2);
    fakes.launcher.setSucceeds(true);
  }

  void theHelpEntryOpensTheManualBesideTheProgram() {
    struct RecordingOpener final : UrlOpener {
      bool open(const QUrl& url) override {
        opened << url;
        return succeeds;
      }
      QList<QUrl> opened;
      bool succeeds = true;
    } opener;
    Machine m;
    m.setSetting("PATH", m.env.db.programFolder); // not a first start
    Services services{m.boxes, m.clock, m.launcher, m.fakes.desktop, m.fakes.print, opener, m.env};
    BDBSWEEP state;
    state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes);
    FDBSWEEP window(state, services);
    window.load();
    QAction* help = window.findChild<MainToolBar*>()->help();
    const QString manual = m.env.db.programFolder + "/manual/index.html";

    // Not installed: said, with where it was looked for.
    m.boxes.expect(MessageBoxes::Answer::Ok);
    help->trigger();
    QCOMPARE(m.boxes.shown().last().text, "ヘルプファイルが見つかりません。\n" + manual);
    QVERIFY(opener.opened.isEmpty());

    QVERIFY(QDir().mkpath(m.env.db.programFolder + "/manual"));
    QFile page(manual);
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.close();
    help->trigger();
    QCOMPARE(opener.opened, QList<QUrl>{QUrl::fromLocalFile(manual)});

    // No browser to show it in: said too.
    opener.succeeds = false;
    m.boxes.expect(MessageBoxes::Answer::Ok);
    help->trigger();
    QCOMPARE(m.boxes.shown().last().text, "ヘルプを表示するブラウザを起動できません。\n" + manual);
  }

  void theMainWindowsButtonOpensIt() {
    Machine m;
    m.setSetting("PATH", m.env.db.programFolder); // not a first start
    Start start(m);
    start.load();
    QCOMPARE(ModalOpenedBy(start.find<QPushButton>("cmdVer")), QString("FDBSWEEP_Ver"));
  }
};

QTEST_MAIN(TestVersionWindow)
#include "test_versionwindow.moc"
