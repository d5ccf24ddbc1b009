// The filter rules every consumer shares: modes, conditions, the full filter and input lengths.
#include "filter/RowFilter.h"

#include <QTest>

using namespace RowFilter;

class TestRowFilter final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void fullFilterJoinsTheClauseAndTheExtraText() {
    QCOMPARE(FullFilter(QString(), QString()), QString());
    // Without a generated clause the extra text needs a WHERE of its own.
    QCOMPARE(FullFilter(QString(), "KBN = '1'"), QString(" WHERE KBN = '1'"));
    QCOMPARE(FullFilter(" where (A like '1')", " AND B = 2"), QString(" where (A like '1')  AND B = 2"));
    QCOMPARE(FullFilter(" where (A like '1')", QString()), QString(" where (A like '1')"));
  }

  void conditionsPerModeAndHowRowsCombine() {
    // An empty "only" value is still a test, and a reversed range is not an error.
    QCOMPARE(Condition(Only, "A", "", "x"), QString("(A like '')"));
    QCOMPARE(Condition(Range, "D", "2004/12/31", "2004/01/01"), QString("(D between '2004/12/31' and '2004/01/01')"));
    QCOMPARE(Condition(Either, "A", "1%", "2_"), QString("(A like '1%' or A like '2_')"));
    QCOMPARE(Condition(All, "A", "1", "2"), QString());
    QCOMPARE(Condition("?", "A", "1", "2"), QString());
    QString where;
    AppendCondition(where, QString());
    QCOMPARE(where, QString());
    AppendCondition(where, Condition(Only, "DEPT_NO", "10", ""));
    AppendCondition(where, Condition(All, "X", "", ""));
    AppendCondition(where, Condition(Range, "HIRED", "2004/01/01", "2004/12/31"));
    QCOMPARE(where, QString(" where (DEPT_NO like '10') and (HIRED between '2004/01/01' and '2004/12/31')"));
  }

  void modesCycleAndLengthsFollowTheType() {
    QCOMPARE(NextMode(All), Only);
    QCOMPARE(NextMode(Range), All);
    QCOMPARE(NextMode("?"), Only);
    QVERIFY(ShowsValue1(Only) && !ShowsValue2(Only));
    QVERIFY(!ShowsValue1(All) && !ShowsValue2(All));
    QCOMPARE(MaxLength("NUMBER", "7", "2"), 8);
    QCOMPARE(MaxLength("NUMBER", "8", "0"), 8);
    QCOMPARE(MaxLength("NUMBER", "", ""), 0);
    QCOMPARE(MaxLength("VARCHAR2", "20", ""), 20);
    QCOMPARE(MaxLength("DATE", "7", ""), 0);
    QCOMPARE(MaxLength("CHAR", "5", ""), 5);
  }
};

QTEST_GUILESS_MAIN(TestRowFilter)
#include "test_rowfilter.moc"
