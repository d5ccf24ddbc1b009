// The file output button and its export dialog, pressed as a user presses them, on the shop's
// tables in an embedded instance.
#include "../jobs/ShopWindow.h"
#include "export/FORA_Select.h"
#include "jobs/StatementRunner.h"

#include <QClipboard>
#include <QLineEdit>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSemaphore>
#include <QStringDecoder>
#include <QTimer>

using Answer = MessageBoxes::Answer;

namespace {

// A folder chooser that answers from a queue.
struct ScriptedFolders final : FileDialogs {
  QString openFileName(const QString&, const QString&, const QString&, Show) override { return {}; }
  QString saveFileName(const QString&, const QString&, const QString&) override { return {}; }
  QString BrowseForFolder(const QString& title, const QString& start) override {
    asked << title + u'|' + start;
    return answers.isEmpty() ? QString() : answers.takeFirst();
  }
  QStringList answers;
  QStringList asked;
};

QByteArray fileBytes(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

QStringList resultsOf(FlexGrid& g) { return column(g, 4); }

// The rows of a query, stopping before a chosen row until the test lets them go on.
class GatedRows final : public OraDynaset {
public:
  GatedRows(std::unique_ptr<OraDynaset> inner, int gateAt, QSemaphore& gate)
      : m_inner(std::move(inner)), m_gateAt(gateAt), m_gate(gate) {
    for (int i = 0; i < m_inner->FieldCount(); ++i)
      m_names.append(m_inner->FieldName(i));
  }
  qint64 RecordCount() override { return m_inner->RecordCount(); }
  QVariant Fields(int index) override { return m_inner->Fields(index); }
  QVariantList Row() override {
    if (m_pos == m_gateAt && !m_gate.tryAcquire(1, 10000))
      throw OraError(1013, QStringLiteral("user requested cancel of current operation"));
    return m_inner->Row();
  }
  void MoveNext() override {
    ++m_pos;
    m_inner->MoveNext();
  }
  bool IsEOF() override { return m_inner->IsEOF(); }
  void Delete() override { m_inner->Delete(); }
  void Close() override { m_inner->Close(); }

private:
  std::unique_ptr<OraDynaset> m_inner;
  int m_gateAt;
  QSemaphore& m_gate;
  int m_pos = 0;
};

// Every query's rows stop before their third row until the test opens the gate.
class GatedConnection final : public PassThroughConnection {
public:
  using PassThroughConnection::PassThroughConnection;
  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override {
    auto rows = PassThroughConnection::query(sql, options);
    if (!sql.contains(u"from KOKYAKU"))
      return rows;
    return std::make_unique<GatedRows>(std::move(rows), 2, gate);
  }
  QSemaphore gate;
};

} // namespace

class TestExportDialog final : public QObject {
  Q_OBJECT

  Machine m;
  QTemporaryDir out;
  int seen = 0; // boxes shown before the running test

  // The boxes the running test has seen.
  QList<MessageBoxes::Box> boxes() const { return m.boxes.shown().mid(seen); }

  // Presses ファイル出力 and runs look while the dialog is up; the dialog is closed afterwards in
  // any case, so a failed check cannot leave the test waiting.
  void withDialog(Shop& s, const std::function<void(FORA_Select&)>& look) {
    bool shown = false;
    QTimer::singleShot(0, this, [&] {
      auto* dialog = qobject_cast<FORA_Select*>(QApplication::activeModalWidget());
      QVERIFY(dialog);
      shown = true;
      const auto close = qScopeGuard([dialog] {
        if (dialog->isVisible())
          dialog->done(0);
      });
      look(*dialog);
    });
    QTest::mouseClick(s.job(4), Qt::LeftButton);
    QVERIFY(shown);
  }
  template <typename T> static T* find(FORA_Select& d, const char* name) { return d.findChild<T*>(name); }
  static FlexGrid& grid(FORA_Select& d) { return *find<FlexGrid>(d, "grdCSV"); }

private Q_SLOTS:
  void initTestCase() { CreateShop(m); }
  void init() {
    FillShop(m);
    QDir(out.path()).removeRecursively();
    QDir().mkpath(out.path());
    // The dialog's defaults, whatever an earlier test chose.
    m.setSetting("OutPath", out.path());
    m.setSetting("SepChara", ",");
    m.setSetting("ItemID", "NO");
    m.setSetting("CSVDest", "1");
    m.setSetting("StrSep", "\"");
    seen = int(m.boxes.shown().size());
  }

