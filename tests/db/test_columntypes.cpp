#include "EngineFixture.h"

// A column holds what its Oracle type holds: numbers within their precision and rounded to
// their scale, texts within their length in bytes or characters (a CHAR padded with blanks),
// dates. What does not fit is refused with Oracle's error and text.
class TestColumnTypes final : public QObject, SalesSession {
  Q_OBJECT

  int insert(const QString& column, const QString& value, QString* text = nullptr) {
    return errorOf([&] { m_db->ExecuteSQL(QStringLiteral("insert into typed (%1) values (%2)").arg(column, value)); },
                   text);
  }
  QStringList column(const QString& expression) {
    return rowsOf(*m_db, QStringLiteral("select %1 from typed order by 1").arg(expression));
  }

private Q_SLOTS:
  void initTestCase() {
    openSales();
  }
  void cleanupTestCase() {
    closeSales();
  }
  void init() {
    m_db->ExecuteSQL("create table typed (price number(5, 2), whole integer, hundreds number(3, -2), name "
                     "varchar2(5), wide varchar2(3 char), code char(4), at date)");
  }
  void cleanup() { m_db->ExecuteSQL("drop table typed"); }

  void numbersFitTheirPrecisionAndScale() {
    for (const char* v : {"123.456", "999.994", "-999.99", "'12.5'", "1.005", "null"})
      QCOMPARE(insert("price", v), 0);
    QCOMPARE(column("to_char(price)"), QStringList({"-999.99", "1.01", "12.5", "123.46", "999.99", "<null>"}));
    QString text;
    QCOMPARE(insert("price", "999.995", &text), 1438); // rounds to 1000.00, four digits before the point
    QCOMPARE(text, QString("ORA-01438: value larger than specified precision allowed for this column"));
    QCOMPARE(insert("price", "1000"), 1438);
    QCOMPARE(insert("price", "'abc'", &text), 1722);
    QCOMPARE(text, QString("ORA-01722: invalid number"));
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("update typed set price = price * 10 where price > 100"); }), 1438);
    m_db->ExecuteSQL("update typed set price = 0.125 where price = 12.5");
    QCOMPARE(column("price").value(1), QString(".13"));
    // A scale of zero rounds half away from zero; a negative one rounds left of the point.
    m_db->ExecuteSQL("delete from typed");
    for (const char* v : {"2.5", "-2.5", "7"})
      QCOMPARE(insert("whole", v), 0);
    QCOMPARE(column("whole"), QStringList({"-3", "3", "7"}));
    QCOMPARE(insert("hundreds", "12345"), 0);
    QCOMPARE(column("hundreds").value(0), QString("12300"));
    QCOMPARE(insert("hundreds", "99999"), 1438);
  }

  void textsFitTheirLength() {
    QString text;
    QCOMPARE(insert("name", "'abcdef'", &text), 12899);
    QCOMPARE(text,
             QString("ORA-12899: value too large for column \"SALES\".\"TYPED\".\"NAME\" (actual: 6, maximum: 5)"));
    // VARCHAR2(5) counts bytes: two Japanese characters are six in UTF-8.
    QCOMPARE(insert("name", "'日本'", &text), 12899);
    QVERIFY(text.endsWith(QStringLiteral("(actual: 6, maximum: 5)")));
    QCOMPARE(insert("name", "123456"), 12899);
    QCOMPARE(insert("name", "'abcde'"), 0);
    // VARCHAR2(3 CHAR) counts characters.
    QCOMPARE(insert("wide", "'日本語'"), 0);
    QCOMPARE(insert("wide", "'日本語x'", &text), 12899);
    QVERIFY(text.endsWith(QStringLiteral("\"WIDE\" (actual: 4, maximum: 3)")));
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("update typed set name = name || 'x'"); }), 12899);
  }

  void charIsBlankPadded() {
    QCOMPARE(insert("code", "'ab'"), 0);
    QCOMPARE(insert("code", "'abcd'"), 0);
    QCOMPARE(insert("code", "'abcde'"), 12899);
    QCOMPARE(column("code || '|'"), QStringList({"ab  |", "abcd|"}));
    QCOMPARE(column("length(code)"), QStringList({"4", "4"}));
    // Compared with a literal, blanks at the end make no difference.
    QCOMPARE(rowsOf(*m_db, "select count(*) from typed where code = 'ab'"), QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from typed where code = 'ab  '"), QStringList({"1"}));
    m_db->ExecuteSQL("update typed set code = 'x' where code = 'abcd'");
    QCOMPARE(column("code || '|'"), QStringList({"ab  |", "x   |"}));
  }

  void charPadsOnlyAgainstCharOrLiterals() {
    m_db->ExecuteSQL("create table pairs (id number, c char(3), v varchar2(3), w char(5))");
    m_db->ExecuteSQL("insert into pairs values (1, 'a', 'a', 'a')");
    m_db->ExecuteSQL("insert into pairs values (2, 'b', 'b  ', 'x')");
    const auto ids = [&](const QString& condition) {
      return rowsOf(*m_db, "select id from pairs where " + condition + " order by id");
    };
    // CHAR against VARCHAR2: the CHAR's blanks count.
    QCOMPARE(ids("c = v"), QStringList({"2"}));
    QCOMPARE(ids("v = c"), QStringList({"2"}));
    QCOMPARE(ids("pairs.c <> pairs.v"), QStringList({"1"}));
    QCOMPARE(ids("c > v"), QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from pairs p join pairs q on p.c = q.v"), QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from (select c cc from pairs) p, pairs q where p.cc = q.v"),
             QStringList({"1"}));
    // CHAR against CHAR of another length, or a literal: padded.
    QCOMPARE(ids("c = w"), QStringList({"1"}));
    QCOMPARE(ids("c = 'b'"), QStringList({"2"}));
    // VARCHAR2 against a literal: as written.
    QCOMPARE(ids("v = 'b'"), QStringList());
    QCOMPARE(ids("v = 'b  '"), QStringList({"2"}));
    m_db->ExecuteSQL("drop table pairs");
  }

  void timestampsHoldTheirDigits() {
    m_db->ExecuteSQL("create table stamps (id number, ts timestamp, ms timestamp(3), tz timestamp with time zone)");
    const auto stamp = [&](const QString& values, QString* text = nullptr) {
      return errorOf([&] { m_db->ExecuteSQL("insert into stamps values (" + values + ")"); }, text);
    };
    QCOMPARE(stamp("1, timestamp '2024-01-31 10:00:00.123456789', timestamp '2024-01-31 10:00:00.9996', null"), 0);
    QCOMPARE(stamp("2, date '2024-01-31', '2024/01/31 10:00:00.5', timestamp '2024-01-31 10:00:00 '"), 0);
    QCOMPARE(stamp("3, '2024/01/31 10:00:00', null, systimestamp"), 0);
    // The fraction rounds to the column's digits; a DATE or a text in the session's form is a
    // timestamp too; a zone is kept only where the column has one.
    QCOMPARE(rowsOf(*m_db, "select ts, ms, length(tz) - length(ts) from stamps where id < 3 order by id"),
             QStringList({"2024/01/31 10:00:00.123457|2024/01/31 10:00:01.000|<null>",
                          "2024/01/31 00:00:00.000000|2024/01/31 10:00:00.500|7"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from stamps where tz - systimestamp < interval '1' minute and id = 3"),
             QStringList({"1"}));
    QString text;
    QCOMPARE(stamp("4, 5, null, null", &text), 932);
    QCOMPARE(text, QString("ORA-00932: inconsistent datatypes: expected TIMESTAMP got NUMBER"));
    QCOMPARE(stamp("5, interval '1' day, null, null"), 932);
    QCOMPARE(stamp("6, 'abc', null, null"), 1858);
    m_db->ExecuteSQL("drop table stamps");
  }

  void datesHoldDates() {
    QCOMPARE(insert("at", "'2024/01/31'"), 0);
    QCOMPARE(insert("at", "to_date('31.01.2024', 'DD.MM.YYYY') + 1"), 0);
    QCOMPARE(column("at"), QStringList({"2024/01/31", "2024/02/01"}));
    QString text;
    QCOMPARE(insert("at", "'garbage'", &text), 1858);
    QCOMPARE(text, QString("ORA-01858: a non-numeric character was found where a numeric was expected"));
    QCOMPARE(insert("at", "'2024/02/30'"), 1839);
    QCOMPARE(insert("at", "5", &text), 932);
    QCOMPARE(text, QString("ORA-00932: inconsistent datatypes: expected DATE got NUMBER"));
  }
};

QTEST_GUILESS_MAIN(TestColumnTypes)
#include "test_columntypes.moc"
