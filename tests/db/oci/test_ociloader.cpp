#include "OciDoubleFixture.h"

#include "db/OraError.h"

#include <QDir>
#include <QTemporaryDir>

// Finding and loading the Oracle client, and what the user reads when that fails.
class TestOciLoader : public QObject {
  Q_OBJECT

  static QString failureOf(const OciSearch& search) {
    try {
      OciLibrary::load(search);
    } catch (const OraError& e) {
      if (e.number() != 0)
        return QStringLiteral("unexpected Oracle error: ") + e.message();
      return e.message();
    }
    return QStringLiteral("loaded");
  }

  // A private copy of the double: a library file of its own, loaded apart from every other.
  static QString copyDoubleTo(const QString& folder) {
    QDir().mkpath(folder);
    const QString target = folder + QStringLiteral("/libclntsh.so");
    if (!QFile::copy(QStringLiteral(OCI_DOUBLE), target))
      qFatal("cannot copy the OCI double");
    return target;
  }

private Q_SLOTS:
  void withoutAClientTheMessageNamesEveryPlaceLookedIn() {
    QTemporaryDir chosen;
    QTemporaryDir program;
    OciSearch search{chosen.path(), program.path(), {}, QStringLiteral("/opt/nothing")};
    search.systemNames = {QStringLiteral("libclntsh-absent-for-tests.so")};
    const QString message = failureOf(search);
    QVERIFY2(message.startsWith(QStringLiteral("No Oracle client library (libclntsh.so) could be loaded.")),
             qPrintable(message));
    QVERIFY(message.contains(chosen.path() + QStringLiteral(" (DBSWEEP_ORACLE_CLIENT)")));
    QVERIFY(message.contains(program.path() + QStringLiteral(" (the program's folder)")));
    QVERIFY(message.contains(QStringLiteral("LD_LIBRARY_PATH=/opt/nothing")));
    QVERIFY(message.contains(QStringLiteral("libclntsh-absent-for-tests.so: cannot open shared object file")));
    QVERIFY(message.contains(QStringLiteral("ORACLE_HOME is not set")));
    QVERIFY(message.contains(QStringLiteral("set DBSWEEP_ORACLE_CLIENT to that folder")));

    // A file of that name that is no library: the loader's own words say why.
    QFile junk(chosen.filePath(QStringLiteral("libclntsh.so")));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write("not a library");
    junk.close();
    QTemporaryDir home;
    search.oracleHome = home.path();
    const QString second = failureOf(search);
    QVERIFY2(second.contains(chosen.path() + QStringLiteral(" (DBSWEEP_ORACLE_CLIENT): ") + junk.fileName()),
             qPrintable(second));
    QVERIFY(second.contains(home.path() + QStringLiteral("/lib ($ORACLE_HOME/lib)")));
    QVERIFY(!second.contains(QStringLiteral("ORACLE_HOME is not set")));
  }

  void aClientWithoutAnEntryPointOrTooOldIsNamed() {
    OciSearch partial{QFileInfo(QStringLiteral(OCI_DOUBLE_PARTIAL)).absolutePath(), {}, {}, {}};
    partial.systemNames = {};
    const QString message = failureOf(partial);
    QVERIFY2(message.contains(QStringLiteral(OCI_DOUBLE_PARTIAL) + QStringLiteral(" has no entry point OCIStmtFetch2")),
             qPrintable(message));
    QVERIFY(message.contains(QStringLiteral("needs an Oracle client 12.1 or later")));

    QTemporaryDir old;
    const QString path = copyDoubleTo(old.path());
    void* handle = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
    QVERIFY(handle);
    auto& server = *reinterpret_cast<OciDoubleServer* (*)()>(dlsym(handle, "ociDoubleServer"))();
    server.reset();
    server.clientVersion[0] = 11;
    server.clientVersion[1] = 2;
    server.clientVersion[3] = 4;
    QCOMPARE(failureOf(OciSearch{old.path(), {}, {}, {}, {}}),
             QStringLiteral("The Oracle client library %1 is version 11.2.0.4.0. DBSWEEP needs an Oracle client 12.1 "
                            "or later.")
                 .arg(path));
  }

  void foldersAreTriedInOrder() {
    QTemporaryDir root;
    const QString chosen = copyDoubleTo(root.filePath(QStringLiteral("chosen")));
    const QString program = copyDoubleTo(root.filePath(QStringLiteral("program")));
    const QString home = copyDoubleTo(root.filePath(QStringLiteral("home/lib")));
    const QString homeFolder = root.filePath(QStringLiteral("home"));
    const QStringList none;
    QCOMPARE(
        OciLibrary::load(
            {root.filePath(QStringLiteral("chosen")), root.filePath(QStringLiteral("program")), homeFolder, {}, none})
            ->path,
        chosen);
    QCOMPARE(OciLibrary::load({{}, root.filePath(QStringLiteral("program")), homeFolder, {}, none})->path, program);
    const auto client = OciLibrary::load({{}, {}, homeFolder, {}, none});
    QCOMPARE(client->path, home);
    QCOMPARE(client->version, QStringLiteral("19.3.0.0.0"));
  }

  void versionedNamesNewestFirst() {
    QTemporaryDir dir;
    for (const char* name :
         {"libclntsh.so.9.2", "libclntsh.so.19.1", "libclntsh.so", "libclntsh.so.21.1", "other.so"}) {
      QFile f(dir.filePath(QString::fromLatin1(name)));
      QVERIFY(f.open(QIODevice::WriteOnly));
    }
    QStringList names;
    for (const QString& path : OciLibrary::candidatesIn(dir.path()))
      names << QFileInfo(path).fileName();
    QCOMPARE(names, (QStringList{QStringLiteral("libclntsh.so"), QStringLiteral("libclntsh.so.21.1"),
                                 QStringLiteral("libclntsh.so.19.1"), QStringLiteral("libclntsh.so.9.2")}));
    QVERIFY(OciLibrary::candidatesIn(dir.filePath(QStringLiteral("missing"))).isEmpty());
  }
};

QTEST_GUILESS_MAIN(TestOciLoader)
#include "test_ociloader.moc"
