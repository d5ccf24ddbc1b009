#include "EngineFixture.h"

// A sequence gives each row of a statement one number, however often the row names NEXTVAL, and
// is refused where Oracle refuses it.
class TestSequences final : public QObject {
  Q_OBJECT

  std::unique_ptr<EngineFixture> m_fx;
  std::shared_ptr<OraDatabase> m_db;

  QStringList rows(const QString& sql) { return rowsOf(*m_db, sql); }

private Q_SLOTS:
  void initTestCase() {
    m_fx = std::make_unique<EngineFixture>();
    m_db = m_fx->sales();
    m_db->ExecuteSQL("create sequence ids start with 10 increment by 5");
    m_db->ExecuteSQL("create table pairs (a number, b number)");
    m_db->ExecuteSQL("create table three (n number)");
    for (int n = 1; n <= 3; ++n)
      m_db->ExecuteSQL(QString("insert into three values (%1)").arg(n));
  }
  void cleanupTestCase() {
    m_db.reset();
    m_fx.reset();
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
  }

  void sequencesOnlyWhereOracleTakesThem() {
    QString text;
    QCOMPARE(errorOf([&] { rows("select ids.nextval from dual union select 1 from dual"); }, &text), 2287);
    QCOMPARE(text, QString("ORA-02287: sequence number not allowed here"));
    QCOMPARE(errorOf([&] { rows("select n from three where n < ids.nextval"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select distinct ids.nextval from three"); }), 2287);
    QCOMPARE(errorOf([&] { rows("select count(*), ids.currval from three group by n"); }), 2287);
    // A refused statement takes no number.
    QCOMPARE(rows("select ids.nextval from dual"), QStringList({"55"}));
  }
};

QTEST_GUILESS_MAIN(TestSequences)
#include "test_sequences.moc"