  void filesForEveryTableWithTheFilterAndTheReport() {
    Shop s(m);
    auto shop = LocalEngine::connect(Browser::folder(m), "SHOP", "pw");
    shop->execute("update KOKYAKU set KOKYAKU_NM = '山田 太郎' where KOKYAKU_NO = 2");
    shop->execute("drop table MEISAI"); // behind the program's back
    shop->execute("commit");
    s.start.find<QLineEdit>("txtAddWhere")->setText("KOKYAKU_NO = 2");
    m.boxes.expect(Answer::Ok);
    withDialog(s, [&](FORA_Select& d) {
      FlexGrid& g = grid(d);
      QCOMPARE(g.Rows(), 5);
      QCOMPARE(rowOf(g, 0), (QStringList{"", "Table", "ﾃｰﾌﾞﾙ", "出力ﾌｧｲﾙ名", "結果"}));
      QCOMPARE(rowOf(g, 2), (QStringList{"2", "KOKYAKU", "顧客", "KOKYAKU.dat", ""}));
      QCOMPARE(column(g, 3), (QStringList{"JUCHU.dat", "KOKYAKU.dat", "MEISAI.dat", "ZAIKO_RIREKI_2026_NOVEMBER.dat"}));
      // The list shows the banner and the start time while the dialog is open.
      QCOMPARE(s.count->TextMatrix(1, 0), QString("＝＝＝ファイル出力開始＝＝＝"));
      QVERIFY(s.count->TextMatrix(2, 0).startsWith("開始: "));
      find<QCheckBox>(d, "Check1")->setChecked(true);
      QTest::mouseClick(find<QPushButton>(d, "cmdGo"), Qt::LeftButton);
      QCOMPARE(resultsOf(g), (QStringList{"2件", "1件", "×", "0件"}));
      QVERIFY(!d.isVisible());
    });
    QCOMPARE(boxes().size(), 1);
    QCOMPARE(boxes()[0].text, QString("データ出力が終了しました"));
    QCOMPARE(boxes()[0].title, QString("DBSWEEP～"));
    QCOMPARE(boxes()[0].icon, MessageBoxes::Icon::Information);

    QCOMPARE(fileBytes(out.path() + "/JUCHU.dat"), QByteArray("JUCHU_NO,KOKYAKU_NO\r\n1,2\r\n3,2\r\n"));
    // Japanese text comes back unchanged from the file's code page.
    const QByteArray kokyaku = fileBytes(out.path() + "/KOKYAKU.dat");
    QCOMPARE(QStringDecoder("windows-31j").decode(kokyaku).operator QString(),
             QString("KOKYAKU_NO,KOKYAKU_NM\r\n2,\"山田 太郎\"\r\n"));
    QCOMPARE(kokyaku.mid(kokyaku.indexOf('"') + 1, 2).toHex(), QByteArray("8e52"));
    QVERIFY(!QFile::exists(out.path() + "/MEISAI.dat"));
    QCOMPARE(fileBytes(out.path() + "/ZAIKO_RIREKI_2026_NOVEMBER.dat"), QByteArray("KOKYAKU_NO\r\n"));
    QCOMPARE(s.start.state.gLastSql, QString("select * from ZAIKO_RIREKI_2026_NOVEMBER WHERE KOKYAKU_NO = 2"));

    // The report: no line per table, the end time in the count job's colours.
    const QStringList lines = linesOf(*s.count);
    QCOMPARE(lines.size(), 7);
    QCOMPARE(lines[0], line("＝＝＝ファイル出力開始＝＝＝", Green, Red));
    QCOMPARE(lines[3], line("", {}, {}));
    QVERIFY(lines[4].startsWith("終了: "));
    QCOMPARE(lines[6], line("＝＝＝ファイル出力終了＝＝＝", Green, Red));
    QCOMPARE(m.setting("ItemID"), QString("YES"));
    QCOMPARE(m.setting("CSVDest"), QString("1"));
    QCOMPARE(m.setting("SepChara"), QString(","));
  }

