#include "EngineFixture.h"

#include "db/OraSession.h"
#include "db/local/DemoInstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QStringDecoder>
#include <QStringEncoder>

namespace {

QByteArray contentsOf(const QString& path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile f(path);
  QVERIFY(f.open(QIODevice::WriteOnly));
  f.write(bytes);
}

// Records of a name-master file: ID then name, separated by commas or line ends; a quoted field
// may hold commas, an unquoted one loses its surrounding blanks.
QList<QPair<QString, QString>> masterRecords(const QString& text) {
  QStringList fields;
  qsizetype i = 0;
  while (i < text.size()) {
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\r' || text[i] == u'\n'))
      ++i;
    if (i >= text.size())
      break;
    QString field;
    if (text[i] == u'"') {
      const qsizetype close = text.indexOf(u'"', i + 1);
      field = text.mid(i + 1, close - i - 1);
      i = close + 1;
    } else {
      const qsizetype start = i;
      while (i < text.size() && text[i] != u',' && text[i] != u'\r' && text[i] != u'\n')
        ++i;
      field = text.mid(start, i - start).trimmed();
    }
    while (i < text.size() && text[i] == u' ')
      ++i;
    if (i < text.size() && text[i] == u',')
      ++i;
    fields << field;
  }
  QList<QPair<QString, QString>> records;
  for (qsizetype f = 0; f + 1 < fields.size(); f += 2)
    records.append({fields[f], fields[f + 1]});
  return records;
}

} // namespace

class TestDemo final : public QObject {
  Q_OBJECT

  QTemporaryDir m_data;
  QString m_instances = m_data.path() + QStringLiteral("/instances");
  DbEnvironment m_env;
  std::shared_ptr<OraDatabase> m_quil;

  std::shared_ptr<OraDatabase> logOn(const QString& connect) const {
    return OraSession(m_env).OpenDatabase(QStringLiteral("local:demo"), connect, 0);
  }
  QStringList instanceFolders() const {
    return QDir(m_instances).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  }

private Q_SLOTS:
  void initTestCase() {
    qputenv("DBSWEEP_DATA_DIR", m_data.path().toUtf8());
    qputenv("DBSWEEP_DEMO_DIR", DEMO_DIR);
    m_env = DbEnvironment::from(QProcessEnvironment::systemEnvironment());
    m_env.programFolder = m_data.path() + QStringLiteral("/bin");
    m_env.settingsFolder = m_data.path() + QStringLiteral("/config");
    QVERIFY(QDir().mkpath(m_env.programFolder));
  }

  void aKilledBuildIsDoneAgain() {
    // A build killed mid-way leaves its folder, never an instance.
    QProcess builder;
    builder.start(DBSWEEP_SQL, {"QUIL/QTJL@local:demo"});
    builder.closeWriteChannel();
    QVERIFY(builder.waitForStarted());
    const QString killed = QStringLiteral(".demo-building-%1-").arg(builder.processId());
    const auto building = [&] {
      return QDir(m_instances).entryList({killed + '*'}, QDir::Dirs | QDir::Hidden).value(0);
    };
    QTRY_VERIFY_WITH_TIMEOUT(
        !building().isEmpty() && QFileInfo::exists(m_instances + '/' + building() + "/QUIL.schema"), 20000);
    builder.kill();
    QVERIFY(builder.waitForFinished());
    QCOMPARE(instanceFolders().size(), 1);
    QVERIFY(instanceFolders()[0].startsWith(killed));
    QVERIFY(DemoInstance::needsBuild(m_env));
    // A folder of a builder that still runs (here, this process) stays.
    const QString running = QStringLiteral(".demo-building-%1-other").arg(QCoreApplication::applicationPid());
    QVERIFY(QDir(m_instances).mkdir(running));

    QList<QPair<int, QString>> reports;
    QElapsedTimer clock;
    clock.start();
    DemoInstance::ensure(m_instances + "/demo", DEMO_DIR, [&](int percent, const QString& step) {
      reports.append({percent, step});
    });
    qInfo("demo instance built in %lld ms", clock.elapsed());
    QCOMPARE(instanceFolders(), QStringList({running, DemoInstance::Name}));
    QVERIFY(QDir(m_instances + u'/' + running).removeRecursively());
    QVERIFY(!DemoInstance::needsBuild(m_env));

    // The percentage only grows, from 0 to 100, in steps small enough to show movement.
    QVERIFY(reports.size() > 50);
    QCOMPARE(reports.first().first, 0);
    QCOMPARE(reports.last().first, 100);
    QSet<QString> steps;
    for (qsizetype i = 0; i < reports.size(); ++i) {
      QVERIFY(i == 0 || reports[i].first >= reports[i - 1].first);
      QVERIFY(!reports[i].second.isEmpty());
      steps.insert(reports[i].second);
    }
    QVERIFY(steps.size() > 3);
  }

