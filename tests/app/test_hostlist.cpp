#include "app/HostList.h"
#include "app/PasswordScramble.h"
#include "db/local/LocalEngine.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

void writeFile(const QString& path, const QByteArray& text) {
  QDir().mkpath(QFileInfo(path).path());
  QFile f(path);
  QVERIFY(f.open(QIODevice::WriteOnly));
  f.write(text);
}

QString fromCodes(std::initializer_list<char32_t> codes) {
  return QString::fromUcs4(codes.begin(), qsizetype(codes.size()));
}

const QByteArray OrclWorld = "ORCL.WORLD =\n"
                             "  (DESCRIPTION =\n"
                             "    (ADDRESS = (PROTOCOL = TCP)(HOST = db1)(PORT = 1521))\n"
                             "    (CONNECT_DATA = (SID = ORCL))\n"
                             "  )\n";

} // namespace

class TestHostList final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void scrambleMovesEachCharacterByItsPosition() {
    QCOMPARE(ScramblePassword("QTJL"), QString("RVMP"));
    QCOMPARE(UnscramblePassword("RVMP"), QString("QTJL"));
    QCOMPARE(ScramblePassword(fromCodes({65, 66, 67})), fromCodes({66, 68, 70}));
    QCOMPARE(ScramblePassword("ああ"), QString("ぃい"));
    QCOMPARE(ScramblePassword("😀😀"), QString("😁😂"));
    // The surrogate block is jumped over and the end wraps round to U+0001, both ways.
    QCOMPARE(ScramblePassword(fromCodes({0xD7FF, 0xD7FE})), fromCodes({0xE000, 0xE000}));
    QCOMPARE(UnscramblePassword(fromCodes({0xE000})), fromCodes({0xD7FF}));
    QCOMPARE(ScramblePassword(fromCodes({0x10FFFF, 0x10FFFF})), fromCodes({0x1, 0x2}));
    QCOMPARE(UnscramblePassword(fromCodes({0x1})), fromCodes({0x10FFFF}));
    QCOMPARE(ScramblePassword(fromCodes({0xFEFE})), QString(QChar(0xFEFF)));
    QCOMPARE(UnscramblePassword(fromCodes({0x1, 0x1, 0x1})), fromCodes({0x10FFFF, 0x10FFFE, 0x10FFFD}));
    QCOMPARE(ScramblePassword(QString("A") + QChar(u'\0')), QString("B") + QChar(u'\0'));
    QCOMPARE(UnscramblePassword(ScramblePassword(QString(QChar(0xD800)))), QString(QChar::ReplacementCharacter));
  }

  void scrambleIsInverseForEveryCharacterAtEveryShift() {
    // Every scalar value once, so each is moved by a different amount, many of them past the end.
    QList<char32_t> all;
    for (char32_t c = 1; c <= 0x10FFFF; ++c)
      if (c < 0xD800 || c > 0xDFFF)
        all.append(c);
    const QString password = QString::fromUcs4(all.constData(), all.size());
    const QString stored = ScramblePassword(password);
    QVERIFY(stored.isValidUtf16());
    QVERIFY(!stored.contains(QChar(u'\0')));
    QCOMPARE(stored.toUcs4().size(), all.size());
    QVERIFY(stored != password);
    QVERIFY(UnscramblePassword(stored) == password);
    QVERIFY(ScramblePassword(UnscramblePassword(password)) == password);
    QVERIFY(UnscramblePassword(password).isValidUtf16());
  }

  void tnsNamesLineRules() {
    QTemporaryDir dir;
    const QString path = dir.filePath("tnsnames.ora");
    writeFile(path, "# comment =\n" + OrclWorld +
                        "\n  INDENTED = x\nSALES = (DESCRIPTION = x)\n"
                        "\t(ADDRESS = x)\n(DESCRIPTION =\nNOEQUALS\nA=B\n"
                        "PROD . DOMAIN  = x\nX.Y.Z =\nT1\t = x\nLAST =");
    QCOMPARE(ReadTnsNames(path),
             QStringList({"ORCL", "SALES", "\t(ADDRESS", "(DESCRIPTION", "", "", "PROD", "X", "T1\t", "LAST"}));
    writeFile(path, OrclWorld);
    QCOMPARE(ReadTnsNames(path), QStringList{"ORCL"});
    writeFile(path, "A =\r\n  (D = 1)\r\n\r\nB.W =\r\n");
    QCOMPARE(ReadTnsNames(path), QStringList({"A", "B"}));
    QCOMPARE(ReadTnsNames(dir.filePath("missing.ora")), QStringList());
  }

  void hostListReadsBothFilesThenLocalInstances() {
    QTemporaryDir dir;
    const QString tns = dir.filePath("tns"), home = dir.filePath("home"), data = dir.filePath("data");
    writeFile(tns + "/tnsnames.ora", OrclWorld + "SALES.WORLD =\n  (DESCRIPTION = x)\n");
    writeFile(home + "/network/admin/tnsnames.ora", "SALES =\n  (x)\nHR =\n  (x)\n");
    QCOMPARE(LoadHostList(home, tns, data), QStringList({"ORCL", "SALES", "SALES", "HR", "local:demo"}));
    QCOMPARE(LoadHostList(home, "", data), QStringList({"SALES", "HR", "local:demo"}));
    QCOMPARE(LoadHostList("ERROR", tns, ""), QStringList({"ORCL", "SALES", "local:demo"}));
    QCOMPARE(LoadHostList(home, dir.filePath("nothing"), data), QStringList({"SALES", "HR", "local:demo"}));
    // TNS_ADMIN pointing into the home names one file: it is read once.
    QCOMPARE(LoadHostList(home, home + "/network/admin", data), QStringList({"SALES", "HR", "local:demo"}));
    // "0" is what the settings give without a client; it is no folder, even if one is called so.
    writeFile(dir.filePath("0/network/admin/tnsnames.ora"), "ZERO =\n");
    const QString cwd = QDir::currentPath();
    QDir::setCurrent(dir.path());
    QCOMPARE(LoadHostList("0", "", data), QStringList{"local:demo"});
    QDir::setCurrent(cwd);

    for (const char* name : {"zeta", "alpha", ".demo-building-1", "demo"})
      LocalEngine::createInstance(data + "/instances/" + name, "manager");
    QDir().mkpath(data + "/instances/notaninstance");
    QCOMPARE(LoadHostList("", "", data), QStringList({"local:alpha", "local:demo", "local:zeta"}));
  }
};

QTEST_GUILESS_MAIN(TestHostList)
#include "test_hostlist.moc"
