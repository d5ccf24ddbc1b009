#include "ScriptedMessageBoxes.h"
#include "browser/NameMasters.h"
#include "platform/FileRegistry.h"
#include "settings/RegSetting.h"
#include "settings/clsREG.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

namespace {

using Record = QPair<QString, QString>;

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  QCOMPARE(file.write(bytes), bytes.size());
}

QList<Record> recordsOf(const NameMasterFile& master) {
  QList<Record> records;
  for (int i = 1; i <= master.count(); ++i)
    records.append({master.id(i), master.name(i)});
  return records;
}

// Writes bytes to a file of its own and reads it back as a master.
QList<Record> readBytes(const QByteArray& bytes) {
  QTemporaryDir dir;
  const QString path = dir.filePath("master.dat");
  writeFile(path, bytes);
  NameMasterFile master;
  master.load(path);
  return recordsOf(master);
}

QList<Record> readText(const QString& text) { return readBytes(text.toUtf8()); }

} // namespace

class TestNameMasters final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void readsFieldsWithListInputRules() {
    // Blanks around unquoted fields go; quoted fields keep theirs and may hold commas. CR LF and
    // LF both end lines, and a last line without a line break still counts.
    QCOMPARE(readText(QString("  NYUKIN ,\t入金 \t\r\n\"SHUKKA\",\"出荷, 返品\"\r\n\" A \", \" b \"\nLAST,最後")),
             (QList<Record>{{"NYUKIN", "入金"}, {"SHUKKA", "出荷, 返品"}, {" A ", " b "}, {"LAST", "最後"}}));
    // Only spaces and tabs are blanks: an ideographic space belongs to the name.
    QCOMPARE(readText(QString("X,\u3000名\u3000\n")), (QList<Record>{{"X", "\u3000名\u3000"}}));
    // Blank lines hold no field, but an empty field after a comma is a field.
    QCOMPARE(readText(QString("\r\n\r\nA,1\r\n   \r\n\r\nB,\r\nC,3\r\n\r\n")),
             (QList<Record>{{"A", "1"}, {"B", ""}, {"C", "3"}}));
    // Text between a closing quote and the comma is dropped; an unclosed quote runs to the end.
    QCOMPARE(readText(QString("\"A\"x ,1\nB,\"open, to the end\nC,3")),
             (QList<Record>{{"A", "1"}, {"B", "open, to the end\nC,3"}}));
    // An unquoted comma in a name starts the next record; the record left without a name at the
    // end is dropped, and so is a lone ID on the last line.
    QCOMPARE(readText(QString("KOKYAKU,顧客,個人\r\nSHOHIN,商品\r\n")),
             (QList<Record>{{"KOKYAKU", "顧客"}, {"個人", "SHOHIN"}}));
    QCOMPARE(readText(QString("A,1\nB")), (QList<Record>{{"A", "1"}}));
    QCOMPARE(readText(QString("A,1,")), (QList<Record>{{"A", "1"}}));
    QCOMPARE(readText(QString("A,")), (QList<Record>{{"A", ""}}));
  }

  void missingEmptyAndUnreadableFilesGiveNoRecords() {
    QTemporaryDir dir;
    NameMasterFile master;
    master.load(dir.filePath("TBTBLM.dat"));
    QCOMPARE(master.count(), 0);
    QCOMPARE(master.lookup("NYUKIN"), QString("NYUKIN"));

    writeFile(dir.filePath("full.dat"), "NYUKIN,N\nSHUKKA,S\n");
    master.load(dir.filePath("full.dat"));
    QCOMPARE(master.count(), 2);
    // Loading again replaces what was there, also when the new file is missing or unreadable.
    master.load(dir.filePath("missing.dat"));
    QCOMPARE(master.count(), 0);
    QCOMPARE(master.lookup("NYUKIN"), QString("NYUKIN"));
    master.load(dir.filePath("full.dat"));
    master.load(dir.path());
    QCOMPARE(master.count(), 0);

    QCOMPARE(readBytes(QByteArray()), QList<Record>{});
    QCOMPARE(readBytes(QByteArray("\r\n  \r\n\t\n")), QList<Record>{});
    QCOMPARE(readBytes(QByteArray("\xEF\xBB\xBF")), QList<Record>{});
  }

  void recognisesShiftJisAndUtf8() {
    const QString text = "NYUKIN,入金\r\nPOINT_RIREKI,\"ポイント履歴（付与,利用）\"\r\nSHUKKA,出荷";
    const QList<Record> expected{{"NYUKIN", "入金"}, {"POINT_RIREKI", "ポイント履歴（付与,利用）"}, {"SHUKKA", "出荷"}};

    QStringEncoder shiftJis("Shift_JIS");
    const QByteArray sjisBytes = shiftJis.encode(text);
    QVERIFY(!shiftJis.hasError());
    QCOMPARE(readBytes(sjisBytes), expected);
    // "縺" is E3 81 in Shift_JIS, which is also how a cut-off UTF-8 sequence begins: the file is
    // still not UTF-8.
    const QByteArray cutShort = QStringEncoder("Shift_JIS").encode(QString("A,縺"));
    QCOMPARE(cutShort, QByteArray("A,\xE3\x81"));
    QCOMPARE(readBytes(cutShort), (QList<Record>{{"A", "縺"}}));

    QCOMPARE(readBytes(text.toUtf8()), expected);
    // The byte-order mark is not part of the first ID.
    QCOMPARE(readBytes("\xEF\xBB\xBF" + text.toUtf8()), expected);
    // A byte-order mark settles it even when a stray byte follows.
    QCOMPARE(readBytes("\xEF\xBB\xBF" + QString("A,名").toUtf8() + "\xFF"), (QList<Record>{{"A", "名\uFFFD"}}));
    QCOMPARE(readBytes("\xEF\xBB\xBF\" A\",x"), (QList<Record>{{" A", "x"}}));
  }

  void lookupsMatchWholeIdsAndTheFirstRecordWins() {
    QTemporaryDir dir;
    writeFile(dir.filePath("m.dat"), QString("TBL_A,最初\nTBL_A,二番目\ntbl_b,小文字\n\" TBL_C\",空白付き\n").toUtf8());
    NameMasterFile master;
    master.load(dir.filePath("m.dat"));
    QCOMPARE(master.count(), 4);
    QCOMPARE(master.lookup("TBL_A"), QString("最初"));
    // The duplicate stays in the file's records; it is only never found.
    QCOMPARE(master.id(2), QString("TBL_A"));
    QCOMPARE(master.name(2), QString("二番目"));
    QCOMPARE(master.lookup("tbl_b"), QString("小文字"));
    QCOMPARE(master.lookup("TBL_B"), QString("TBL_B"));
    QCOMPARE(master.lookup(" TBL_C"), QString("空白付き"));
    QCOMPARE(master.lookup("TBL_C"), QString("TBL_C"));
    QCOMPARE(master.id(0), QString());
    QCOMPARE(master.name(5), QString());
  }

  void loadNameMastersFollowsSettingsAndFolders() {
    QTemporaryDir dir;
    FileRegistry store(dir.filePath("config"));
    ScriptedMessageBoxes boxes;
    clsREG registry(store, boxes);
    const QString program = dir.filePath("program");
    const QString settings = dir.filePath("settings");
    QVERIFY(QDir().mkpath(program));
    QVERIFY(QDir().mkpath(settings));
    const QStringList folders{program, settings};

    // Each file is taken from the first folder that has it.
    writeFile(program + "/TBTBLM.dat", QString("NYUKIN,入金\n").toUtf8());
    writeFile(settings + "/TBTBLM.dat", QString("NYUKIN,設定側\n").toUtf8());
    writeFile(settings + "/TBCLMM.dat", QString("NYUKIN_DT,入金日\n").toUtf8());
    NameMasters masters;
    LoadNameMasters(masters, registry, folders);
    QCOMPARE(TableDisplayName(masters, "NYUKIN"), QString("入金"));
    QCOMPARE(ColumnDisplayName(masters, "NYUKIN_DT"), QString("入金日"));
    // Tables and columns are separate masters.
    QCOMPARE(ColumnDisplayName(masters, "NYUKIN"), QString("NYUKIN"));
    QVERIFY(QFile::remove(program + "/TBTBLM.dat"));
    LoadNameMasters(masters, registry, folders);
    QCOMPARE(TableDisplayName(masters, "NYUKIN"), QString("設定側"));

    // The settings name the files; a master whose file is nowhere ends up empty.
    RegSetting(registry, "W", "JVK", "TBLM", QString("MYTBL"));
    RegSetting(registry, "W", "JVK", "CLMM", QString("MYCLM"));
    writeFile(settings + "/MYTBL.dat", QString("SHUKKA,出荷\n").toUtf8());
    LoadNameMasters(masters, registry, folders);
    QCOMPARE(masters.tables.count(), 1);
    QCOMPARE(TableDisplayName(masters, "SHUKKA"), QString("出荷"));
    QCOMPARE(TableDisplayName(masters, "NYUKIN"), QString("NYUKIN"));
    QCOMPARE(masters.columns.count(), 0);
    QCOMPARE(ColumnDisplayName(masters, "NYUKIN_DT"), QString("NYUKIN_DT"));
    QVERIFY(boxes.shown().isEmpty());
  }
};

QTEST_GUILESS_MAIN(TestNameMasters)
#include "test_namemasters.moc"