  void theClipboardHoldsTheLastTable() {
    Shop s(m);
    LocalEngine::connect(Browser::folder(m), "SHOP", "pw")->execute("insert into ZAIKO_RIREKI_2026_NOVEMBER values (7)");
    s.list->item(2)->setSelected(false); // MEISAI
    for (int i = 0; i < 4; ++i)
      m.boxes.expect(Answer::Ok);
    withDialog(s, [&](FORA_Select& d) {
      find<QCheckBox>(d, "chkCopy")->setChecked(true);
      find<QRadioButton>(d, "Option2")->setChecked(true);
      QTest::mouseClick(find<QPushButton>(d, "cmdGo"), Qt::LeftButton);
      QCOMPARE(resultsOf(grid(d)), (QStringList{"3件", "4件", "1件"}));
    });
    QStringList texts;
    for (const MessageBoxes::Box& box : boxes())
      texts << box.title + u'|' + box.text;
    QCOMPARE(texts, (QStringList{"クリップボード出力|[JUCHU]をクリップボードへコピーしました",
                                 "クリップボード出力|[KOKYAKU]をクリップボードへコピーしました",
                                 "クリップボード出力|[ZAIKO_RIREKI_2026_NOVEMBER]をクリップボードへコピーしました",
                                 "DBSWEEP～|データ出力が終了しました"}));
    QCOMPARE(QApplication::clipboard()->text(), QString("7\r\n"));
    QCOMPARE(m.setting("CSVDest"), QString("2"));
    QCOMPARE(m.setting("SepChara"), QString("\t"));
    QVERIFY(!QFile::exists(out.path() + "/JUCHU.dat"));
  }

  void badFoldersAndFilesAreReportedAndTheOthersStillWritten() {
    Shop s(m);
    auto shop = LocalEngine::connect(Browser::folder(m), "SHOP", "pw");
    shop->execute("update KOKYAKU set KOKYAKU_NM = 'Café' where KOKYAKU_NO = 3");
    shop->execute("commit");
    m.setSetting("OutPath", out.path() + "/missing");
    m.boxes.expect(Answer::Ok);
    for (int i = 0; i < 3; ++i)
      m.boxes.expect(Answer::Ok);
    withDialog(s, [&](FORA_Select& d) {
      // A folder that is not there: said before anything is written, and the dialog stays.
      QTest::mouseClick(find<QPushButton>(d, "cmdGo"), Qt::LeftButton);
      QVERIFY(d.isVisible());
      QCOMPARE(boxes().last().text, "出力先パスのフォルダがありません。\n" + out.path() + "/missing");
      QCOMPARE(boxes().last().title, QString("エラー"));
      QCOMPARE(m.setting("OutPath"), out.path() + "/missing"); // nothing saved yet
      QCOMPARE(resultsOf(grid(d)), (QStringList{"", "", "", ""}));

      // A folder with a trailing separator; JUCHU renamed into a folder that does not exist.
      find<QLineEdit>(d, "txtPath")->setText(out.path() + "/");
      QTest::mouseClick(grid(d).viewport(), Qt::LeftButton, {}, cellCenter(grid(d), 1, 1));
      QCOMPARE(find<QLineEdit>(d, "txtOutName")->text(), QString("JUCHU.dat"));
      QLineEdit* name = find<QLineEdit>(d, "txtOutName");
      name->selectAll();
      QTest::keyClicks(name, "sub/J.dat");
      QCOMPARE(grid(d).TextMatrix(1, 3), QString("sub/J.dat"));
      QTest::mouseClick(find<QPushButton>(d, "cmdGo"), Qt::LeftButton);
      QCOMPARE(resultsOf(grid(d)), (QStringList{"×", "×", "0件", "0件"}));
    });
    const QList<MessageBoxes::Box> shown = boxes();
    QCOMPARE(shown.size(), 4);
    QVERIFY(shown[1].text.startsWith("出力処理でエラーが発生しました。\n" + out.path() + "/sub/J.dat\n"));
    QCOMPARE(shown[1].title, QString("DBSWEEP"));
    QVERIFY(shown[2].text.contains("KOKYAKU") && shown[2].text.contains("KOKYAKU_NM") && shown[2].text.contains("Café"));
    QCOMPARE(shown[2].title, QString("エラー"));
    QCOMPARE(m.setting("OutPath"), out.path());
    QVERIFY(!QFile::exists(out.path() + "/KOKYAKU.dat"));
    QCOMPARE(fileBytes(out.path() + "/MEISAI.dat"), QByteArray());
  }

