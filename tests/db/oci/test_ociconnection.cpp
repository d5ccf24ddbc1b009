#include "OciDoubleFixture.h"

#include "db/OraSession.h"
#include "db/oci/OciDynaset.h"
#include "db/oci/OciText.h"

#include <QElapsedTimer>

#include <thread>

using namespace OciDouble;

namespace {

constexpr unsigned short Varchar2 = 1, Number = 2, Long = 8, Date = 12, Raw = 23, Rowid = 104, Clob = 112, Blob = 113;

std::shared_ptr<OciConnection> logOn(OciConnection::Options options = {}) {
  return OciConnection::connect(OciLibrary::load(search()), QStringLiteral("ORCL"), QStringLiteral("scott"),
                                QStringLiteral("tiger"), options);
}

void answer(const std::string& sql, OciDoubleAnswer a) {
  auto& s = server();
  std::lock_guard lock(s.mutex);
  s.answers[sql] = std::move(a);
}

OciDoubleAnswer rowsProcessed(unsigned n) {
  OciDoubleAnswer a;
  a.rowsProcessed = n;
  return a;
}

OciDoubleAnswer failing(int error, const char* text) {
  OciDoubleAnswer a;
  a.error = error;
  a.errorText = text;
  return a;
}

// A query answer with one NUMBER column holding 1 … n.
OciDoubleAnswer numbers(int n) {
  OciDoubleAnswer a;
  a.columns = {column("N", Number, 22)};
  for (int i = 1; i <= n; ++i)
    a.rows.push_back({std::to_string(i)});
  return a;
}

// The one-row answer of a SELECT COUNT(*).
OciDoubleAnswer counted(int n) {
  OciDoubleAnswer a;
  a.columns = {column("COUNT(*)", Number, 22)};
  a.rows = {{std::to_string(n)}};
  return a;
}

// True when the lines appear in the log in this order (others may come between them).
bool inOrder(const std::vector<std::string>& log, const std::vector<std::string>& lines) {
  auto at = log.begin();
  for (const std::string& line : lines) {
    at = std::find(at, log.end(), line);
    if (at == log.end())
      return false;
    ++at;
  }
  return true;
}

std::string text(const QString& s) { return s.toStdString(); }

int errorOf(const std::function<void()>& call, QString* message = nullptr) {
  try {
    call();
  } catch (const OraError& e) {
    if (message)
      *message = e.message();
    return e.number();
  }
  return -1;
}

QVariantList column0(OraDynaset& rows) {
  QVariantList values;
  for (; !rows.IsEOF(); rows.MoveNext())
    values << rows.Fields(0);
  return values;
}

} // namespace

