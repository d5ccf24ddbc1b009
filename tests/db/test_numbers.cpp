#include "EngineFixture.h"

// NUMBER in the embedded engine as Oracle has it: arithmetic and sums in decimal, a text
// converted to a number wherever it meets one (ORA-01722 when it is none), a DATE refused where
// only numbers go and a division by zero refused. Expected values are Oracle's documented
// results.
class TestNumbers final : public QObject, SalesSession {
  Q_OBJECT

  QString eval(const QString& items) {
    return rowsOf(*m_db, QStringLiteral("select ") + items + QStringLiteral(" from dual")).value(0);
  }
  int error(const QString& sql, QString* text = nullptr) {
    return errorOf([&] { rowsOf(*m_db, sql); }, text);
  }
  QString count(const QString& condition) {
    return rowsOf(*m_db, QStringLiteral("select count(*) from ledger where ") + condition).value(0);
  }

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table ledger (id number(4), amount number(8, 2), code varchar2(20), at date)");
    m_db->ExecuteSQL("insert into ledger values (1, 0.1, '2024/01/31 00:00:00', date '2024-01-31')");
    m_db->ExecuteSQL("insert into ledger values (2, 0.1, '010', date '2024-02-01')");
    m_db->ExecuteSQL("insert into ledger values (3, 0.1, 'abc', null)");
  }
  void cleanupTestCase() {
    closeSales();
  }

  void arithmeticIsDecimal() {
    QCOMPARE(eval("to_char(0.1 + 0.2), to_char(0.3 - 0.1), to_char(0.1 * 3), to_char(0.3 / 0.1), to_char(1.1 * 1.1)"),
             QString(".3|.2|.3|3|1.21"));
    QCOMPARE(eval("to_char(100 * 1.1), to_char(-0.25), to_char(1 - 0.75), to_char(7 / 2), to_char(2 * -3)"),
             QString("110|-.25|.25|3.5|-6"));
    QCOMPARE(eval("-(2), - -3, 9 - 3 * 2, (9 - 3) * 2, 2 * 3 / 4, 2 / 4 * 3"), QString("-2|3|3|12|1.5|1.5"));
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where 0.1 + 0.2 = 0.3 and 0.3 / 0.1 = 3 and 1.1 * 1.1 = 1.21"),
             QStringList({"1"}));
    // Sums and averages of a column add the same way, also as analytic functions.
    QCOMPARE(rowsOf(*m_db, "select to_char(sum(amount)), to_char(avg(amount * 3)), count(amount) from ledger"),
             QStringList({".3|.3|3"}));
    QCOMPARE(rowsOf(*m_db, "select to_char(sum(amount) over (order by id)) from ledger order by id"),
             QStringList({".1", ".2", ".3"}));
    QCOMPARE(rowsOf(*m_db, "select to_char(sum(amount) over (partition by sign(id - 1) order by id rows between 1 "
                           "preceding and current row)) from ledger order by id"),
             QStringList({".1", ".1", ".2"}));
    QCOMPARE(rowsOf(*m_db, "select sum(amount), avg(amount) from ledger where id > 9"), QStringList({"<null>|<null>"}));
    QCOMPARE(error("select sum(code) from ledger where id > 1"), 1722);
  }

  void textMeetingANumberIsConvertedToOne() {
    QCOMPARE(eval("'3' * '4', '10' / 4, 1 + '2', -'5', ' 2 ' * 2"), QString("12|2.5|3|-5|4"));
    QString text;
    QCOMPARE(error("select 'x' + 2 from dual", &text), 1722);
    QCOMPARE(text, QString("ORA-01722: invalid number"));
    for (const char* items : {"'x' * 2", "2 / 'x'", "-'x'", "'2024/01/31' * 2", "1 + 'x' * 0"})
      QCOMPARE(error(QString("select %1 from dual").arg(items)), 1722);
    // A character column or function is text, even where it reads as a date.
    QCOMPARE(error("select code + 1 from ledger where id = 1"), 1722);
    QCOMPARE(error("select substr(code, 1, 10) - 1 from ledger where id = 1"), 1722);
    QCOMPARE(error("select sum(code) from ledger where id = 1"), 1722);
    QCOMPARE(rowsOf(*m_db, "select sum(distinct code), avg(code) over () from ledger where id = 2"),
             QStringList({"10|10"}));
    // A DATE compared with a number is no conversion but an error, also as an expression.
    QCOMPARE(error("select count(*) from ledger where at > 5", &text), 932);
    QCOMPARE(text, QString("ORA-00932: inconsistent datatypes: expected DATE got NUMBER"));
    QCOMPARE(error("select count(*) from ledger where at + 1 = 5"), 932);
    QCOMPARE(error("select count(*) from dual where 1 = systimestamp"), 932);
    QCOMPARE(error("select code - 1 from ledger where id = 1"), 1722);
    QCOMPARE(rowsOf(*m_db, "select code + 1, code * 2 from ledger where id = 2"), QStringList({"11|20"}));
  }

  void numbersCompareWithTextAsNumbers() {
    QCOMPARE(count("1 = '1'"), QString("3"));
    QCOMPARE(count("'1.0' = 1"), QString("3"));
    QCOMPARE(count("2 > '10'"), QString("0")); // ten, not a text after '2'
    QCOMPARE(count("id = '2'"), QString("1"));
    QCOMPARE(count("'2' <= id"), QString("2"));
    QCOMPARE(count("amount = '.1'"), QString("3"));
    QCOMPARE(count("length(code) = '3'"), QString("2"));
    QCOMPARE(count("code = '010'"), QString("1")); // text with text stays text
    // A view's computed column has no declared type: the literal takes the kind of its values.
    m_db->ExecuteSQL("create view ledger_view as select id * 1 n, code || '' c from ledger");
    QCOMPARE(rowsOf(*m_db, "select count(*) from ledger_view where n = '2' or '1.0' = n or c = '010'"),
             QStringList({"2"}));
    QString text;
    QCOMPARE(error("select count(*) from ledger where id = 'abc'", &text), 1722);
    QCOMPARE(text, QString("ORA-01722: invalid number"));
    QCOMPARE(error("select count(*) from ledger where 'x' < amount"), 1722);
    QCOMPARE(error("select count(*) from ledger where length(code) = 'x'"), 1722);
    QCOMPARE(error("select count(*) from dual where 1 = 'x'"), 1722);
    // A column of the outer query, compared in a subquery, is converted as its type says.
    QCOMPARE(error("select count(*) from ledger l where exists (select 1 from dual where l.id = 'x')"), 1722);
    QCOMPARE(count("exists (select 1 from dual where ledger.at = '2024/01/31')"), QString("1"));
    // A character column compared with a number is converted row by row: 'abc' is none.
    QCOMPARE(error("select count(*) from ledger where code = 10"), 1722);
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("delete from ledger where id = 'abc'"); }), 1722);
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("update ledger set amount = 0 where amount = 'abc'"); }), 1722);
    // IN lists convert as comparisons do.
    QCOMPARE(count("id in ('1', '3')"), QString("2"));
    QCOMPARE(count("id not in ('1')"), QString("2"));
    QCOMPARE(error("select count(*) from ledger where id in (1, 'x')"), 1722);
    QCOMPARE(error("select count(*) from ledger where code in (10)"), 1722);
    QCOMPARE(count("at in ('2024/01/31', '2024/02/01 00:00:00')"), QString("2"));
    QCOMPARE(count("code in ('010', 'abc')"), QString("2"));
    QCOMPARE(count("id between '2' and '3'"), QString("2"));
    QCOMPARE(error("select count(*) from ledger where id between 'a' and 'b'"), 1722);
    QCOMPARE(count("at not between '2024/1/1' and '2024/1/31'"), QString("1"));
    QCOMPARE(error("select count(*) from ledger where at between 'abc' and '2024/12/31'"), 1858);
    // A DATE column compared with a text reads the text in the session's date format.
    QCOMPARE(count("at = '2024/01/31'"), QString("1"));
    QCOMPARE(count("at >= '2024/2/1'"), QString("1"));
    QCOMPARE(error("select count(*) from ledger where at = 'abc'"), 1858);
  }

  void numberKeepsFortyDigits() {
    const QString third = "." + QString(40, '3');
    QCOMPARE(eval("1 / 3, 2 / 3, 10 / 3"), third + "|." + QString(39, '6') + "7|3." + QString(38, '3'));
    QCOMPARE(eval("12345678901234567890123456789012345678 + 1, -99999999999999999999 * 99999999999999999999"),
             QString("12345678901234567890123456789012345679|-9999999999999999999800000000000000000001"));
    QCOMPARE(eval("to_char(3 * 0.5), 9223372036854775807 + 1, 0.5, -0.25, 1e-131"),
             QString("1.5|9223372036854775808|.5|-.25|0"));
    QCOMPARE(eval("greatest(1 / 3, 0.3), abs(-1 / 3), round(1 / 3, 3)"), third + "|" + third + "|.333");
    // Twenty base-100 digits: 38 nines and one more is 39 digits, exact; a first pair of one digit
    // leaves 39 for the value.
    QCOMPARE(eval("99999999999999999999999999999999999999 + 1, 12345678901234567890123456789012345678901, "
                  "to_char(1 / 3, '0.999'), to_char(2 / 3, 'FM9.99999')"),
             QString("1" + QString(38, '0') + "|12345678901234567890123456789012345678900| 0.333|.66667"));
    QCOMPARE(eval("mod(1e25 + 1, 7), mod(1 / 3, 0.1), mod(-11, 4), mod(11.5, 4)"),
             "4|.0" + QString(39, '3') + "|-3|3.5");
    QCOMPARE(rowsOf(*m_db, "select amount from ledger where id = 1"), QStringList({".1"}));
    // Wide values compare, group and sort as the numbers they are.
    QCOMPARE(rowsOf(*m_db, "select count(distinct id / id / 3) from ledger"), QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where 1 / 3 < 1 and 1 / 3 > 0.3 and 2 / 3 between 0.6 and "
                           "0.7 and 12345678901234567890123 > 9e18 and -12345678901234567890123 < -9e18"),
             QStringList({"1"}));
    QCOMPARE(rowsOf(*m_db, "select id, avg(id / 3) from ledger group by id having avg(id / 3) > 0.5 order by 2 desc"),
             QStringList({"3|1", "2|." + QString(39, '6') + "7"}));
    QString text;
    QCOMPARE(error("select 1e126 from dual", &text), 1426);
    QCOMPARE(text, QString("ORA-01426: numeric overflow"));
    QCOMPARE(error("select 9.9e125 * 10 from dual"), 1426);
    QCOMPARE(eval("9.9e125 * -1"), QString("-9.9E+125"));
  }

  // A wide value travels through SQLite as a double. A number of 15 digits or fewer never shares
  // that double; one of 16 or 17 digits can, and then the statement is refused rather than show
  // one's digits for the other. A table keeps only what a double or an integer holds.
  void wideValuesAreNeverTakenForOtherNumbers() {
    QCOMPARE(eval("0.3 + 1e-38, 0.3, 1e22 + 1, 1e22"),
             QString(".3" + QString(36, '0') + "1|.3|10000000000000000000001|10000000000000000000000"));
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where 0.3 + 1e-38 > 0.3 and 0.3 - 1e-38 < 0.3 and "
                           "1e22 + 1 > 1e22 and 0.3 + 1e-38 < 0.30000000000000005"),
             QStringList({"1"}));
    QString text;
    // The number a wide value's nearest double is keeps that double, in either order; one of 17
    // digits that meets a carrier cannot be told from the wide value, and is refused.
    QCOMPARE(eval("0.3333333333333333, 1 / 3, 0.3333333333333333"),
             ".3333333333333333|." + QString(40, '3') + "|.3333333333333333");
    QCOMPARE(error("select 1 / 3, 0.33333333333333337 from dual", &text), 3001);
    QCOMPARE(text, QString("ORA-03001: unimplemented feature"));
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where 1 / 3 > round(1 / 3, 16)"), QStringList({"1"}));
    // Wide values that share a nearest double travel as doubles of their own, in their order.
    QCOMPARE(eval("1 / 3, 0.33333333333333333333, 1e22 + 1, 1e22 + 2"),
             "." + QString(40, '3') + "|.33333333333333333333|10000000000000000000001|10000000000000000000002");
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where 1 / 3 > 0.33333333333333333333 and 1e22 + 2 > 1e22 + 1"),
             QStringList({"1"}));
    // Beside a short number's double there is room for a few values either way round; a pile-up
    // beyond that is refused.
    QCOMPARE(eval("0.3 + 1e-38, 0.3 + 5e-39, 0.3"),
             QString(".3" + QString(36, '0') + "1|.3" + QString(37, '0') + "5|.3"));
    QCOMPARE(error("select 0.3 + 1e-38, 0.3 + 2e-38, 0.3 + 3e-38, 0.3 + 4e-38, 0.3 + 5e-38 from dual"), 3001);
    // A value just above a short number whose nearest double is the next one travels on that.
    QCOMPARE(eval("999 + 71416 / 86400, 999.826574074074"),
             QString("999.826574074074074074074074074074074074|999.826574074074"));
    QCOMPARE(eval("3.141592653589793, 1 / 3 * 3"), QString("3.141592653589793|." + QString(40, '9')));
    m_db->ExecuteSQL("create table wide (n number, m number(10, 2), k number(38))");
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into wide (n) values (1 / 3)"); }), 3001);
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into wide (k) values (12345678901234567890123)"); }), 3001);
    m_db->ExecuteSQL("insert into wide values (1 / 4, 1 / 3, 123456789012345678)");
    QCOMPARE(rowsOf(*m_db, "select n, m, k from wide"), QStringList({".25|.33|123456789012345678"}));
    m_db->ExecuteSQL("drop table wide");
  }

  void divisionByZeroAndDatesAreRefused() {
    QString text;
    QCOMPARE(error("select 1 / 0 from dual", &text), 1476);
    QCOMPARE(text, QString("ORA-01476: divisor is equal to zero"));
    QCOMPARE(error("select amount / (id - id) from ledger"), 1476);
    QCOMPARE(error("select 0 / 0.0 from dual"), 1476);
    QCOMPARE(eval("0 / 5, mod(5, 0), 1 / null"), QString("0|5|<null>"));
    QCOMPARE(error("select sysdate * 2 from dual", &text), 932);
    QCOMPARE(text, QString("ORA-00932: inconsistent datatypes: expected NUMBER got DATE"));
    QCOMPARE(error("select 2 / sysdate from dual"), 932);
    QCOMPARE(error("select -sysdate from dual"), 932);
  }
};

QTEST_GUILESS_MAIN(TestNumbers)
#include "test_numbers.moc"