  void theWindowPaintsAndShowsTheTableInProgress() {
    Shop s(m);
    auto gated = std::make_shared<GatedConnection>(s.recorder);
    s.start.state.gDatabase = std::make_shared<OraDatabase>(gated);
    s.list->clearSelection();
    s.list->item(1)->setSelected(true); // KOKYAKU, four rows
    m.boxes.expect(Answer::Ok);
    withDialog(s, [&](FORA_Select& d) {
      QString during;
      bool buttonsOff = false;
      bool stayed = false;
      QTimer::singleShot(400, this, [&] {
        during = grid(d).TextMatrix(1, 4);
        buttonsOff = !find<QPushButton>(d, "cmdGo")->isEnabled() && !find<QPushButton>(d, "Command2")->isEnabled();
        d.close(); // the window's close button does not pull the dialog away mid-table
        stayed = d.isVisible();
        gated->gate.release();
      });
      QTest::mouseClick(find<QPushButton>(d, "cmdGo"), Qt::LeftButton);
      QCOMPARE(during, QString("0/4件"));
      QVERIFY(buttonsOff);
      QVERIFY(stayed);
      QCOMPARE(resultsOf(grid(d)), QStringList{"4件"});
    });
    QCOMPARE(fileBytes(out.path() + "/KOKYAKU.dat"),
             QByteArray("1,\"k1\"\r\n2,\"k2\"\r\n3,\"k3\"\r\n4,\"k4\"\r\n"));
  }

  void theDialogLoadsItsSettingsAndSizesItselfToItsTables() {
    BDBSWEEP state;
    state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes);
    ScriptedFolders folders;
    Services services{m.boxes, m.clock, m.launcher, folders, m.fakes.print, m.fakes.desktop, m.env};
    InlineStatements statements;
    m.setSetting("SepChara", "\t");
    m.setSetting("ItemID", "YES");
    m.setSetting("CSVDest", "2");
    m.setSetting("StrSep", "'");
    {
      FORA_Select d(state, services, {}, statements);
      QVERIFY(find<QRadioButton>(d, "Option2")->isChecked());
      QVERIFY(!find<QLineEdit>(d, "txtSepChara")->isEnabled());
      QVERIFY(find<QCheckBox>(d, "Check1")->isChecked());
      QVERIFY(find<QCheckBox>(d, "chkCopy")->isChecked());
      QCOMPARE(find<QLineEdit>(d, "txtStrSep")->text(), QString("'"));
      QCOMPARE(find<QLineEdit>(d, "txtPath")->text(), out.path());

      // The folder picker replaces the path, a cancel leaves it.
      folders.answers = {"/picked"};
      QTest::mouseClick(find<QPushButton>(d, "cmdView"), Qt::LeftButton);
      QCOMPARE(find<QLineEdit>(d, "txtPath")->text(), QString("/picked"));
      QTest::mouseClick(find<QPushButton>(d, "cmdView"), Qt::LeftButton);
      QCOMPARE(find<QLineEdit>(d, "txtPath")->text(), QString("/picked"));
      QCOMPARE(folders.asked, (QStringList{"ファイルの出力先を指定して下さい|" + out.path(),
                                           "ファイルの出力先を指定して下さい|/picked"}));

      // Narrow tables leave the dialog as designed; a long display name widens it.
      const int designed = d.width();
      d.prepare({{"A", "a", 1}, {"B", "b", 2}});
      QCOMPARE(column(grid(d), 0), (QStringList{"1", "2"}));
      QCOMPARE(d.width(), designed);
      const int nameColumn = grid(d).ColWidth(2);
      d.prepare({{"A", QString(60, u'長'), 1}});
      QVERIFY(grid(d).ColWidth(2) > nameColumn);
      QVERIFY(d.width() > designed);
    }
    m.setSetting("SepChara", "|");
    FORA_Select d(state, services, {}, statements);
    QVERIFY(find<QRadioButton>(d, "Option3")->isChecked());
    QCOMPARE(find<QLineEdit>(d, "txtSepChara")->text(), QString("|"));
    QVERIFY(find<QLineEdit>(d, "txtSepChara")->isEnabled());
    QTest::mouseClick(find<QRadioButton>(d, "Option1"), Qt::LeftButton);
    QVERIFY(!find<QLineEdit>(d, "txtSepChara")->isEnabled());
  }
};

QTEST_MAIN(TestExportDialog)
#include "test_exportdialog.moc"
