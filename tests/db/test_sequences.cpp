#include "EngineFixture.h"

#include "db/local/Catalogue.h"

#include <sqlite3.h>

// A sequence gives each row of a statement one number, however often the row names NEXTVAL, and
// is refused where Oracle refuses it.
class TestSequences final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create sequence ids start with 10 increment by 5");
    m_db->ExecuteSQL("create table pairs (a number, b number)");
    m_db->ExecuteSQL("create table three (n number)");
    for (int n = 1; n <= 3; ++n)
      m_db->ExecuteSQL(QString("insert into three values (%1)").arg(n));
  }
  void cleanupTestCase() {
    closeSales();
  }

  void nextvalIsOneNumberARow() {
    QCOMPARE(rows("select ids.nextval, ids.nextval, ids.currval from dual"), QStringList({"10|10|10"}));
    QCOMPARE(rows("select ids.nextval, n, ids.nextval from three"), QStringList({"15|1|15", "20|2|20", "25|3|25"}));
    m_db->ExecuteSQL("insert into pairs values (ids.nextval, ids.nextval)");
    m_db->ExecuteSQL("insert into pairs select ids.nextval, ids.nextval * 10 from three");
    QCOMPARE(rows("select a, b from pairs order by a"), QStringList({"30|30", "35|350", "40|400", "45|450"}));
    m_db->ExecuteSQL("update pairs set a = ids.nextval, b = ids.nextval where a = 30");
    QCOMPARE(rows("select a - b from pairs where a = 50"), QStringList({"0"}));
    QCOMPARE(rows("select ids.currval from dual"), QStringList({"50"}));
    // Oracle numbers a row for a NEXTVAL in a branch the row does not take; the engine, which
    // evaluates only the branch taken, refuses it and takes no number.
    QCOMPARE(errorOf([&] { rows("select case when n = 2 then ids.nextval else 0 end from three"); }), 3001);
    QCOMPARE(errorOf([&] { rows("select nvl(n, ids.nextval) from three"); }), 3001);
    QCOMPARE(rows("select ids.currval, nvl(n, 0) from three where n = 1"), QStringList({"50|1"}));
  }

  void sequencesOnlyWhereOracleTakesThem() {
    QString text;
    QCOMPARE(errorOf([&] { rows("select ids.nextval from dual union select 1 from dual"); }, &text), 2287);
    QCOMPARE(text, QString("ORA-02287: sequence number not allowed here"));
    QCOMPARE(errorOf([&] { rows("select n from three where n < ids.nextval"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select distinct ids.nextval from three"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select count(*), ids.currval from three group by n"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select * from (select ids.nextval from dual)"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select n from three where n in (select ids.nextval from dual)"); }), 2287);
    // A refused statement takes no number.
    QCOMPARE(rows("select ids.nextval from dual"), QStringList({"55"}));
  }

  void userSequencesShowWhatOracleShows() {
    m_db->ExecuteSQL("create sequence cached");
    m_db->ExecuteSQL("create sequence fives start with 5 increment by 5 nocache order");
    const QString columns = "select min_value, increment_by, cycle_flag, order_flag, cache_size, last_number from "
                            "user_sequences where sequence_name = ";
    QCOMPARE(rows(columns + "'CACHED'"), QStringList({"1|1|N|N|20|1"}));
    QCOMPARE(rows(columns + "'FIVES'"), QStringList({"1|5|N|Y|0|5"}));
    // Unbounded sequences show Oracle's bounds digit for digit; the 19c flags are all N.
    m_db->ExecuteSQL("create sequence downs increment by -1");
    QCOMPARE(rows("select sequence_name, min_value, max_value from user_sequences where sequence_name in "
                  "('CACHED', 'DOWNS') order by 1"),
             QStringList({"CACHED|1|9999999999999999999999999999", "DOWNS|-999999999999999999999999999|-1"}));
    QCOMPARE(rows("select count(*) from user_sequences where max_value > 1e27"), QStringList({"3"}));
    auto d = m_db->CreateDynaset("select * from all_sequences where sequence_name = 'FIVES'", 4);
    QStringList names;
    for (int c = 0; c < d->FieldCount(); ++c)
      names << d->FieldName(c);
    QCOMPARE(names, QStringList({"SEQUENCE_OWNER", "SEQUENCE_NAME", "MIN_VALUE", "MAX_VALUE", "INCREMENT_BY",
                                 "CYCLE_FLAG", "ORDER_FLAG", "CACHE_SIZE", "LAST_NUMBER", "SCALE_FLAG", "EXTEND_FLAG",
                                 "SHARDED_FLAG", "SESSION_FLAG", "KEEP_VALUE"}));
    QCOMPARE(rows("select scale_flag || extend_flag || sharded_flag || session_flag || keep_value from "
                  "user_sequences where sequence_name = 'FIVES'"),
             QStringList({"NNNNN"}));
    // A cache of twenty is written down whole when its first number is taken.
    rows("select cached.nextval from dual");
    QCOMPARE(rows("select last_number from user_sequences where sequence_name = 'CACHED'"), QStringList({"21"}));
    for (int n = 0; n < 19; ++n)
      rows("select cached.nextval from dual");
    QCOMPARE(rows("select last_number from user_sequences where sequence_name = 'CACHED'"), QStringList({"21"}));
    QCOMPARE(rows("select cached.nextval from dual"), QStringList({"21"}));
    QCOMPARE(rows("select last_number from user_sequences where sequence_name = 'CACHED'"), QStringList({"41"}));
    rows("select fives.nextval from dual");
    QCOMPARE(rows("select last_number from user_sequences where sequence_name = 'FIVES'"), QStringList({"10"}));
    QString text;
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("create sequence tiny cache 1"); }, &text), 4010);
    QCOMPARE(text, QString("ORA-04010: the number of values to CACHE must be greater than 1"));
  }

  void aCatalogueOfAnEarlierVersionIsBroughtUpToDate() {
    EngineFixture fx;
    fx.sales()->ExecuteSQL("create sequence old_one start with 3");
    // The catalogue as versions before sequence caches and object privileges made it.
    sqlite3* catalogue = nullptr;
    QCOMPARE(sqlite3_open(QString(fx.folder + "/" + Catalogue::FileName).toUtf8().constData(), &catalogue), SQLITE_OK);
    QCOMPARE(sqlite3_exec(catalogue,
                          "DROP TABLE tab_privs; ALTER TABLE sequences DROP COLUMN start_with; ALTER TABLE sequences "
                          "DROP COLUMN cache_size; ALTER TABLE sequences DROP COLUMN order_flag",
                          nullptr, nullptr, nullptr),
             SQLITE_OK);
    sqlite3_close(catalogue);
    auto sales = fx.sales();
    QCOMPARE(rowsOf(*sales, "select cache_size, order_flag, last_number from user_sequences"), QStringList({"0|N|3"}));
    QCOMPARE(rowsOf(*sales, "select old_one.nextval from dual"), QStringList({"3"}));
    sales->ExecuteSQL("create table mine (k number)");
    sales->ExecuteSQL("grant select on mine to public");
  }
};

QTEST_GUILESS_MAIN(TestSequences)
#include "test_sequences.moc"
