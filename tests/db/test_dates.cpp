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

  void timestampsAndIntervals() {
    QCOMPARE(eval("timestamp '2024-01-31 10:00:00.5', to_timestamp('10-Sep-02 14:10:10.123000', "
                  "'DD-Mon-RR HH24:MI:SS.FF')"),
             QString("2024/01/31 10:00:00.500000000|2002/09/10 14:10:10.123000000"));
    QCOMPARE(eval("interval '2' day, interval '1-6' year to month, interval '0 10:00:00' day to second"),
             QString("+02 00:00:00|+01-06|+00 10:00:00.000000"));
    QCOMPARE(eval("interval '123-2' year(3) to month, interval '300' month(3), interval '4 5:12:10.222' day to "
                  "second(3), interval '30.12345' second(2, 4)"),
             QString("+123-02|+25-00|+04 05:12:10.222|+00 00:00:30.1235"));
    QString text;
    QCOMPARE(error("interval '123' year", &text), 1873);
    QCOMPARE(text, QString("ORA-01873: the leading precision of the interval is too small"));
    QCOMPARE(error("interval '1 25' day to hour"), 1850);
    QCOMPARE(error("interval '1:60' hour to minute"), 1851);
    QCOMPARE(error("interval 'x' day"), 1867);
    QCOMPARE(error("timestamp '2024-13-01 00:00:00'"), 1843);
    QCOMPARE(eval("to_timestamp('2024/01/31 10:00:00.5'), timestamp '2024-01-02 00:00:00' - date '2024-01-01'"),
             QString("2024/01/31 10:00:00.500000000|+000000001 00:00:00.000000000"));
    QCOMPARE(eval("to_dsinterval('1 02:00:00'), to_yminterval('01-06'), timestamp '2024-01-31 10:00:00 +09:00', "
                  "timestamp '2024-01-31 10:00:00 +09:00' - timestamp '2024-01-31 10:00:00 +00:00'"),
             QString("+000000001 02:00:00.000000000|+000000001-06|2024/01/31 10:00:00.000000000 +09:00|"
                     "-000000000 09:00:00.000000000"));
    // CURRENT_TIMESTAMP has the session's zone, LOCALTIMESTAMP none; both are the statement's moment.
    QCOMPARE(eval("case when abs(current_date - sysdate) * 86400 <= 1 and current_timestamp = systimestamp and localtimestamp - "
                  "systimestamp = interval '0' second then 'same' end, length(current_timestamp) - "
                  "length(localtimestamp)"),
             QString("same|7"));
    QCOMPARE(eval("numtodsinterval(100, 'MINUTE'), numtoyminterval(30, 'month')"),
             QString("+000000000 01:40:00.000000000|+000000002-06"));
    // A moment moved by an interval keeps its type; two moments give an INTERVAL DAY TO SECOND.
    const QString t = "timestamp '2024-01-31 10:00:00.5'";
    QCOMPARE(eval(t + " + interval '0 10:00:00' day to second, " + t +
                  " - interval '1' year, timestamp '2024-01-31 10:00:00' + 1"),
             QString("2024/01/31 20:00:00.500000000|2023/01/31 10:00:00.500000000|2024/02/01 10:00:00"));
    QCOMPARE(eval("date '2024-01-15' + interval '1-6' year to month, date '2024-01-15' - interval '36' hour"),
             QString("2025/07/15|2024/01/13 12:00:00"));
    QCOMPARE(eval("timestamp '2024-01-02 00:00:00' - timestamp '2024-01-01 00:00:00', date '2024-01-01' - " + t),
             QString("+000000001 00:00:00.000000000|-000000030 10:00:00.500000000"));
    // SYSTIMESTAMP is one moment for the whole statement.
    QCOMPARE(eval("systimestamp - systimestamp, extract(hour from interval '1' day - interval '2' hour)"),
             QString("+000000000 00:00:00.000000|22"));
    QCOMPARE(eval("extract(second from " + t + "), extract(hour from " + t +
                  "), extract(day from interval '4 "
                  "5:12:10' day to second), extract(hour from interval '1' hour * 3)"),
             QString(".5|10|4|3"));
    QCOMPARE(eval("to_char(" + t + ", 'HH24:MI:SS.FF3'), trunc(" + t + "), length(to_char(systimestamp, 'FF'))"),
             QString("10:00:00.500|2024/01/31|6"));
    // They compare by value, not by their text.
    QCOMPARE(rowsOf(*m_db, "select count(*) from dual where systimestamp - timestamp '2004-01-01 00:00:00' > "
                           "interval '1' day and interval '2' day > interval '36' hour and interval '-1' day < "
                           "interval '1' hour and " +
                               t +
                               " > timestamp '2024-01-31 10:00:00.25' and "
                               "date '2024-01-31' < timestamp '2024-01-31 00:00:00.1'"),
             QStringList({"1"}));
    QCOMPARE(error("case when interval '1' day > interval '1' month then 1 end"), 932);
    QCOMPARE(eval("extract(year from interval '5-3' year to month), extract(month from interval '-5-3' year to "
                  "month), extract(second from interval '0 0:0:7.25' day to second), -interval '1' day, "
                  "interval '10' minute * 1.5, interval '3' hour / 2"),
             QString("5|-3|7.25|-01 00:00:00|+000000000 00:15:00|+000000000 01:30:00"));
    QCOMPARE(error("date '2024-01-31' + interval '1' month", &text), 1839);
    QCOMPARE(text, QString("ORA-01839: date not valid for month specified"));
    QCOMPARE(error("1 + interval '1' day", &text), 30081);
    QCOMPARE(text, QString("ORA-30081: invalid data type for datetime/interval arithmetic"));
    QCOMPARE(error("interval '1' day + interval '1' month"), 30081);
  }

  // Intervals sort, and find their least and greatest, by value: negative ones first, whatever
  // the width of their days; as text they read as Oracle prints them.
  void intervalsSortByValue() {
    const QString spans = "(select interval '10' day d from dual union all select interval '9' day from dual "
                          "union all select interval '-3' day from dual union all select numtodsinterval(36, 'HOUR') "
                          "from dual union all select interval '-10' day from dual)";
    QCOMPARE(rowsOf(*m_db, "select d from " + spans + " order by d"),
             QStringList({"-10 00:00:00", "-03 00:00:00", "+000000001 12:00:00.000000000", "+09 00:00:00",
                          "+10 00:00:00"}));
    QCOMPARE(rowsOf(*m_db, "select max(d), min(d), count(distinct d) from " + spans),
             QStringList({"+10 00:00:00|-10 00:00:00|5"}));
    QCOMPARE(rowsOf(*m_db, "select y from (select interval '-1-6' year to month y from dual union all select "
                           "interval '1-2' year to month from dual union all select interval '0-11' year to month "
                           "from dual) order by y desc"),
             QStringList({"+01-02", "+00-11", "-01-06"}));
    QCOMPARE(eval("'[' || interval '2' hour || ']', length(interval '2' day), to_char(interval '-1-6' year to month)"),
             QString("[+00 02:00:00]|12|-01-06"));
    // A text column takes an interval's text, not the interval itself.
    m_db->ExecuteSQL("create table spans (s varchar2(20))");
    QCOMPARE(errorOf([&] { m_db->ExecuteSQL("insert into spans values (interval '1' day)"); }), 3001);
    m_db->ExecuteSQL("insert into spans values (to_char(interval '1' day))");
    QCOMPARE(rowsOf(*m_db, "select count(*) from spans where s = '+01 00:00:00'"), QStringList({"1"}));
    m_db->ExecuteSQL("drop table spans");
  }

  // Zones given as offsets; a region would print as its offset rather than its name, so FROM_TZ
  // refuses one, while TZ_OFFSET, which answers with an offset anyway, takes it.
  void timeZonesAsOffsets() {
    QCOMPARE(eval("from_tz(timestamp '2024-01-01 10:00:00', '+09:00'), sys_extract_utc(timestamp '2024-01-01 "
                  "10:00:00 +09:00'), tz_offset('-05:30'), tz_offset('Asia/Tokyo'), dbtimezone"),
             QString("2024/01/01 10:00:00.000000000 +09:00|2024/01/01 01:00:00.000000000|-05:30|+09:00|+00:00"));
    QCOMPARE(eval("extract(timezone_hour from timestamp '2024-01-01 10:00:00 -05:30'), extract(timezone_minute from "
                  "timestamp '2024-01-01 10:00:00 -05:30'), case when tz_offset(sessiontimezone) = sessiontimezone then "
                  "'same' end"),
             QString("-5|-30|same"));
    QCOMPARE(error("from_tz(timestamp '2024-01-01 10:00:00', 'Asia/Tokyo')"), 3001);
    QString text;
    QCOMPARE(error("tz_offset('Nowhere/City')", &text), 1882);
    QCOMPARE(text, QString("ORA-01882: timezone region not found"));
    QCOMPARE(error("extract(timezone_hour from timestamp '2024-01-01 10:00:00')"), 30076);
    QCOMPARE(error("from_tz(timestamp '2024-01-01 10:00:00', '+15:00')"), 1874);
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
