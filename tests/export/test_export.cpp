#include "../db/EngineFixture.h"
#include "../jobs/RecordingSink.h"
#include "FakeServices.h"
#include "browser/TextTable.h"
#include "common/BDBSWEEP.h"
#include "export/Cp932Text.h"
#include "export/CsvWriter.h"
#include "export/ExportSettings.h"
#include "jobs/FileOutputJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "platform/PlatformRegistry.h"
#include "settings/RegSetting.h"
#include "settings/clsREG.h"

#include <QDir>
#include <QFile>

// Rows held in memory, with a read that fails at a chosen row: what a session killed half-way
// through a table looks like to the writer.
class ScriptedRows final : public OraDynaset {
public:
  ScriptedRows(QStringList names, QList<QVariantList> rows, int failAt = -1)
      : m_rows(std::move(rows)), m_failAt(failAt) {
    for (const QString& n : names)
      m_names.append(n);
  }
  qint64 RecordCount() override { return m_rows.size(); }
  QVariant Fields(int index) override {
    if (m_pos == m_failAt)
      throw OraError(28, QStringLiteral("your session has been killed"));
    return m_rows[m_pos][index];
  }
  void MoveNext() override { ++m_pos; }
  bool IsEOF() override { return m_pos >= m_rows.size(); }
  void Delete() override {}
  void Close() override {}

private:
  QList<QVariantList> m_rows;
  int m_failAt;
  int m_pos = 0;
};

// The columns of a description, as LoadColumnInfo leaves it: ID and data type per column.
QList<CsvColumn> columnsOf(const QList<std::pair<QString, QString>>& idsAndTypes) {
  TextTable info(5);
  info.redim(int(idsAndTypes.size()));
  for (int j = 0; j < idsAndTypes.size(); ++j) {
    info.set(0, j + 1, idsAndTypes[j].first);
    info.set(2, j + 1, idsAndTypes[j].second);
  }
  return CsvColumns(info);
}

