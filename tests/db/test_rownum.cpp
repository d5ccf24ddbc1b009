#include "EngineFixture.h"

// ROWNUM numbers the rows a query block produces, in the order they come and before its ORDER
// BY sorts them: the top-N idiom over an ordered inline view, other conditions on ROWNUM, and
// ROWNUM in expressions and aggregates.
class TestRownum final : public QObject, SalesSession {
  Q_OBJECT

private Q_SLOTS:
  void initTestCase() {
    openSales();
    m_db->ExecuteSQL("create table scores (k number, name varchar2(5))");
    for (const char* row : {"3, 'c'", "1, 'a'", "5, 'e'", "2, 'b'", "4, 'd'"})
      m_db->ExecuteSQL(QString("insert into scores values (%1)").arg(row));
  }
  void cleanupTestCase() {
    closeSales();
  }

  void topNOfAnOrderedInlineView() {
    const QStringList top = {"5", "4"};
    QCOMPARE(rows("select k from (select k from scores order by k desc) where rownum <= 2"), top);
    QCOMPARE(rows("select v.k from (select k from scores order by k desc) v where rownum <= 2"), top);
    QCOMPARE(rows("select k from (select k from scores order by k desc) v where rownum < 3 and k > 0"), top);
    // The outer ORDER BY sorts the rows ROWNUM kept, it does not choose them.
    QCOMPARE(rows("select k from (select k from scores order by k desc) v where rownum <= 2 order by k"),
             QStringList({"4", "5"}));
    QCOMPARE(rows("select name from (select name, k from scores order by k) s where rownum <= 3 order by name desc"),
             QStringList({"c", "b", "a"}));
    // Pagination: numbered in an inner block, chosen by the number outside it.
    QCOMPARE(rows("select k from (select rownum rn, k from (select k from scores order by k)) where rn between 2 "
                  "and 3"),
             QStringList({"2", "3"}));
  }

  void rownumInExpressionsAndAggregates() {
    QCOMPARE(rows("select max(rownum), count(rownum), sum(rownum) from scores"), QStringList({"5|5|15"}));
    QCOMPARE(rows("select max(rownum) from scores where k > 2"), QStringList({"3"}));
    QCOMPARE(rows("select sum(nvl(rownum, 0) * 2) from scores"), QStringList({"30"}));
    QCOMPARE(rows("select rownum * 10, k from (select k from scores order by k) where k >= 4"),
             QStringList({"10|4", "20|5"}));
    // Numbered as the rows come, then sorted.
    QCOMPARE(rows("select rownum, k from (select k from scores order by k desc) order by k"),
             QStringList({"5|1", "4|2", "3|3", "2|4", "1|5"}));
  }

  // A row gets the next number only if it passes WHERE, which sees the number it would get:
  // the rows come 3, 1, 5, 2, 4.
  void otherConditionsNumberTheRowsThatPass() {
    QCOMPARE(rows("select k from scores where rownum < 3 or k = 4"), QStringList({"3", "1", "4"}));
    QCOMPARE(rows("select rownum, k from scores where rownum = 1 or k > 4"), QStringList({"1|3", "2|5"}));
    QCOMPARE(rows("select k from scores where rownum between 1 and 2"), QStringList({"3", "1"}));
    QCOMPARE(rows("select k from scores where not (rownum > 2)"), QStringList({"3", "1"}));
    QCOMPARE(rows("select k from scores where rownum <= 2 and (k < 3 or rownum > 1)"), QStringList({"1", "5"}));
    QCOMPARE(rows("select count(*) from scores a, scores b where a.k = b.k and (rownum < 3 or a.k = 4)"),
             QStringList({"3"}));
    m_db->ExecuteSQL("create table gone as select * from scores");
    QCOMPARE(m_db->ExecuteSQL("update gone set name = upper(name) where rownum <= 2"), 2);
    QCOMPARE(m_db->ExecuteSQL("delete from gone where rownum = 1 or k = 2"), 2);
    QCOMPARE(rows("select k || name from gone"), QStringList({"1A", "5e", "4d"}));
    m_db->ExecuteSQL("drop table gone");
    // A subquery may run again for each row of another, or be merged into it: refused there.
    QString text;
    QCOMPARE(errorOf([&] { rows("select * from (select k from scores where rownum < 3 or k = 4)"); }, &text), 3001);
    QCOMPARE(text, QString("ORA-03001: unimplemented feature"));
    QCOMPARE(errorOf([&] { rows("select k from scores s where exists (select 1 from dual where rownum = s.k)"); }),
             3001);
    QCOMPARE(errorOf([&] { rows("select sys_connect_by_path(name, rownum) from scores connect by prior k = k - 1"); }),
             3001);
  }
};

QTEST_GUILESS_MAIN(TestRownum)
#include "test_rownum.moc"