  void logonsUseTheInstance() {
    // A name-master file the user already has is kept.
    QVERIFY(QDir().mkpath(m_env.settingsFolder));
    writeFile(m_env.settingsFolder + "/TBCLMM.dat", "OWN,mine\r\n");
    m_quil = logOn(QStringLiteral("quil/QTJL"));
    QCOMPARE(instanceFolders(), QStringList({DemoInstance::Name}));

    m_quil->ExecuteSQL("insert into tbtblm values ('WK_TEST', 'テスト')");
    QCOMPARE(rowsOf(*logOn("QUIL/QTJL"), "select tbl_nm from tbtblm where tbl_id = 'WK_TEST'"),
             QStringList({"テスト"}));
    m_quil->ExecuteSQL("delete from tbtblm where tbl_id = 'WK_TEST'");
    QCOMPARE(errorOf([this] { logOn("QUIL/wrong"); }), 1017);
    QCOMPARE(rowsOf(*logOn("system/MANAGER"), "select user from dual"), QStringList({"SYSTEM"}));

    // The missing one arrives in the settings folder; the program's folder is never written.
    QCOMPARE(contentsOf(m_env.settingsFolder + "/TBTBLM.dat"), contentsOf(DEMO_DIR "/TBTBLM.dat"));
    QCOMPARE(contentsOf(m_env.settingsFolder + "/TBCLMM.dat"), QByteArray("OWN,mine\r\n"));
    QCOMPARE(QDir(m_env.programFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
  }

  void aLateBuilderUsesTheWinnersInstance() {
    QTemporaryDir dir;
    const QString folder = dir.path() + QStringLiteral("/demo");
    for (const char* name : {"/.first", "/.second"})
      LocalEngine::createInstance(dir.path() + name, QString::fromLatin1(name + 2));
    QVERIFY(DemoInstance::install(dir.path() + "/.first", folder));
    QVERIFY(!DemoInstance::install(dir.path() + "/.second", folder));
    QVERIFY(LocalEngine::instanceExists(dir.path() + "/.second")); // the loser removes its own copy
    QCOMPARE(errorOf([&] { LocalEngine::connect(folder, "system", "second"); }), 1017);
    OraDatabase winner(LocalEngine::connect(folder, "system", "first"));
    QCOMPARE(rowsOf(winner, "select user from dual"), QStringList({"SYSTEM"}));
    // A folder in the way that is no instance is an error, not a win for somebody else.
    QDir().mkpath(dir.path() + "/junk/file");
    QString text;
    QCOMPARE(errorOf([&] { DemoInstance::install(dir.path() + "/.second", dir.path() + "/junk"); }, &text), 1501);
    QVERIFY2(text.contains("cannot move the new instance to " + dir.path() + "/junk"), qPrintable(text));
  }

  void dictionaryOfQuil() {
    QCOMPARE(rowsOf(*m_quil, "select table_name from all_tables where upper(owner) = upper('quil') order by 1"),
             QStringList({"ACCESS_LOG", "JUCHU", "JUCHU_MEISAI", "KOKYAKU", "KOKYAKU_MEMO", "NYUKIN", "POINT_RIREKI",
                          "SEIKYU", "SHAIN", "SHOHIN", "SHUKKA", "TAIO_RIREKI", "TBCLMM", "TBTBLM"}));
    // Display names: the master row first, then the comment (one that merely repeats the ID
    // does not count), else the ID, which the name-master files may still name.
    QCOMPARE(rowsOf(*m_quil,
                    "select a.table_name, nvl(b.tbl_nm, nvl(c.comments, a.table_name)) from all_tables a "
                    "left join tbtblm b on b.tbl_id = a.table_name left join all_tab_comments c on "
                    "c.table_name = a.table_name and c.owner = a.owner where upper(a.owner) = upper('QUIL') union "
                    "select a.view_name, nvl(b.tbl_nm, nvl(c.comments, a.view_name)) from all_views a left join "
                    "tbtblm b on b.tbl_id = a.view_name left join all_tab_comments c on c.table_name = a.view_name "
                    "and c.owner = a.owner where upper(a.owner) = upper('QUIL') order by 1"),
             QStringList({"ACCESS_LOG|ACCESS_LOG", "JUCHU|受注ヘッダ", "JUCHU_MEISAI|受注明細", "KOKYAKU|顧客マスタ",
                          "KOKYAKU_MEMO|KOKYAKU_MEMO", "NYUKIN|NYUKIN", "POINT_RIREKI|POINT_RIREKI", "SEIKYU|請求",
                          "SHAIN|社員マスタ", "SHOHIN|商品マスタ", "SHUKKA|SHUKKA", "TAIO_RIREKI|顧客対応履歴",
                          "TBCLMM|項目名称マスタ", "TBTBLM|テーブル名称マスタ", "V_JUCHU_ICHIRAN|受注一覧（ビュー）"}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from tbtblm"), QStringList({"8"}));
    QCOMPARE(rowsOf(*m_quil,
                    "select a.column_name, nvl(b.clm_nm, nvl(c.comments, a.column_name)) from all_tab_columns a "
                    "left join tbclmm b on b.clm_id = a.column_name, all_col_comments c where a.owner = 'QUIL' and "
                    "a.table_name = 'KOKYAKU' and c.owner = a.owner and c.table_name = a.table_name and "
                    "c.column_name = a.column_name and a.column_id in (1, 4, 12, 21) order by a.column_id"),
             QStringList({"KOKYAKU_NO|顧客番号", "KOJIN_HOJIN_KBN|個人法人区分（1:個人 2:法人）",
                          "SEINENGAPPI|生年月日", "KOSHIN_DT|更新日時"}));

    // Every Oracle type the program shows, and one wide table.
    QCOMPARE(rowsOf(*m_quil, "select distinct data_type from all_tab_columns where owner = 'QUIL' order by 1"),
             QStringList({"BLOB", "CHAR", "CLOB", "DATE", "LONG", "NUMBER", "RAW", "VARCHAR2"}));
    QCOMPARE(rowsOf(*m_quil, "select data_precision, data_scale from all_tab_columns where owner = 'QUIL' and "
                             "column_name = 'POINT_ZANDAKA'"),
             QStringList({"<null>|<null>"}));
    QCOMPARE(rowsOf(*m_quil, "select max(column_id) from all_tab_columns where table_name = 'KOKYAKU' and owner = "
                             "'QUIL'"),
             QStringList({"21"}));

    QCOMPARE(rowsOf(*m_quil, "select constraint_type, count(*) from all_constraints where owner = 'QUIL' and "
                             "constraint_type in ('P', 'U', 'R') group by constraint_type order by 1"),
             QStringList({"P|14", "R|10", "U|4"}));
    QCOMPARE(rowsOf(*m_quil, "select constraint_type, r_constraint_name, delete_rule from all_constraints where "
                             "owner = 'QUIL' and constraint_name = 'FK_MEISAI_JUCHU'"),
             QStringList({"R|PK_JUCHU|CASCADE"}));
    QCOMPARE(rowsOf(*m_quil, "select column_name from all_ind_columns where index_name = 'IX_ACCESS_LOG_KOKYAKU' "
                             "order by column_position"),
             QStringList({"KOKYAKU_NO", "ACCESS_DT"}));

    // The keys the clean-up is driven by are shared widely.
    QCOMPARE(rowsOf(*m_quil, "select table_name from all_tab_columns where column_name = 'KOKYAKU_NO' and "
                             "upper(owner) = upper('QUIL') and table_name in (select table_name from "
                             "all_tab_columns where column_name = 'JUCHU_NO' and owner = 'QUIL') order by 1"),
             QStringList({"JUCHU", "POINT_RIREKI", "SEIKYU", "SHUKKA", "TAIO_RIREKI", "V_JUCHU_ICHIRAN"}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from all_tab_columns where column_name = 'KOKYAKU_NO' and owner = "
                             "'QUIL'"),
             QStringList({"10"}));

    // The sequences go on after the generated numbers.
    QVERIFY(rowsOf(*m_quil, "select seq_kokyaku_no.nextval - max(kokyaku_no) from kokyaku")[0].toInt() > 0);
    QVERIFY(rowsOf(*m_quil, "select seq_juchu_no.nextval - max(juchu_no) from juchu")[0].toInt() > 0);
  }

  void generatedRowsHangTogether() {
    QCOMPARE(rowsOf(*m_quil, "select count(*) from access_log"),
             QStringList({QString::number(DemoInstance::AccessLogRows)}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from kokyaku"), QStringList({QString::number(DemoInstance::Customers)}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from juchu"), QStringList({QString::number(DemoInstance::Orders)}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from taio_rireki"),
             QStringList({QString::number(DemoInstance::ContactRecords)}));
    const QStringList none{"0"};
    // Order amounts are the sums of their lines; invoices and payments follow the order's state.
    QCOMPARE(rowsOf(*m_quil, "select count(*) from juchu j where zeinuki_gaku <> (select sum(kingaku) from "
                             "juchu_meisai m where m.juchu_no = j.juchu_no) or shohizei_gaku <> "
                             "trunc(zeinuki_gaku / 10)"),
             none);
    QCOMPARE(rowsOf(*m_quil, "select count(*) from seikyu s, juchu j where s.juchu_no = j.juchu_no and "
                             "(s.seikyu_gaku <> j.zeinuki_gaku + j.shohizei_gaku or j.jotai_kbn not in ('2', '3') "
                             "or s.kokyaku_no <> j.kokyaku_no)"),
             none);
    QCOMPARE(rowsOf(*m_quil, "select count(*) from juchu where jotai_kbn = '3' and juchu_no not in (select "
                             "s.juchu_no from seikyu s, nyukin n where n.seikyu_no = s.seikyu_no)"),
             none);
    QCOMPARE(rowsOf(*m_quil, "select count(*) from kokyaku k where kojin_hojin_kbn = '1' and point_zandaka <> "
                             "(select nvl(sum(point), 0) from point_rireki p where p.kokyaku_no = k.kokyaku_no)"),
             none);
    // Tables without a foreign key still only name real customers.
    for (const char* table : {"ACCESS_LOG", "TAIO_RIREKI", "SHUKKA", "NYUKIN"})
      QCOMPARE(rowsOf(*m_quil, QStringLiteral("select count(*) from %1 where kokyaku_no not in (select kokyaku_no "
                                              "from kokyaku)")
                                   .arg(QLatin1String(table))),
               none);
    QCOMPARE(rowsOf(*m_quil, "select count(*) from access_log where access_dt < '2024/04/01 00:00:00' or access_dt "
                             "> '2025/03/31 23:59:59'"),
             none);
  }

  void oldOwnerStaysOutOfQuilsCatalogue() {
    QCOMPARE(rowsOf(*m_quil, "select table_name from all_tables where owner = 'QUIL_OLD' order by 1"),
             QStringList({"IKO_KANRI", "JUCHU", "JUCHU_MEISAI", "KOKYAKU", "TAIO_RIREKI"}));
    QCOMPARE(rowsOf(*m_quil, "select owner from all_tables where table_name = 'KOKYAKU' order by 1"),
             QStringList({"QUIL", "QUIL_OLD"}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from all_tables where upper(owner) = upper('QUIL') and table_name in "
                             "('KOKYAKU', 'JUCHU', 'IKO_KANRI')"),
             QStringList({"2"}));
    QCOMPARE(rowsOf(*m_quil, "select count(*) from all_tab_comments where upper(owner) = upper('QUIL') and comments "
                             "like '%旧システム%'"),
             QStringList({"0"}));
    auto old = logOn("QUIL_OLD/QUILOLD");
    QCOMPARE(rowsOf(*old, "select count(*) from kokyaku"), QStringList({"5"}));
    QCOMPARE(rowsOf(*old, "select count(*) from juchu where kokyaku_no = 100001"), QStringList({"1"}));
    QCOMPARE(errorOf([&] { old->ExecuteSQL("alter system kill session '1,1'"); }), 1031);
  }

  void quilMayKillSessions() {
    auto victim = logOn("QUIL/QTJL");
    const QString id = rowsOf(*victim, "select sid || ',' || serial# from v$session where status = 'ACTIVE'").value(0);
    QVERIFY(!id.isEmpty());
    QCOMPARE(m_quil->ExecuteSQL("alter system kill session '" + id + "'"), qint64(0));
    QCOMPARE(errorOf([&] { rowsOf(*victim, "select count(*) from kokyaku"); }), 28);
  }

  void nameMasterFilesAreShiftJis() {
    QStringList tables = rowsOf(*m_quil, "select table_name from all_tables where owner = 'QUIL'");
    tables += rowsOf(*m_quil, "select view_name from all_views where owner = 'QUIL'");
    const QStringList columns =
        rowsOf(*m_quil, "select distinct column_name from all_tab_columns where owner = 'QUIL'");
    QHash<QString, QList<QPair<QString, QString>>> records;
    for (const QString& file : DemoInstance::NameMasterFiles) {
      const QByteArray bytes = contentsOf(QStringLiteral(DEMO_DIR "/") + file);
      QVERIFY(!bytes.isEmpty());
      QStringDecoder utf8(QStringDecoder::Utf8);
      const QString asUtf8 = utf8.decode(bytes);
      QVERIFY2(utf8.hasError(), qPrintable(file + " is UTF-8, not the ANSI code page"));
      QStringDecoder cp932("windows-31j");
      const QString text = cp932.decode(bytes);
      QVERIFY(!cp932.hasError());
      records[file] = masterRecords(text);
      // Each ID names something of QUIL's: a table or view, or a column.
      for (const auto& [id, name] : records[file]) {
        QVERIFY2((file.startsWith(u"TBTBLM") ? tables : columns).contains(id), qPrintable(file + ": " + id));
        QVERIFY(!name.isEmpty());
      }
    }
    QCOMPARE(records["TBTBLM.dat"].value(0), qMakePair(QString("NYUKIN"), QString("入金")));
    QVERIFY(records["TBTBLM.dat"].contains(qMakePair(QString("POINT_RIREKI"), QString("ポイント履歴（付与,利用）"))));
    QVERIFY(records["TBTBLM.dat"].contains(qMakePair(QString("SHUKKA"), QString("出荷"))));
    QVERIFY(records["TBCLMM.dat"].contains(
        qMakePair(QString("NYUKIN_HOHO_KBN"), QString("入金方法（1:振込,2:カード,3:代引,4:コンビニ）"))));
    QCOMPARE(records["TBCLMM.dat"].size(), 13);

    // What the program exports is written in the same code page, so the data must fit it.
    QStringEncoder encoder("windows-31j");
    for (const QString& row : rowsOf(*m_quil, "select kokyaku_nm || kokyaku_kana || jusho1 || jusho2 || biko from "
                                              "kokyaku union all select kenmei || naiyo from taio_rireki")) {
      const QByteArray encoded = encoder.encode(row);
      QVERIFY2(!encoder.hasError(), qPrintable(row));
    }
  }

  void failuresSayWhatWentWrong() {
    QTemporaryDir dir;
    const QString folder = dir.path() + QStringLiteral("/instances/demo");
    QString text;
    QCOMPARE(errorOf([&] { DemoInstance::ensure(folder, dir.path() + "/nowhere"); }, &text), 1501);
    QVERIFY2(text.contains("nowhere/demo.sql is missing") && text.contains("DBSWEEP_DEMO_DIR"), qPrintable(text));
    // The hook passes the data and demo folders on.
    QCOMPARE(
        errorOf([&] {
          OraSession(DbEnvironment{dir.path(), dir.path() + "/nowhere"}).OpenDatabase("local:demo", "QUIL/QTJL", 0);
        }),
        1501);
    QCOMPARE(errorOf([&] {
               OraSession(DbEnvironment{dir.path(), DEMO_DIR}).OpenDatabase("local:other", "QUIL/QTJL", 0);
             }),
             12154);
    // Without a demo folder of its own, the demo comes from the program's.
    DbEnvironment installed{dir.path()};
    installed.programFolder = dir.path() + "/bin";
    QCOMPARE(errorOf([&] { OraSession(installed).OpenDatabase("local:demo", "QUIL/QTJL", 0); }, &text), 1501);
    QVERIFY2(text.contains(dir.path() + "/bin/demo/demo.sql is missing"), qPrintable(text));
    QVERIFY(!QFileInfo::exists(dir.path() + "/instances/other"));

    // A broken script names its line, and nothing half-built stays behind.
    const QString source = dir.path() + QStringLiteral("/broken");
    QDir().mkpath(source);
    writeFile(source + "/demo.sql", "create table t (x number);\n\ninsert into nowhere values (1);\n");
    for (const QString& file : DemoInstance::NameMasterFiles)
      writeFile(source + u'/' + file, "T,x\r\n");
    QCOMPARE(errorOf([&] { DemoInstance::ensure(folder, source); }, &text), 942);
    QCOMPARE(text, QString("ORA-00942: table or view does not exist (demo.sql line 3; the demo instance was not "
                           "created)"));
    QCOMPARE(QDir(dir.path() + "/instances").entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
    writeFile(source + "/demo.sql", "create table t (x number)\n");
    QCOMPARE(errorOf([&] { DemoInstance::ensure(folder, source); }, &text), 1501);
    QVERIFY2(text.contains("demo.sql line 1: the statement does not end"), qPrintable(text));
  }
};

QTEST_GUILESS_MAIN(TestDemo)
#include "test_demo.moc"
