// The options dialog: what it reads and writes, 初期値, the caption's length, the program's icon,
// the program chooser and Enter; and the file chooser class under it.
#include "MainWindowFixture.h"
#include "launcher/FDBSWEEP_Dia.h"
#include "launcher/clsFDia.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

// A file chooser that records what it was asked and answers from a queue.
struct ScriptedFiles final : FileDialogs {
  QString openFileName(const QString& title, const QString& start, const QString& filter, Show show) override {
    asked << title + u'|' + start + u'|' + filter + (show == Show::Programs ? QStringLiteral("|programs") : QStringLiteral("|files"));
    return answers.isEmpty() ? QString() : answers.takeFirst();
  }
  QString saveFileName(const QString& title, const QString& start, const QString& filter) override {
    asked << title + u'|' + start + u'|' + filter + QStringLiteral("|save");
    return answers.isEmpty() ? QString() : answers.takeFirst();
  }
  QString BrowseForFolder(const QString&, const QString&) override { return {}; }
  QStringList asked;
  QStringList answers;
};

} // namespace

class TestOptionsDialog final : public QObject {
  Q_OBJECT

  Machine m;
  ScriptedFiles files;
  Services services{m.boxes, m.clock, m.launcher, files, m.fakes.print, m.fakes.desktop, m.env};
  BDBSWEEP state;