QByteArray contentsOf(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// Records the order in which the job drives the dialog, between the lines of the report.
struct RecordingDialog final : FileOutputDialog {
  explicit RecordingDialog(RecordingSink& sink) : sink(sink) {}
  void prepare(const QList<JobTarget>& targets) override {
    for (const JobTarget& t : targets)
      sink.lines << QStringLiteral("prepare ") + t.id + u'/' + t.name;
  }
  void run() override { sink.lines << QStringLiteral("run"); }
  RecordingSink& sink;
};

class TestExport final : public QObject {
  Q_OBJECT

  QTemporaryDir m_dir;
  QString path(const QString& name) const { return m_dir.path() + u'/' + name; }

  // The file the writer makes of rows, or a description of how it failed.
  QByteArray written(OraDynaset& rows, const QList<CsvColumn>& columns, const CsvOptions& options,
                     CsvEncoding encoding = CsvEncoding::Cp932) {
    CsvWriter writer(columns, options);
    const CsvTableResult result = writer.writeFile(rows, path("out.dat"), encoding);
    if (result.outcome != CsvTableResult::Outcome::Written)
      return "<failed: " + result.detail.toUtf8() + ">";
    if (result.rows != rows.RecordCount())
      return "<wrong count>";
    return contentsOf(path("out.dat"));
  }

private Q_SLOTS:
  void eachTypeIsWrittenByItsRule() {
    EngineFixture fx;
    auto db = fx.sales();
    db->ExecuteSQL("create table T (ID NUMBER(6), NAME VARCHAR2(20), BORN DATE, AMOUNT NUMBER(8,2), "
                   "PIC BLOB, DOC CLOB, R RAW(8))");
    db->ExecuteSQL("insert into T (ID, NAME, BORN, AMOUNT) values (1, 'A', to_date('2024/01/31', "
                   "'YYYY/MM/DD'), 12.5)");
    db->ExecuteSQL("insert into T (ID, NAME, BORN, AMOUNT) values (2, null, to_date('2024/02/01 13:05:09', "
                   "'YYYY/MM/DD HH24:MI:SS'), -0.25)");
    db->ExecuteSQL("insert into T (ID) values (null)");
    const QList<CsvColumn> columns =
        columnsOf({{"ID", "NUMBER"}, {"NAME", "VARCHAR2"}, {"BORN", "DATE"}, {"AMOUNT", "NUMBER"},
                   {"PIC", "BLOB"}, {"DOC", "CLOB"}, {"R", "RAW"}});
    auto rows = db->CreateDynaset("select * from T order by ID nulls last", OraDynaset::NoCache);
    // Numbers and dates bare with Null as 0, text quoted with Null as nothing between the
    // quotes, large objects and raw data by their type names; the date alone at midnight.
    QCOMPARE(written(*rows, columns, {}),
             QByteArray("1,\"A\",2024/01/31,12.5,BLOB,CLOB,RAW\r\n"
                        "2,\"\",2024/02/01 13:05:09,-.25,BLOB,CLOB,RAW\r\n"
                        "0,\"\",0,0,BLOB,CLOB,RAW\r\n"));

    // The header names the columns unquoted; LONG and LONG RAW follow their own rules.
    ScriptedRows longs({"N", "L", "LR"}, {{QVariant(), QString("long text"), QByteArray("\x01")}});
    QCOMPARE(written(longs, columnsOf({{"N", "NUMBER"}, {"L", "LONG"}, {"LR", "LONG RAW"}}), {";", true, "'"}),
             QByteArray("N;L;LR\r\n0;long text;LONG RAW\r\n"));
  }

  void separatorsAndQuotesAreWrittenAsTheyStand() {
    const QList<CsvColumn> idName = columnsOf({{"ID", "NUMBER"}, {"NAME", "VARCHAR2"}});
    {
      ScriptedRows rows({"ID", "NAME"}, {{1, QString("A")}, {2, QVariant()}});
      QCOMPARE(written(rows, idName, {",", true, "'"}), QByteArray("ID,NAME\r\n1,'A'\r\n2,''\r\n"));
    }
    {
      // Separators, quotes and line ends inside a value are not escaped.
      ScriptedRows rows({"ID", "NAME"}, {{3, QString("say \"hi\",\tok\r\nbye")}});
      QCOMPARE(written(rows, idName, {"\t", false, "\""}), QByteArray("3\t\"say \"hi\",\tok\r\nbye\"\r\n"));
    }
    {
      // No string separator leaves text bare; a double keeps its shortest form.
      ScriptedRows rows({"ID", "NAME"}, {{0.5, QString("x")}, {-3.0, QString()}, {qlonglong(123456789012LL), QString("y")}});
      QCOMPARE(written(rows, idName, {"|", false, ""}), QByteArray("0.5|x\r\n-3|\r\n123456789012|y\r\n"));
    }
    {
      // An empty table: the header alone, or nothing at all.
      ScriptedRows none({"ID", "NAME"}, {});
      QCOMPARE(written(none, idName, {",", true, "\""}), QByteArray("ID,NAME\r\n"));
      ScriptedRows none2({"ID", "NAME"}, {});
      QCOMPARE(written(none2, idName, {",", false, "\""}), QByteArray());
    }
  }

  void japaneseTextGoesOutInCp932OrUtf8() {
    const QList<CsvColumn> name = columnsOf({{"NAME", "VARCHAR2"}});
    // 顧客, a half-width katakana, the JIS wave dash (written as CP932's tilde, as Windows does) and
    // the Microsoft one.
    const QString text = QString::fromUtf8("顧客ｱ〜～");
    ScriptedRows rows({"NAME"}, {{text}});
    QCOMPARE(written(rows, name, {",", false, ""}).toHex(' '), QByteArray("8c da 8b 71 b1 81 60 81 60 0d 0a"));
    ScriptedRows again({"NAME"}, {{text}});
    QCOMPARE(written(again, name, {",", false, ""}, CsvEncoding::Utf8Bom), "\xEF\xBB\xBF" + text.toUtf8() + "\r\n");

    Cp932Text cp932;
    QCOMPARE(cp932.firstUnencodable(u"abc顧客①髙"), -1);
    QCOMPARE(cp932.firstUnencodable(u"abcé"), 3);
    QCOMPARE(cp932.firstUnencodable(QString::fromUtf8("a😀")), 1);
  }

  void aValueCp932CannotHoldFailsItsTableAndKeepsTheOldFile() {
    QTemporaryDir folder;
    const QString target = folder.path() + "/KOKYAKU.dat";
    QFile old(target);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("yesterday's copy\r\n");
    old.close();
    QList<QVariantList> data;
    for (int i = 1; i <= 300; ++i)
      data.append({i, QString("顧客%1").arg(i)});
    data[250][1] = QString::fromUtf8("Café 顧客");
    ScriptedRows rows({"NO", "NAME"}, data);
    CsvWriter writer(columnsOf({{"NO", "NUMBER"}, {"NAME", "VARCHAR2"}}), {});
    const CsvTableResult result = writer.writeFile(rows, target, CsvEncoding::Cp932);
    QCOMPARE(result.outcome, CsvTableResult::Outcome::Unencodable);
    QCOMPARE(result.column, QString("NAME"));
    QCOMPARE(result.detail, QString::fromUtf8("Café 顧客"));
    QCOMPARE(contentsOf(target), QByteArray("yesterday's copy\r\n"));
    // Nothing half-written is left beside it either.
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"KOKYAKU.dat"});
  }

  void aTableThatFailsMidwayLeavesNoFile() {
    QList<QVariantList> data;
    for (int i = 1; i <= 10; ++i)
      data.append(QVariantList{i});
    ScriptedRows rows({"NO"}, data, 6);
    CsvWriter writer(columnsOf({{"NO", "NUMBER"}}), {});
    const CsvTableResult result = writer.writeFile(rows, path("HALF.dat"), CsvEncoding::Cp932);
    QCOMPARE(result.outcome, CsvTableResult::Outcome::ReadFailed);
    QVERIFY(result.rows <= 6);
    QVERIFY(result.detail.startsWith("ORA-00028"));
    QVERIFY(!QFile::exists(path("HALF.dat")));

    // A folder that is not there: the file cannot be created, and says why.
    ScriptedRows more({"NO"}, data);
    const CsvTableResult missing = writer.writeFile(more, path("nowhere/X.dat"), CsvEncoding::Cp932);
    QCOMPARE(missing.outcome, CsvTableResult::Outcome::CannotWrite);
    QVERIFY(!missing.detail.isEmpty());

    // The clipboard's text: the whole table, the same lines, or nothing when it fails.
    ScriptedRows text({"NO"}, {{1}, {2}});
    QString clip = "before";
    QCOMPARE(writer.writeText(text, clip).rows, 2);
    QCOMPARE(clip, QString("1\r\n2\r\n"));
    ScriptedRows broken({"NO"}, data, 2);
    QCOMPARE(writer.writeText(broken, clip).outcome, CsvTableResult::Outcome::ReadFailed);
    QVERIFY(clip.isEmpty());
  }

  // The dialog's tests read and write the five values the user sees; the encoding and the
  // default folder are set apart from them.
  void theEncodingAndDefaultFolderSettings() {
    QTemporaryDir dir;
    ScriptedMessageBoxes boxes;
    PlatformRegistry registry{{dir.path() + "/config", dir.path() + "/autostart"}, {}};
    clsREG reg(registry, boxes);
    QCOMPARE(ExportSettings::read(reg, "/the/default").encoding, CsvEncoding::Cp932);
    QCOMPARE(ExportSettings::read(reg, "/the/default").outPath, QString("/the/default"));
    WriteJvkSetting(reg, "CSVEncoding", "utf-8"); // in any case of the letters
    QCOMPARE(ExportSettings::read(reg, {}).encoding, CsvEncoding::Utf8Bom);
    QCOMPARE(DefaultExportFolder(dir.path()), dir.path());
    QCOMPARE(DefaultExportFolder(dir.path() + "/missing"), QDir::homePath());
  }

  void theFileOutputJobFramesTheDialog() {
    BDBSWEEP state;
    ManualClock clock;
    ScriptedMessageBoxes boxes;
    RecordingSink sink(false);
    InlineStatements statements;
    state.gJobTimer = std::make_unique<clsTimer>(clock);
    JobContext context{state, sink, statements, clock, boxes};
    JobPlan plan;
    plan.targets = {{"KOKYAKU", "顧客", 2}, {"JUCHU", "", 5}};
    RecordingDialog dialog(sink);
    RunFileOutputJob(plan, context, dialog);
    QCOMPARE(sink.lines, (QStringList{"<heading>", "GR|＝＝＝ファイル出力開始＝＝＝", "prepare KOKYAKU/顧客",
                                      "prepare JUCHU/", "BY|開始: 2026/01/05 09:00:00", "|", "run", "|",
                                      "by|終了: 2026/01/05 09:00:00", "|所要時間(Sec)        0",
                                      "GR|＝＝＝ファイル出力終了＝＝＝"}));
  }
};

QTEST_GUILESS_MAIN(TestExport)
#include "test_export.moc"
