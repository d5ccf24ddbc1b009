#include "ScriptedMessageBoxes.h"
#include "platform/FileRegistry.h"
#include "platform/PlatformRegistry.h"
#include "settings/RegSetting.h"
#include "settings/clsREG.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <new>
#include <stdexcept>

namespace {

// A backend with a fault of the program inside it, not of the store.
class FaultyBackend final : public RegistryBackend {
public:
  std::optional<RegValue> read(quint32, const QString&, const QString&) override { throw std::bad_alloc(); }
  void write(quint32, const QString&, const QString&, const QString&) override {
    throw std::logic_error("no such key kind");
  }
  void remove(quint32, const QString&, const QString&) override {}
};

QRegularExpression storeWarning(const QString& what, const QString& folder) {
  return QRegularExpression(
      QStringLiteral("^dbsweep: settings cannot be %1 %2: .+; ").arg(what, QRegularExpression::escape(folder)));
}

} // namespace

class TestRegSetting final : public QObject {
  Q_OBJECT

  struct Store {
    explicit Store(const QProcessEnvironment& env = {})
        : registry({dir.path() + QStringLiteral("/config"), dir.path() + QStringLiteral("/autostart")}, env),
          reg(registry, boxes) {}
    QString get(const QString& area, const QString& key, const QString& def) {
      return RegSetting(reg, QStringLiteral("R"), area, key, def);
    }
    QTemporaryDir dir;
    ScriptedMessageBoxes boxes;
    PlatformRegistry registry;
    clsREG reg;
  };

private Q_SLOTS:
  void readsDefaultWhenAbsentOrEmpty() {
    Store s;
    QCOMPARE(s.get("JVK", "FormLeft", "0"), QString("0"));
    QCOMPARE(RegSetting(s.reg, "W", "JVK", "FormLeft", QString("1200")), QString());
    QCOMPARE(s.get("JVK", "FormLeft", "0"), QString("1200"));
    RegSetting(s.reg, "w", "jvk", "FormLeft", QString());
    QCOMPARE(s.get("JVK", "FormLeft", "0"), QString("0"));
    QCOMPARE(RegSetting(s.reg, "r", "jvk", "FormLeft", QString("7")), QString("7"));
  }

  void keysIgnoreCaseAndKeepTheirFirstSpelling() {
    Store s;
    RegSetting(s.reg, "W", "JVK", "CHILDPARA3", QString("2"));
    QCOMPARE(s.get("JVK", "CHILDpara3", "0"), QString("2"));
    RegSetting(s.reg, "W", "JVK", "childpara3", QString("1"));
    QCOMPARE(s.get("JVK", "CHILDPARA3", "0"), QString("1"));
    QFile f(s.dir.path() + "/config/SOFTWARE/JVK/DBSWEEP/Settings.ini");
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(f.readAll());
    QVERIFY(text.contains("\"CHILDPARA3\"=\"1\""));
    QCOMPARE(text.count("CHILDPARA3", Qt::CaseInsensitive), 1);
    RegSetting(s.reg, "d", "JVK", "ChildPara3", QString());
    QCOMPARE(s.get("JVK", "CHILDPARA3", "0"), QString("0"));
  }

  void nulCutsWrittenValueAndCallersVariable() {
    Store s;
    QString value = QString("abc") + QChar(u'\0') + QString("def");
    RegSetting(s.reg, "W", "JVK", "Name", value);
    QCOMPARE(value, QString("abc"));
    QCOMPARE(s.get("JVK", "Name", "x"), QString("abc"));
    // A value that holds a NUL on disk (written by another tool) is cut on read.
    QFile f(s.dir.path() + "/config/SOFTWARE/JVK/DBSWEEP/Settings.ini");
    QVERIFY(f.open(QIODevice::Append));
    f.write(QByteArray("\"Raw\"=\"left", 11) + QByteArray(1, '\0') + QByteArray("right\"\n"));
    f.close();
    QCOMPARE(s.get("JVK", "Raw", "x"), QString("left"));
  }

  void dwordReadsAsDecimalAndOtherKindsAsAbsent() {
    Store s;
    RegSetting(s.reg, "W", "JVK", "Seed", QString("1"));
    QFile f(s.dir.path() + "/config/SOFTWARE/JVK/DBSWEEP/Settings.ini");
    QVERIFY(f.open(QIODevice::Append));
    f.write("\"Count\"=dword:0000002a\n\"Blob\"=hex:01,02\n\"Path\"=expand:\"/opt/x\"\n\"Edited\"=\"yes\"\r\r\n");
    f.close();
    QCOMPARE(s.get("JVK", "Count", "0"), QString("42"));
    QCOMPARE(s.get("JVK", "Edited", "no"), QString("yes"));
    QCOMPARE(s.get("JVK", "Blob", "none"), QString("none"));
    QCOMPARE(s.get("JVK", "Path", "none"), QString("/opt/x"));
    // Rewriting the file keeps what it could not read.
    RegSetting(s.reg, "W", "JVK", "Seed", QString("2"));
    QCOMPARE(s.get("JVK", "Count", "0"), QString("42"));
    QVERIFY(f.open(QIODevice::ReadOnly));
    QVERIFY(f.readAll().contains("\"Blob\"=hex:01,02"));
  }