  template <typename T> static T* at(FDBSWEEP_Dia& d, const QString& name) { return d.findChild<T*>(name); }

private Q_SLOTS:
  void initTestCase() { state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes); }

  void readsTheSettingsAndWritesThemOnlyOnOk() {
    m.setSetting("CHILDID3", "SQL");
    m.setSetting("CHILDNAME3", "/bin/sh");
    m.setSetting("CHILDpara3", "3");
    m.setSetting("CLMM", "MY_CLMM");
    {
      FDBSWEEP_Dia d(state, services);
      QCOMPARE(d.windowTitle(), QString("オプション設定"));
      auto* forms = at<QComboBox>(d, "cmbPara_3");
      QCOMPARE(forms->count(), 5);
      QCOMPARE(forms->itemText(2), QString("       :User , Pass, Host"));
      QCOMPARE(forms->currentText(), QString("SqlPlus:User/Pass@Host"));
      QCOMPARE(at<QLineEdit>(d, "txtTitle_3")->text(), QString("SQL"));
      QCOMPARE(at<QComboBox>(d, "cmbPara_0")->currentText(), QString("引数なし")); // never saved
      QCOMPARE(at<QLineEdit>(d, "txtCLMM")->text(), QString("MY_CLMM"));
      QCOMPARE(at<QLineEdit>(d, "txtTBLID")->text(), QString("TBL_ID"));
      // Changes, then ｷｬﾝｾﾙ: nothing is written.
      at<QLineEdit>(d, "txtTitle_3")->setText("X");
      QTest::mouseClick(at<QPushButton>(d, "CancelButton"), Qt::LeftButton);
    }
    QCOMPARE(m.setting("CHILDID3"), QString("SQL"));
    QCOMPARE(m.setting("CHILDPARA0"), QString("<none>"));
    {
      FDBSWEEP_Dia d(state, services);
      at<QLineEdit>(d, "txtTitle_1")->setText("ObjScan");
      at<QComboBox>(d, "cmbPara_1")->setCurrentIndex(4);
      at<QComboBox>(d, "cmbPara_2")->setCurrentIndex(-1);
      at<QLineEdit>(d, "txtTBLM")->setText("NAMES");
      QTest::mouseClick(at<QPushButton>(d, "OKButton"), Qt::LeftButton);
    }
    QCOMPARE(m.setting("CHILDID1"), QString("ObjScan"));
    QCOMPARE(m.setting("CHILDPARA1"), QString("4"));
    QCOMPARE(m.setting("CHILDPARA2"), QString("-1"));
    QCOMPARE(m.setting("CHILDPARA3"), QString("3"));
    QCOMPARE(m.setting("CHILDNAME3"), QString("/bin/sh"));
    QCOMPARE(m.setting("CHILDID9"), QString("<none>")); // an empty value is no value
    QCOMPARE(m.setting("TBLM"), QString("NAMES"));
    QCOMPARE(m.setting("CLMNM"), QString("CLM_NM"));
  }

  void defaultsCaptionLengthIconAndEnter() {
    m.setSetting("TBLM", "SAVED");
    FDBSWEEP_Dia d(state, services);
    d.show();
    // 初期値 resets its own frame only, and saves nothing.
    at<QLineEdit>(d, "txtTBLM")->setText("A");
    at<QLineEdit>(d, "txtTBLNM")->setText("B");
    at<QLineEdit>(d, "txtCLMID")->setText("C");
    QTest::mouseClick(at<QPushButton>(d, "cmdINITTBLM"), Qt::LeftButton);
    QCOMPARE(at<QLineEdit>(d, "txtTBLM")->text(), QString("TBTBLM"));
    QCOMPARE(at<QLineEdit>(d, "txtTBLNM")->text(), QString("TBL_NM"));
    QCOMPARE(at<QLineEdit>(d, "txtCLMID")->text(), QString("C"));
    QCOMPARE(m.setting("TBLM"), QString("SAVED"));

    // At most eight characters of caption.
    auto* caption = at<QLineEdit>(d, "txtTitle_0");
    caption->clear();
    QTest::keyClicks(caption, "ABCDEFGHIJ");
    QCOMPARE(caption->text(), QString("ABCDEFGH"));

    // The icon follows the program path.
    auto* icon = at<QLabel>(d, "Icon1_0");
    at<QLineEdit>(d, "txtName_0")->setText("/bin/sh");
    QVERIFY(!icon->pixmap().isNull());
    at<QLineEdit>(d, "txtName_0")->setText("/no/such/program");
    QVERIFY(icon->pixmap().isNull());

    // Enter moves on as Tab does.
    caption->setFocus();
    QTRY_VERIFY(caption->hasFocus());
    QTest::keyClick(caption, Qt::Key_Return);
    QVERIFY(at<QLineEdit>(d, "txtName_0")->hasFocus());
    QVERIFY(d.isVisible());
  }

  void theProgramChooserStartsWhereThePathPoints() {
    FDBSWEEP_Dia d(state, services);
    auto* path = at<QLineEdit>(d, "txtName_5");
    path->setText("/opt/tools/sqlplus");
    files.answers = {"/usr/bin/env"};
    QTest::mouseClick(at<QPushButton>(d, "cmdView_5"), Qt::LeftButton);
    QCOMPARE(path->text(), QString("/usr/bin/env"));
    QCOMPARE(files.asked.last(), QString("実行ﾌｧｲﾙ参照|/opt/tools/sqlplus|実行ﾌｧｲﾙ (*);;すべてのﾌｧｲﾙ (*)|programs"));
    // A cancel keeps the path; a bare name is proposed beside this program.
    path->setText("sqlplus");
    QTest::mouseClick(at<QPushButton>(d, "cmdView_5"), Qt::LeftButton);
    QCOMPARE(path->text(), QString("sqlplus"));
    QCOMPARE(files.asked.last().section(u'|', 1, 1), m.env.db.programFolder + "/sqlplus");
  }

  void theFileChooserClassKeepsOrTakesTheChoice() {
    QCOMPARE(clsFDia::QtFilter("Text (*.txt)|*.txt|CSV|*.csv"), QString("Text (*.txt);;CSV (*.csv)"));
    clsFDia dialog(files);
    dialog.InitialDir = "/data";
    dialog.FileName = "old.csv";
    dialog.FileTitle = "old.csv";
    dialog.DefaultExt = "csv";
    bool ok = true;
    dialog.Show(false, ok); // cancelled: everything stays
    QVERIFY(!ok);
    QCOMPARE(dialog.FileName, QString("old.csv"));
    QCOMPARE(files.asked.last(), QString("|/data/old.csv||save"));
    files.answers = {"/data/new"};
    dialog.Show(false, ok);
    QVERIFY(ok);
    QCOMPARE(dialog.FileName, QString("/data/new.csv"));
    QCOMPARE(dialog.FileTitle, QString("new.csv"));
  }

  void theMainWindowsButtonOpensIt() {
    m.setSetting("PATH", m.env.db.programFolder); // not a first start
    Start start(m);
    start.load();
    QCOMPARE(ModalOpenedBy(start.find<QPushButton>("cmdOpt")), QString("FDBSWEEP_Dia"));
  }
};

QTEST_MAIN(TestOptionsDialog)
#include "test_optionsdialog.moc"
