#include "platform/FileRegistry.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString Settings = QStringLiteral("SOFTWARE\\JVK\\DBSWEEP\\Settings");
constexpr quint32 Hklm = RegistryBackend::HKeyLocalMachine;
} // namespace

class TestFileRegistry final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void awkwardTextRoundTrips() {
    QTemporaryDir dir;
    FileRegistry store(dir.path());
    const QString awkward = "a \"quoted\" C:\\path\\ = x\nsecond line\r\n  spaced  ;[not a section]";
    const QString name = "Name with \"quotes\" = and \\";
    store.write(Hklm, Settings, name, awkward);
    store.write(Hklm, Settings, "日本語", "ﾃｰﾌﾞﾙ名");
    FileRegistry reopened(dir.path());
    QCOMPARE(reopened.read(Hklm, Settings, name)->text, awkward);
    QCOMPARE(reopened.read(Hklm, Settings, "日本語")->text, QString("ﾃｰﾌﾞﾙ名"));
    QVERIFY(!reopened.read(Hklm, Settings, "missing"));
    QVERIFY(!reopened.read(Hklm, "SOFTWARE\\Other", name));
    // Other roots and paths that would leave the folder are not part of the store.
    QVERIFY(!reopened.read(0x80000001u, Settings, name));
    store.write(Hklm, "SOFTWARE\\..\\..\\escape", "x", "y");
    QVERIFY(!QFile::exists(dir.path() + "/../escape.ini"));
    QCOMPARE(store.fileFor("SOFTWARE\\..\\x"), QString());
  }

  void filesAreOwnerOnlyAndNoTemporaryFilesRemain() {
    QTemporaryDir dir;
    FileRegistry store(dir.path() + "/cfg");
    store.write(Hklm, Settings, "ORA_PASS", "scrambled");
    const QString file = dir.path() + "/cfg/SOFTWARE/JVK/DBSWEEP/Settings.ini";
    const auto filePerms = QFile::permissions(file);
    QVERIFY(filePerms.testFlags(QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(!(filePerms & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
    const auto folderPerms = QFile::permissions(dir.path() + "/cfg/SOFTWARE/JVK");
    QVERIFY(!(folderPerms & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeGroup | QFile::ExeOther)));
    QCOMPARE(QDir(dir.path() + "/cfg/SOFTWARE/JVK/DBSWEEP").entryList(QDir::Files), QStringList{"Settings.ini"});
    store.remove(Hklm, Settings, "ORA_PASS");
    QVERIFY(!store.read(Hklm, Settings, "ORA_PASS"));
    // Deleting from a key that was never written creates nothing.
    store.remove(Hklm, "SOFTWARE\\JVK\\Nothing", "x");
    QVERIFY(!QFile::exists(dir.path() + "/cfg/SOFTWARE/JVK/Nothing.ini"));
  }

  void twoProcessesWritingAtOnceLoseNothing() {
    QTemporaryDir dir;
    constexpr int count = 150;
    QProcess a, b;
    a.start(SETTINGS_WRITER, {dir.path(), "A", QString::number(count)});
    b.start(SETTINGS_WRITER, {dir.path(), "B", QString::number(count)});
    // This process writes too, and reads while the others write: a reader never sees a torn file.
    FileRegistry store(dir.path());
    for (int i = 0; i < count; ++i) {
      store.write(Hklm, Settings, "C" + QString::number(i), QString::number(i));
      if (auto seen = store.read(Hklm, Settings, "C0"))
        QCOMPARE(seen->text, QString("0"));
    }
    QVERIFY(a.waitForFinished(60000));
    QVERIFY(b.waitForFinished(60000));
    QCOMPARE(a.exitCode(), 0);
    QCOMPARE(b.exitCode(), 0);
    for (const char* prefix : {"A", "B"})
      for (int i = 0; i < count; ++i) {
        const auto v = store.read(Hklm, Settings, prefix + QString::number(i));
        QVERIFY2(v, qPrintable(prefix + QString::number(i)));
        QCOMPARE(v->text, QString::number(i * 7));
      }
    for (int i = 0; i < count; ++i)
      QCOMPARE(store.read(Hklm, Settings, "c" + QString::number(i))->text, QString::number(i));
  }
};

QTEST_GUILESS_MAIN(TestFileRegistry)
#include "test_fileregistry.moc"