  void unknownModesAndAreasChangeNothing() {
    Store s;
    QCOMPARE(RegSetting(s.reg, "X", "JVK", "FormTop", QString("5")), QString("ERROR"));
    QCOMPARE(RegSetting(s.reg, "", "JVK", "FormTop", QString("5")), QString("ERROR"));
    QCOMPARE(RegSetting(s.reg, "W", "Jvk", "FormTop", QString("5")), QString("ERROR"));
    QCOMPARE(RegSetting(s.reg, "W", "XYZ", "FormTop", QString("5")), QString("ERROR"));
    QCOMPARE(s.get("JVK", "FormTop", "0"), QString("0"));
    QVERIFY(!QFile::exists(s.dir.path() + "/config"));
  }

  void areasSelectTheirKeyPaths_data() {
    QTest::addColumn<QString>("area");
    QTest::addColumn<QString>("path");
    QTest::newRow("JVK") << "JVK"
                         << R"(SOFTWARE\JVK\DBSWEEP\Settings)";
    QTest::newRow("run") << "run"
                         << R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Run)";
    QTest::newRow("ORA") << "ORA"
                         << R"(SOFTWARE\ORACLE\ALL_HOMES)";
    QTest::newRow("ora5") << "ora5"
                          << R"(SOFTWARE\ORACLE\HOME5)";
    QTest::newRow("ORA0") << "ORA0"
                          << R"(SOFTWARE\ORACLE\HOME0)";
    QTest::newRow("ORA99") << "ORA99"
                           << R"(SOFTWARE\ORACLE\HOME99)";
    // Recognised by text comparison, not by number.
    QTest::newRow("ORA1X") << "ORA1X"
                           << R"(SOFTWARE\ORACLE\HOME1X)";
    QTest::newRow("ORA100") << "ORA100"
                            << R"(SOFTWARE\ORACLE\HOME100)";
    QTest::newRow("ORANone") << "ORANone"
                             << "";
    QTest::newRow("ORA990") << "ORA990"
                            << "";
    QTest::newRow("Ora5") << "Ora5"
                          << "";
    QTest::newRow("Run") << "Run"
                         << "";
  }

  void areasSelectTheirKeyPaths() {
    QFETCH(QString, area);
    QFETCH(QString, path);
    Store s;
    const QString result = s.get(area, "Anything", "dflt");
    if (path.isEmpty()) {
      QCOMPARE(result, QString("ERROR"));
    } else {
      QCOMPARE(result, QString("dflt"));
      QCOMPARE(s.reg.KeyPath(), path);
    }
  }

  void runAreaIsTheAutostartEntry() {
    Store s;
    // The program quoted as one argument, then escaped as a desktop-entry string.
    const QString exec = R"(/opt/my "db" C:\tools $HOME `x` 100%/dbsweep-tray)";
    const QString line = R"(Exec="/opt/my \\"db\\" C:\\\\tools \\$HOME \\`x\\` 100%%/dbsweep-tray")";
    QCOMPARE(s.get("RUN", "DBSWEEP", "NONE"), QString("NONE"));
    RegSetting(s.reg, "W", "RUN", "DBSWEEP", exec);
    const QString file = s.dir.path() + "/autostart/DBSWEEP.desktop";
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(f.readAll());
    QVERIFY(text.startsWith("[Desktop Entry]\n"));
    QVERIFY2(text.contains("\n" + line + "\n"), qPrintable(text));
    f.close();
    QCOMPARE(s.get("run", "dbsweep", "NONE"), exec);
    // Entries written before the program was quoted, or edited by hand, still read.
    const auto readExec = [&](const QByteArray& execLine) {
      QVERIFY(f.open(QIODevice::WriteOnly));
      f.write("[Desktop Entry]\nExec=" + execLine + "\n");
      f.close();
    };
    readExec("/opt/dbsweep/dbsweep-tray --x=100%%");
    QCOMPARE(s.get("RUN", "DBSWEEP", "NONE"), QString("/opt/dbsweep/dbsweep-tray --x=100%"));
    readExec(R"("/opt/a\sb/tray" --min)");
    QCOMPARE(s.get("RUN", "DBSWEEP", "NONE"), QString("/opt/a b/tray --min"));
    RegSetting(s.reg, "D", "RUN", "DBSWEEP", QString());
    QVERIFY(!QFile::exists(file));
    QCOMPARE(s.get("RUN", "DBSWEEP", "NONE"), QString("NONE"));
  }

  void oracleAreasShowTheClientHome() {
    QTemporaryDir client;
    QProcessEnvironment withHome;
    withHome.insert("ORACLE_HOME", "/opt/oracle/product/19c/client_1/");
    {
      Store s(withHome);
      const QString last = s.get("ORA", "LAST_HOME", "None");
      QCOMPARE(last, QString("0"));
      QCOMPARE(s.get("ORA" + last, "ORACLE_HOME", "0"), QString("/opt/oracle/product/19c/client_1"));
      // The client's keys are not ours to change.
      RegSetting(s.reg, "W", "ORA0", "ORACLE_HOME", QString("/elsewhere"));
      QCOMPARE(s.get("ORA0", "ORACLE_HOME", "0"), QString("/opt/oracle/product/19c/client_1"));
    }
    QFile lib(client.path() + "/libclntsh.so.19.1");
    QVERIFY(lib.open(QIODevice::WriteOnly));
    lib.close();
    QProcessEnvironment instant;
    instant.insert("LD_LIBRARY_PATH", "/nonexistent:" + client.path());
    {
      Store s(instant);
      QCOMPARE(s.get("ORA", "LAST_HOME", "None"), QString("0"));
      QCOMPARE(s.get("ora0", "oracle_home", "0"), client.path());
    }
    {
      Store s; // no client at all
      const QString last = s.get("ORA", "LAST_HOME", "None");
      QCOMPARE(last, QString("None"));
      QCOMPARE(s.get("ORA" + last, "ORACLE_HOME", "0"), QString("ERROR"));
    }
  }

  void storeFailuresShowNothingAndWarnOnce() {
    QTest::failOnWarning(QRegularExpression("settings cannot"));
    const QString settings = "/config/SOFTWARE/JVK/DBSWEEP/Settings.ini";
    {
      // The configuration folder cannot be made where a file stands, not even by root.
      Store s;
      QFile blocker(s.dir.path() + "/config");
      QVERIFY(blocker.open(QIODevice::WriteOnly));
      blocker.close();
      QTest::ignoreMessage(QtWarningMsg, storeWarning("saved in", blocker.fileName()));
      RegSetting(s.reg, "W", "JVK", "FormLeft", QString("1"));
      RegSetting(s.reg, "W", "JVK", "FormTop", QString("2"));
      QCOMPARE(s.get("JVK", "FormLeft", "0"), QString("0"));
      QCOMPARE(blocker.size(), 0);
      QVERIFY(s.boxes.shown().isEmpty());
    }
    {
      // A settings file that cannot be read is neither taken for empty nor overwritten.
      Store s;
      QVERIFY(QDir().mkpath(s.dir.path() + settings));
      QTest::ignoreMessage(QtWarningMsg, storeWarning("read from", s.dir.path() + "/config"));
      QCOMPARE(s.get("JVK", "FormLeft", "12"), QString("12"));
      RegSetting(s.reg, "W", "JVK", "FormLeft", QString("1"));
      RegSetting(s.reg, "D", "JVK", "FormLeft", QString());
      QVERIFY(QFileInfo(s.dir.path() + settings).isDir());
      QVERIFY(s.boxes.shown().isEmpty());
    }
    {
      // Another program holds the file's lock for longer than a change waits.
      QTemporaryDir dir;
      FileRegistry store(dir.path(), 100);
      ScriptedMessageBoxes boxes;
      clsREG reg(store, boxes);
      RegSetting(reg, "W", "JVK", "FormLeft", QString("1"));
      QLockFile other(dir.path() + "/SOFTWARE/JVK/DBSWEEP/Settings.ini.lock");
      QVERIFY(other.tryLock(0));
      QTest::ignoreMessage(QtWarningMsg, storeWarning("saved in", dir.path()));
      RegSetting(reg, "W", "JVK", "FormLeft", QString("2"));
      RegSetting(reg, "D", "JVK", "FormLeft", QString());
      QCOMPARE(RegSetting(reg, "R", "JVK", "FormLeft", QString("0")), QString("1"));
      QVERIFY(boxes.shown().isEmpty());
    }
  }

  void faultsInsideTheRoutinesShowABox() {
    FaultyBackend faulty;
    ScriptedMessageBoxes boxes;
    clsREG reg(faulty, boxes);
    boxes.expect(MessageBoxes::Answer::Ok);
    boxes.expect(MessageBoxes::Answer::Ok);
    QCOMPARE(RegSetting(reg, "R", "JVK", "FormLeft", QString("0")), QString("0"));
    QCOMPARE(RegSetting(reg, "W", "JVK", "FormLeft", QString("1")), QString());
    QCOMPARE(boxes.shown().size(), 2);
    QCOMPARE(boxes.shown()[0].text, QString("Error: 7. Out of memory"));
    QCOMPARE(boxes.shown()[0].title, QString("ReadEntry"));
    QCOMPARE(boxes.shown()[0].buttons, MessageBoxes::Buttons::Ok);
    QCOMPARE(boxes.shown()[1].text, QString("Error: 51. no such key kind"));
    QCOMPARE(boxes.shown()[1].title, QString("WriteEntry"));
  }

  void keyPathDropsTrailingBackslash() {
    Store s;
    s.reg.setRegBase("A");
    s.reg.setProgram("B");
    s.reg.setSection("");
    QCOMPARE(s.reg.KeyPath(), QString(R"(SOFTWARE\A\B)"));
    s.reg.setSection("C");
    QCOMPARE(s.reg.KeyPath(), QString(R"(SOFTWARE\A\B\C)"));
  }
};

QTEST_GUILESS_MAIN(TestRegSetting)
#include "test_regsetting.moc"