class TestOciConnection : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void init() { server().reset(); }

  void logonFixesTheSessionAndClosingUndoesPendingWork() {
    const std::string settings = text(OciText::sessionSettingsSql());
    {
      auto connection = logOn();
      QVERIFY(inOrder(logFrom(0), {"env charset=873 ncharset=873 mode=1", "attach ORCL", "module DBSWEEP",
                                   "session begin SCOTT", "prepare " + settings, "execute " + settings + " +commit"}));
      QCOMPARE(connection->clientVersion(), QStringLiteral("19.3.0.0.0"));
      QCOMPARE(connection->serverVersion(), QStringLiteral("19.3.0.0.0"));
      answer("UPDATE EMP SET SAL = SAL * 2", rowsProcessed(14));
      connection->begin();
      QCOMPARE(connection->execute(QStringLiteral("UPDATE EMP SET SAL = SAL * 2")), 14);
    }
    // Ending the session would commit the doubled salaries: they are rolled back first.
    const auto log = logFrom(0);
    QVERIFY(inOrder(log, {"execute UPDATE EMP SET SAL = SAL * 2", "rollback", "session end", "detach"}));
    QVERIFY(!logHas(log, "session end commits 14"));
    QCOMPARE(server().committedChanges, 0);
    QCOMPARE(server().liveHandles, 0);
  }

  void failedLogonsSayWhyAndLeaveNothingOpen() {
    QString message;
    QCOMPARE(errorOf([] { OciConnection::connect(OciLibrary::load(search()), "ORCL", "scott", "lion", {}); }, &message),
             1017);
    QCOMPARE(message, QStringLiteral("ORA-01017: invalid username/password; logon denied"));
    QCOMPARE(errorOf([] { OciConnection::connect(OciLibrary::load(search()), "NOWHERE", "scott", "tiger", {}); }),
             12154);
    QCOMPARE(server().liveHandles, 0);

    // An Easy Connect string goes to the client as it was typed.
    server().services.push_back("//db.example.com:1521/ORCLPDB1");
    OciConnection::connect(OciLibrary::load(search()), "//db.example.com:1521/ORCLPDB1", "scott", "tiger", {});
    QVERIFY(logHas(logFrom(0), "attach //db.example.com:1521/ORCLPDB1"));
  }

  void rowsArriveInArraysWithTheirNullsAndForms() {
    OciConnection::Options options;
    options.fetchRows = 3;
    auto connection = logOn(options);
    OciDoubleAnswer emp;
    emp.columns = {column("EMPNO", Number, 22), column("ENAME", Varchar2, 10), column("HIRED", Date, 7),
                   column("RATE", Number, 22)};
    emp.rows = {
        {"7369", "佐藤", "1980/12/17 00:00:00", ".5"},          {"7499", std::nullopt, "1981/02/20 09:30:00", "-1.25"},
        {"7521", "WARD", std::nullopt, "12345678901234567890"}, {"7566", "JONES", "1981/04/02 00:00:00", "2"},
        {"7654", "MARTIN", "1981/09/28 00:00:00", "3"},         {"7698", "BLAKE", "1981/05/01 00:00:00", "4"},
        {"7782", "CLARK", "1981/06/09 00:00:00", "5"}};
    answer("SELECT * FROM EMP", emp);
    const size_t mark = server().log.size();
    auto rows = connection->query(QStringLiteral("SELECT * FROM EMP"), OraDynaset::ReadOnly);
    QCOMPARE(rows->FieldCount(), 4);
    QCOMPARE(rows->FieldName(1), QStringLiteral("ENAME"));
    QCOMPARE(rows->Fields(QStringLiteral("ename")), QVariant(QStringLiteral("佐藤")));
    QCOMPARE(rows->Fields(2), QVariant(QStringLiteral("1980/12/17")));
    QCOMPARE(rows->Fields(3), QVariant(QString(".5")));
    QCOMPARE(rows->Fields(0).typeId(), QMetaType::LongLong);
    rows->MoveNext();
    QVERIFY(!rows->Fields(1).isValid()); // NULL, not ""
    QCOMPARE(rows->Fields(2), QVariant(QStringLiteral("1981/02/20 09:30:00")));
    QCOMPARE(rows->Fields(3), QVariant(-1.25));
    rows->MoveNext();
    QVERIFY(!rows->Fields(2).isValid());
    QCOMPARE(rows->Fields(3), QVariant(QStringLiteral("12345678901234567890")));
    QCOMPARE(rows->RecordCount(), 7);
    QCOMPARE(rows->Fields(0), QVariant(7521)); // counting does not move the position
    QCOMPARE(errorOf([&] { rows->Fields(QStringLiteral("SAL")); }), 904);
    // Three full arrays' worth: the last array is short and comes with OCI_NO_DATA.
    const auto log = logFrom(mark);
    QVERIFY(inOrder(log, {"prefetch 3", "execute SELECT * FROM EMP", "fetch 3 -> 3", "fetch 3 -> 3", "fetch 3 -> 1"}));
    QCOMPARE(std::count_if(log.begin(), log.end(), [](const std::string& l) { return l.starts_with("fetch"); }), 3);
    QCOMPARE(column0(*rows).size(), 5); // rows 3 to 7

    // Rows that fill the arrays exactly end with an empty OCI_NO_DATA fetch.
    answer("SELECT N FROM SIX", numbers(6));
    auto six = connection->query(QStringLiteral("SELECT N FROM SIX"), OraDynaset::ReadOnly);
    QCOMPARE(column0(*six), (QVariantList{1, 2, 3, 4, 5, 6}));
    QVERIFY(logHas(logFrom(mark), "fetch 3 -> 0"));
    answer("SELECT N FROM NONE", numbers(0));
    auto none = connection->query(QStringLiteral("SELECT N FROM NONE"), OraDynaset::ReadOnly);
    QVERIFY(none->IsEOF());
    QCOMPARE(none->RecordCount(), 0);
    QCOMPARE(errorOf([&] { none->Fields(0); }), 1002);
  }

  void wideRowsLobsAndLongsKeepTheirWholeValueOrSaySo() {
    OciConnection::Options options;
    options.fetchBytes = 40000;
    options.longBytes = 8;
    options.lobPrefetchBytes = 8;
    auto connection = logOn(options);
    QVERIFY(logHas(logFrom(0), "lob prefetch 8"));
    OciDoubleAnswer notes;
    notes.columns = {column("BODY", Varchar2, 4000), column("DOC", Clob, 4000), column("NOTE", Clob, 4000),
                     column("PIC", Blob, 4000), column("HASH", Raw, 4)};
    notes.columns[2].charsetForm = 2; // NCLOB
    notes.rows = {
        {"a", "0123456789abc", "日本語のメモ", std::string("\x89PNG\x00\x01", 6), std::string("\x01\x00\xff", 3)},
        {"b", "short", std::nullopt, std::string(), std::nullopt}};
    answer("SELECT * FROM NOTES", notes);
    const size_t mark = server().log.size();
    auto rows = OciDynaset::open(connection, QStringLiteral("SELECT * FROM NOTES"), OraDynaset::ReadOnly);
    // 4000 bytes of VARCHAR2 may take 16000 in UTF-8: two such rows fit in 40000 bytes.
    QCOMPARE(rows->fetchRows(), 2);
    QCOMPARE(rows->Fields(1), QVariant(QStringLiteral("0123456789abc"))); // whole, past the prefetch size
    QCOMPARE(rows->Fields(2), QVariant(QStringLiteral("日本語のメモ")));
    QCOMPARE(rows->Fields(3), QVariant(QByteArray("\x89PNG\x00\x01", 6)));
    QCOMPARE(rows->Fields(4), QVariant(QByteArray("\x01\x00\xff", 3)));
    rows->MoveNext();
    QCOMPARE(rows->Fields(1), QVariant(QStringLiteral("short")));
    QVERIFY(!rows->Fields(2).isValid());
    QCOMPARE(rows->Fields(3), QVariant(QByteArray()));
    QVERIFY(!rows->Fields(4).isValid());
    // Only the LOBs longer than the prefetch size cost round trips: a length and a read each.
    const auto log = logFrom(mark);
    QCOMPARE(std::count(log.begin(), log.end(), "lob round trip"), 4); // DOC and NOTE of the first row
    rows.reset();
    connection.reset();
    QCOMPARE(server().liveHandles, 0); // the locators went with their rows

    // A LONG beyond its buffer ends the rows with Oracle's error rather than arrive cut.
    auto again = logOn(options);
    OciDoubleAnswer longs;
    longs.columns = {column("TEXT", Long, 0)};
    longs.rows = {{"12345678"}, {"123456789"}};
    answer("SELECT TEXT FROM LONGS", longs);
    auto texts = again->query(QStringLiteral("SELECT TEXT FROM LONGS"), OraDynaset::ReadOnly);
    QCOMPARE(texts->Fields(0), QVariant(QStringLiteral("12345678")));
    texts->MoveNext();
    QString message;
    QCOMPARE(errorOf([&] { texts->Fields(0); }, &message), 1406);
    QCOMPARE(message,
             QStringLiteral("ORA-01406: fetched column value was truncated (LONG values are read up to 8 bytes)"));
  }

  void aFetchErrorComesAfterTheRowsBeforeIt() {
    OciConnection::Options options;
    options.fetchRows = 3;
    auto connection = logOn(options);
    OciDoubleAnswer broken = numbers(6);
    broken.fetchErrorAtRow = 4;
    broken.error = 1722;
    broken.errorText = "invalid number";
    answer("SELECT TO_NUMBER(C) FROM T", broken);
    auto rows = connection->query(QStringLiteral("SELECT TO_NUMBER(C) FROM T"), OraDynaset::ReadOnly);
    QVariantList read;
    QString message;
    QCOMPARE(errorOf(
                 [&] {
                   read = QVariantList();
                   for (; !rows->IsEOF(); rows->MoveNext())
                     read << rows->Fields(0);
                 },
                 &message),
             1722);
    QCOMPARE(message, QStringLiteral("ORA-01722: invalid number"));
    QCOMPARE(read, (QVariantList{1, 2, 3, 4}));
    QCOMPARE(errorOf([&] { rows->RecordCount(); }), 1722);
  }

  void aNoCacheCountAsksTheServerAndLeavesTheRowsToRead() {
    OciConnection::Options options;
    options.fetchRows = 2;
    auto connection = logOn(options);
    answer("SELECT N FROM BIG", numbers(5));
    const std::string count = "SELECT COUNT(*) FROM (SELECT N FROM BIG)";
    answer(count, counted(5));
    auto rows = connection->query(QStringLiteral("SELECT N FROM BIG"), OraDynaset::NoCache);
    rows->MoveNext();
    QCOMPARE(rows->Fields(0), QVariant(2));
    size_t mark = server().log.size();
    QCOMPARE(rows->RecordCount(), 5);
    // One execute brings the count (no commit: it would end a SELECT … FOR UPDATE), where
    // reading the rest of the rows would have taken two more fetches.
    auto log = logFrom(mark);
    QVERIFY(logHas(log, "execute " + count));
    QCOMPARE(std::count_if(log.begin(), log.end(), [](const std::string& l) { return l.starts_with("execute"); }), 1);
    QVERIFY(std::none_of(log.begin(), log.end(), [](const std::string& l) { return l.starts_with("fetch"); }));
    mark = server().log.size();
    QCOMPARE(rows->RecordCount(), 5);
    QVERIFY(logFrom(mark).empty());
    QCOMPARE(column0(*rows), (QVariantList{2, 3, 4, 5}));
    QVERIFY(inOrder(logFrom(mark), {"fetch 2 -> 2", "fetch 2 -> 1"}));

    // Read to the end, the dynaset knows its count without asking.
    auto read = connection->query(QStringLiteral("SELECT N FROM BIG"), OraDynaset::NoCache);
    QCOMPARE(column0(*read).size(), 5);
    mark = server().log.size();
    QCOMPARE(read->RecordCount(), 5);
    QVERIFY(logFrom(mark).empty());

    // The count's errors are the server's, a lost session's included.
    answer(count, failing(942, "table or view does not exist"));
    auto denied = connection->query(QStringLiteral("SELECT N FROM BIG"), OraDynaset::NoCache);
    QCOMPARE(errorOf([&] { denied->RecordCount(); }), 942);
    QCOMPARE(denied->Fields(0), QVariant(1));
    answer(count, failing(3113, "end-of-file on communication channel"));
    QCOMPARE(errorOf([&] { denied->RecordCount(); }), 3113);
    QCOMPARE(errorOf([&] { denied->Fields(0); }), 3114);
  }

  void statementsCommitOutsideATransactionOnly() {
    auto connection = logOn();
    answer("DELETE FROM EMP WHERE DEPTNO = 10", rowsProcessed(3));
    answer("UPDATE EMP SET SAL = 0", rowsProcessed(14));
    QCOMPARE(connection->execute(QStringLiteral("DELETE FROM EMP WHERE DEPTNO = 10")), 3);
    QVERIFY(logHas(logFrom(0), "execute DELETE FROM EMP WHERE DEPTNO = 10 +commit"));
    QCOMPARE(server().committedChanges, 3);

    connection->begin();
    connection->execute(QStringLiteral("UPDATE EMP SET SAL = 0"));
    QVERIFY(logHas(logFrom(0), "execute UPDATE EMP SET SAL = 0"));
    QCOMPARE(server().pending, 14);
    connection->rollback();
    QCOMPARE(server().pending, 0);
    QCOMPARE(server().committedChanges, 3);

    connection->begin();
    connection->execute(QStringLiteral("UPDATE EMP SET SAL = 0"));
    connection->commit();
    QCOMPARE(server().committedChanges, 17);
    QVERIFY(inOrder(logFrom(0), {"rollback", "execute UPDATE EMP SET SAL = 0", "commit"}));
    const size_t mark = server().log.size();
    connection->execute(QStringLiteral("DELETE FROM EMP WHERE DEPTNO = 10"));
    QVERIFY(logHas(logFrom(mark), "execute DELETE FROM EMP WHERE DEPTNO = 10 +commit"));
  }

  void updatableRowsAreDeletedByRowid() {
    auto connection = logOn();
    const std::string sql = "select * from EMP where DEPTNO = 10";
    OciDoubleAnswer withRowid;
    withRowid.columns = {column("ROWID", Rowid, 18), column("EMPNO", Number, 22)};
    withRowid.rows = {{"AAAR3sAAEAAAACXAAA", "7782"}, {"AAAR3sAAEAAAACXAAB", "7839"}};
    answer("SELECT ROWID, q.* FROM (" + sql + ") q", withRowid);
    const std::string remove = "DELETE FROM (" + sql + ") WHERE ROWID = :1";
    answer(remove, rowsProcessed(1));
    connection->begin();
    auto rows = connection->query(QString::fromStdString(sql), OraDynaset::Updatable);
    QCOMPARE(rows->FieldCount(), 1);
    QCOMPARE(rows->FieldName(0), QStringLiteral("EMPNO"));
    const qint64 n = rows->RecordCount();
    for (qint64 r = 1; r <= n; ++r) {
      rows->Delete();
      rows->MoveNext();
    }
    const auto log = logFrom(0);
    QVERIFY(inOrder(
        log, {"execute " + remove + " bind=AAAR3sAAEAAAACXAAA", "execute " + remove + " bind=AAAR3sAAEAAAACXAAB"}));
    QCOMPARE(std::count(log.begin(), log.end(), "prepare " + remove), 1);
    QCOMPARE(server().pending, 2);

    // Read-only rows cannot be deleted; nor can those of a query ROWID cannot follow, which
    // still opens and says why at the Delete.
    answer(sql, withRowid);
    auto readOnly = connection->query(QString::fromStdString(sql), OraDynaset::ReadOnly);
    QCOMPARE(errorOf([&] { readOnly->Delete(); }), 1732);
    answer("SELECT ROWID, q.* FROM (select distinct JOB from EMP) q",
           failing(1446, "cannot select ROWID from, or sample, a view with DISTINCT, GROUP BY, etc."));
    OciDoubleAnswer jobs;
    jobs.columns = {column("JOB", Varchar2, 9)};
    jobs.rows = {{"CLERK"}};
    answer("select distinct JOB from EMP", jobs);
    auto distinct = connection->query(QStringLiteral("select distinct JOB from EMP"), OraDynaset::Updatable);
    QCOMPARE(distinct->Fields(0), QVariant(QStringLiteral("CLERK")));
    QCOMPARE(errorOf([&] { distinct->Delete(); }), 1446);
  }

  void errorsCarryOraclesWordsAndALostSessionStaysLost() {
    auto connection = logOn();
    answer("SELECT * FROM NOPE", failing(942, "table or view does not exist"));
    QString message;
    QCOMPARE(errorOf([&] { connection->query(QStringLiteral("SELECT * FROM NOPE"), OraDynaset::ReadOnly); }, &message),
             942);
    QCOMPARE(message, QStringLiteral("ORA-00942: table or view does not exist"));
    QCOMPARE(errorOf([&] { connection->execute(QStringLiteral("GRANT NOTHING")); }), 900);

    answer("SELECT 1 FROM DUAL", failing(3113, "end-of-file on communication channel"));
    QCOMPARE(errorOf([&] { connection->query(QStringLiteral("SELECT 1 FROM DUAL"), OraDynaset::ReadOnly); }), 3113);
    const size_t mark = server().log.size();
    QCOMPARE(errorOf([&] { connection->execute(QStringLiteral("SELECT 1 FROM DUAL")); }, &message), 3114);
    QCOMPARE(message, QStringLiteral("ORA-03114: not connected to ORACLE"));
    QCOMPARE(errorOf([&] { connection->commit(); }), 3114);
    connection.reset();
    // Nothing more was sent to a session that is gone; the handles are freed all the same.
    QVERIFY(logFrom(mark).empty());
    QCOMPARE(server().liveHandles, 0);
  }

  void aRunningCallCanBeBroken() {
    auto connection = logOn();
    connection->interrupt(); // nothing runs: a break now would stop the next call instead
    QVERIFY(!logHas(logFrom(0), "break"));
    OciDoubleAnswer slow = rowsProcessed(0);
    slow.waitForBreak = true;
    answer("DELETE FROM HUGE", slow);
    int error = 0;
    std::thread worker([&] { error = errorOf([&] { connection->execute(QStringLiteral("DELETE FROM HUGE")); }); });
    QElapsedTimer waited;
    waited.start();
    while (!server().executing && waited.elapsed() < 5000)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    QVERIFY(server().executing);
    connection->interrupt();
    worker.join();
    QCOMPARE(error, 1013);
    QVERIFY(logHas(logFrom(0), "break"));
    // The session goes on.
    answer("DELETE FROM T", rowsProcessed(2));
    QCOMPARE(connection->execute(QStringLiteral("DELETE FROM T")), 2);
    QVERIFY(connection->setCallTimeout(2500));
    QVERIFY(logHas(logFrom(0), "call timeout 2500"));
  }

  void theProgramReachesOracleThroughItsSession() {
    DbEnvironment env{QString()};
    env.oracleClientFolder = folder();
    OraSession session(env);
    auto database = session.OpenDatabase(QStringLiteral("ORCL"), QStringLiteral("scott/tiger"), 0);
    QCOMPARE(database->RDBMSVersion(), QStringLiteral("19.3.0.0.0"));
    QCOMPARE(session.OipVersionNumber(), QStringLiteral("19.3.0.0.0"));
    answer("SELECT N FROM T", numbers(2));
    auto rows = database->CreateDynaset(QStringLiteral("SELECT N FROM T"), OraDynaset::ReadOnly);
    QCOMPARE(rows->RecordCount(), 2);
  }
};

QTEST_GUILESS_MAIN(TestOciConnection)
#include "test_ociconnection.moc"
