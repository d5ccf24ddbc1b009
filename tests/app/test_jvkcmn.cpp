#include "common/JVK_Cmn.h"
#include "platform/Uptime.h"

#include <QTest>

class TestJvkCmn final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void splitCommandLine() {
    const CommandArgs three = SplitCommandLine("  QUIL\tQTJL \t local:demo  ");
    QCOMPARE(three.count(), 3);
    QCOMPARE(three.word(1), QString("QUIL"));
    QCOMPARE(three.word(2), QString("QTJL"));
    QCOMPARE(three.word(3), QString("local:demo"));
    QCOMPARE(three.word(4), QString());
    QCOMPARE(three.word(0), QString());

    const CommandArgs eleven = SplitCommandLine("1 2 3 4 5 6 7 8 9 10 11 12");
    QCOMPARE(eleven.count(), 10);
    QCOMPARE(eleven.word(10), QString("10"));
    QCOMPARE(SplitCommandLine("a b c d", 2).count(), 2);
    QCOMPARE(SplitCommandLine("").count(), 0);
    QCOMPARE(SplitCommandLine(" \t ").count(), 0);
    // No quoting: quotes are ordinary characters.
    const CommandArgs quoted = SplitCommandLine("\"a b\" c");
    QCOMPARE(quoted.count(), 3);
    QCOMPARE(quoted.word(1), QString("\"a"));
  }

  void japaneseWeekday() {
    // 2026-11-22 is a Sunday.
    const QStringList expected = {"日曜日", "月曜日", "火曜日", "水曜日", "木曜日", "金曜日", "土曜日"};
    for (int i = 0; i < 7; ++i)
      QCOMPARE(JapaneseWeekday(QDate(2026, 11, 22).addDays(i)), expected[i]);
    QCOMPARE(JapaneseWeekday(QDate()), QString());
  }

  void ansiByteLength() {
    QCOMPARE(AnsiByteLength(""), 0);
    QCOMPARE(AnsiByteLength("ABC 123"), 7);
    QCOMPARE(AnsiByteLength("ﾃｰﾌﾞﾙ"), 5);    // half-width katakana: one byte each
    QCOMPARE(AnsiByteLength("テーブル"), 8); // full-width: two bytes each
    QCOMPARE(AnsiByteLength("顧客番号A"), 9);
    QCOMPARE(AnsiByteLength("€"), 2);  // not in CP932
    QCOMPARE(AnsiByteLength("😀x"), 3); // outside the BMP, not in CP932
    QCOMPARE(AnsiByteLength("①"), 2);  // NEC special character, in CP932
  }

  void logonNameAndUptime() {
    const QString user = GetWindowsUserName();
    QVERIFY(!user.isEmpty());
    QCOMPARE(user, user.trimmed());
    QCOMPARE(wrapToInt32(1000), 1000);
    QCOMPARE(wrapToInt32(2147483647LL), 2147483647);
    QCOMPARE(wrapToInt32(2147483648LL), qint32(-2147483647 - 1));
    QCOMPARE(wrapToInt32(4294967296LL + 5), 5);
  }
};

QTEST_GUILESS_MAIN(TestJvkCmn)
#include "test_jvkcmn.moc"
