#include "EngineFixture.h"

// DATE arithmetic and comparisons in the embedded engine: a DATE plus or minus a number of days
// is a DATE, the difference of two DATEs is a number of days, and DATEs compare in time order.
// Expected values are Oracle's documented results.
class TestDates final : public QObject, SalesSession {
  Q_OBJECT

  // The values of "select <items> from dual", joined by "|", Null shown as "<null>".
  QString eval(const QString& items) {
    return rowsOf(*m_db, QStringLiteral("select ") + items + QStringLiteral(" from dual")).value(0);
  }
  int error(const QString& items, QString* text = nullptr) {
    return errorOf([&] { eval(items); }, text);
  }
  QStringList names(const QString& condition) {
    return rowsOf(*m_db,
                  QStringLiteral("select name from staff where ") + condition + QStringLiteral(" order by name"));
  }

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table staff (name varchar2(10), hire_date date)");
    m_db->ExecuteSQL("insert into staff values ('ANCIENT', sysdate - 3000)");
    m_db->ExecuteSQL("insert into staff values ('OLD', sysdate - 400)");
    m_db->ExecuteSQL("insert into staff values ('MIDDLE', sysdate - 100)");
    m_db->ExecuteSQL("insert into staff values ('RECENT', sysdate - 5)");
    m_db->ExecuteSQL("insert into staff values ('TODAY', sysdate - 0.25)");
  }
  void cleanupTestCase() {
    closeSales();
  }

  void daysAddToADate() {
    const QString d = "to_date('2024/01/31', 'YYYY/MM/DD')";
    QCOMPARE(eval(d + " + 1, 1 + " + d + ", " + d + " - 31, " + d + " + 30"),
             QString("2024/02/01|2024/02/01|2023/12/31|2024/03/01"));
    // A fraction of a day is hours, minutes and seconds.
    QCOMPARE(eval(d + " + 0.5, " + d + " + 1/24, " + d + " - 1/1440, " + d + " + 1.75"),
             QString("2024/01/31 12:00:00|2024/01/31 01:00:00|2024/01/30 23:59:00|2024/02/01 18:00:00"));
    QCOMPARE(eval("to_date('2024/03/01 06:00', 'YYYY/MM/DD HH24:MI') - 0.25, " + d + " + 1 - 1"),
             QString("2024/03/01|2024/01/31"));
    QCOMPARE(eval(d + " + null, null - " + d), QString("<null>|<null>"));
  }

  void datesSubtractToDays() {
    const QString later = "to_date('2024/01/02 12:00', 'YYYY/MM/DD HH24:MI')";
    const QString earlier = "to_date('2024/01/01', 'YYYY/MM/DD')";
    QCOMPARE(eval(later + " - " + earlier + ", " + earlier + " - " + later), QString("1.5|-1.5"));
    QCOMPARE(eval("to_date('2024/03/01', 'YYYY/MM/DD') - " + earlier + ", trunc(sysdate) + 7 - trunc(sysdate)"),
             QString("60|7"));
    // The difference is a number and takes part in arithmetic as one.
    QCOMPARE(eval("(" + later + " - " + earlier + ") * 24"), QString("36"));
  }

  void ansiDateLiterals() {
    QCOMPARE(eval("date '2024-01-31', date '2024-01-31' + 1, date '2024-03-01' - date '2024-02-01'"),
             QString("2024/01/31|2024/02/01|29"));
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where date '2024-02-01' = to_date('2024/01/31', "
                           "'YYYY/MM/DD') + 1"),
             QStringList({"1"}));
  }

  void numbersStillAddAsNumbers() {
    QCOMPARE(eval("1 + 2, 7 - 10, 2 * 3 - 1, 10 - 2 - 3, 1 - -1, 0.5 + 0.25, 9 / 2 - 1"),
             QString("3|-3|5|5|2|.75|3.5"));
    // + and - bind as tightly as ||, left to right.
    QCOMPARE(eval("1 + 2 || 'x', '1' || 5 - 3 || 'z'"), QString("3x|12z"));
    QCOMPARE(error("'a' || 1 + 2"), 1722);
  }

  void wrongCombinationsAreRefused() {
    QString text;
    QCOMPARE(error("to_date('2024/01/31', 'YYYY/MM/DD') + to_date('2024/01/01', 'YYYY/MM/DD')", &text), 975);
    QCOMPARE(text, QString("ORA-00975: date + date not allowed"));
    QCOMPARE(error("1 - sysdate", &text), 932);
    QCOMPARE(text, QString("ORA-00932: inconsistent datatypes: expected NUMBER got DATE"));
    QCOMPARE(error("sysdate - 'x'"), 1722);
    // Text is a number in arithmetic, even text in the form of a date.
    QCOMPARE(error("'2024/01/31' + 1"), 1722);
    QCOMPARE(eval("to_date('2024/01/31', 'YYYY/MM/DD') - '1', '5' + 3"), QString("2024/01/30|8"));
    // Interval and timestamp literals are not available; they fail rather than compute a wrong value.
    QCOMPARE(error("sysdate - interval '1' day", &text), 3001);
    QCOMPARE(text, QString("ORA-03001: unimplemented feature"));
    QCOMPARE(error("timestamp '2024-01-31 10:00:00' + 1"), 3001);
    QCOMPARE(error("to_date('9999/12/31', 'YYYY/MM/DD') + 1"), 1841);
    QCOMPARE(error("to_date('0001/01/01', 'YYYY/MM/DD') - 1"), 1841);
  }

  void columnsCompareWithDateExpressions() {
    QCOMPARE(names("hire_date < sysdate - 365"), QStringList({"ANCIENT", "OLD"}));
    QCOMPARE(names("hire_date > sysdate - 30"), QStringList({"RECENT", "TODAY"}));
    QCOMPARE(names("sysdate - 30 < hire_date"), QStringList({"RECENT", "TODAY"}));
    QCOMPARE(names("hire_date between sysdate - 365 and sysdate - 30"), QStringList({"MIDDLE"}));
    QCOMPARE(names("trunc(hire_date) <= trunc(sysdate) - 100"), QStringList({"ANCIENT", "MIDDLE", "OLD"}));
    QCOMPARE(names("sysdate - hire_date > 50 and sysdate - hire_date < 1000"), QStringList({"MIDDLE", "OLD"}));
    QCOMPARE(rowsOf(*m_db, "select round(sysdate - hire_date) from staff where name = 'OLD'"), QStringList({"400"}));
  }

  void arithmeticInDml() {
    m_db->ExecuteSQL("create table events (id number, at date)");
    m_db->ExecuteSQL("insert into events values (1, date '2024-01-31' + 0.5)");
    m_db->ExecuteSQL("update events set at = at + 1 where id = 1");
    QCOMPARE(rowsOf(*m_db, "select at, at - date '2024-01-31' from events"), QStringList({"2024/02/01 12:00:00|1.5"}));
    QCOMPARE(rowsOf(*m_db, "select id from events where at > date '2024-02-01' and at < date '2024-02-01' + 1"),
             QStringList({"1"}));
    m_db->ExecuteSQL("drop table events");
  }

  void extractTakesADatesParts() {
    const QString d = "to_date('2024/02/29 13:45:10', 'YYYY/MM/DD HH24:MI:SS')";
    QCOMPARE(eval("extract(year from " + d + "), extract(month from " + d + "), extract(day from " + d + ")"),
             QString("2024|2|29"));
    QCOMPARE(eval("extract(day from date '2024-03-01' - 1) + 1"), QString("30"));
    QCOMPARE(rowsOf(*m_db, "select name from staff where extract(year from hire_date) < extract(year from sysdate) "
                           "- 5 order by name"),
             QStringList({"ANCIENT"}));
    QString text;
    QCOMPARE(error("extract(hour from " + d + ")", &text), 30076);
    QCOMPARE(text, QString("ORA-30076: invalid extract field for extract source"));
    QCOMPARE(error("extract(minute from sysdate)"), 30076);
  }

  void theSessionsDateFormatReadsAndWritesDates() {
    auto db = m_fx->sales();
    db->ExecuteSQL("create table diary (at date)");
    db->ExecuteSQL("alter session set nls_date_format = 'DD.MM.YYYY HH24:MI'");
    db->ExecuteSQL("insert into diary values ('05.03.2024 08:15')");
    db->ExecuteSQL("insert into diary values (date '2024-01-31')");
    QCOMPARE(rowsOf(*db, "select at, to_char(at), 'on ' || at from diary order by at"),
             QStringList({"31.01.2024 00:00|31.01.2024 00:00|on 31.01.2024 00:00",
                          "05.03.2024 08:15|05.03.2024 08:15|on 05.03.2024 08:15"}));
    QCOMPARE(rowsOf(*db, "select to_char(at, 'YYYY/MM/DD HH24:MI:SS') from diary where at > '01.02.2024 00:00'"),
             QStringList({"2024/03/05 08:15:00"}));
    QCOMPARE(rowsOf(*db, "select to_char(to_date('01.02.2024 10:30') + 1, 'YYYY-MM-DD HH24:MI') from dual"),
             QStringList({"2024-02-02 10:30"}));
    QCOMPARE(errorOf([&] { db->ExecuteSQL("insert into diary values ('March 5th')"); }), 1858);
    // Set to the stored form, midnight shows its time too; a model given to TO_CHAR is kept.
    db->ExecuteSQL("alter session set nls_date_format = 'YYYY/MM/DD HH24:MI:SS'");
    QCOMPARE(rowsOf(*db, "select at from diary order by at").value(0), QString("2024/01/31 00:00:00"));
    QCOMPARE(rowsOf(*m_db, "select to_char(date '2024-01-31', 'YYYY/MM/DD HH24:MI:SS'), date '2024-01-31' from dual"),
             QStringList({"2024/01/31 00:00:00|2024/01/31"}));
    QString text;
    QCOMPARE(errorOf([&] { db->ExecuteSQL("alter session set nls_date_format = 'XYZ'"); }, &text), 1821);
    QCOMPARE(text, QString("ORA-01821: date format not recognized"));
    db->ExecuteSQL("drop table diary");
  }
};

QTEST_GUILESS_MAIN(TestDates)
#include "test_dates.moc"
