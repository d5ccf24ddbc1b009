#include "db/OraDynaset.h"
#include "sqlconsole/ColumnFormat.h"
#include "sqlconsole/DisplayWidth.h"
#include "sqlconsole/ResultPrinter.h"
#include "sqlconsole/StatementFeedback.h"

#include <QDateTime>
#include <QTest>

#include <stdexcept>

namespace {

// Rows held in memory, walked the way the console walks a real dynaset.
class FakeDynaset final : public OraDynaset {
public:
  FakeDynaset(const QStringList& names, QList<QVariantList> rows) : m_rows(std::move(rows)) {
    for (const QString& name : names)
      m_names.append(name);
  }

  qint64 RecordCount() override { return m_rows.size(); }
  QVariant Fields(int index) override {
    if (IsEOF())
      throw std::logic_error("no current row");
    return m_rows.at(m_row).at(index);
  }
  void MoveNext() override { ++m_row; }
  bool IsEOF() override { return m_row >= m_rows.size(); }
  void Delete() override {}
  void Close() override {}

private:
  QList<QVariantList> m_rows;
  qsizetype m_row = 0;
};

QString printed(ResultPrinter::Format format, const QStringList& names, const QList<QVariantList>& rows,
                const ResultLayout& layout = {}) {
  FakeDynaset dynaset(names, rows);
  QString text;
  QTextStream out(&text);
  const qint64 count = ResultPrinter(format, layout).print(dynaset, out);
  out.flush();
  return count == rows.size() ? text : QStringLiteral("wrong count %1").arg(count);
}

} // namespace

class TestResultPrinter final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void displayWidthCountsTerminalColumns() {
    QCOMPARE(displayWidth(u"abc"), 3);
    QCOMPARE(displayWidth(u"東京都"), 6);
    QCOMPARE(displayWidth(u"ｶﾀｶﾅ"), 4);
    QCOMPARE(displayWidth(u"ＡＢ"), 4);
    QCOMPARE(displayWidth(u"e\u0301"), 1);
    QCOMPARE(displayWidth(QString::fromUcs4(U"\U0001F600\U00020B9F")), 4);
  }

  void textLinesUpColumnsAsSqlplusDoes() {
    const QString text = printed(ResultPrinter::Format::Text, {"ID", "NAME", "AMOUNT", "NOTE"},
                                 {{1, QString("東京"), 12.5, QVariant()},
                                  {qint64(22), QString("abc"), 3.0, QString("line\nbreak")},
                                  {QVariant(), QString("ｶﾅ"), -0.25, QString("x")}});
    QCOMPARE(text, QString("\n"
                           "ID NAME AMOUNT NOTE\n"
                           "-- ---- ------ ----------\n"
                           " 1 東京   12.5\n"
                           "22 abc       3 line break\n"
                           "   ｶﾅ    -0.25 x\n"
                           "\n"
                           "3 rows selected.\n"));
    QCOMPARE(printed(ResultPrinter::Format::Text, {"N"}, {{QString("a")}}), QString("\nN\n-\na\n\n1 row selected.\n"));
    QCOMPARE(printed(ResultPrinter::Format::Text, {"N"}, {}), QString("\nno rows selected\n"));
  }

  void setAndColumnLayOutPagesAsSqlplusDoes() {
    const QList<QVariantList> rows{{7369, QString("SMITH")}, {7499, QString("ALLEN")}, {7521, QString("WARD")}};
    // A page of five lines holds its blank line, the two heading lines and two rows.
    QCOMPARE(printed(ResultPrinter::Format::Text, {"EMPNO", "ENAME"}, rows, {0, 5, true, 1, nullptr}),
             QString("\nEMPNO ENAME\n----- -----\n 7369 SMITH\n 7499 ALLEN\n"
                     "\nEMPNO ENAME\n----- -----\n 7521 WARD\n\n3 rows selected.\n"));
    QCOMPARE(printed(ResultPrinter::Format::Text, {"EMPNO", "ENAME"}, rows, {0, 0, true, 0, nullptr}),
             QString(" 7369 SMITH\n 7499 ALLEN\n 7521 WARD\n"));
    QCOMPARE(printed(ResultPrinter::Format::Text, {"EMPNO", "ENAME"}, rows.mid(0, 1), {0, -1, false, 2, nullptr}),
             QString("\n 7369 SMITH\n"));
    QCOMPARE(printed(ResultPrinter::Format::Text, {"N"}, {}, {0, -1, true, 0, nullptr}), QString());
    // A row wider than the line goes on on the next line, its headings too.
    QCOMPARE(printed(ResultPrinter::Format::Text, {"EMPNO", "ENAME"}, rows.mid(0, 1), {10, -1, true, 1, nullptr}),
             QString("\nEMPNO\n-----\nENAME\n-----\n 7369\nSMITH\n\n1 row selected.\n"));

    ColumnFormats columns;
    QCOMPARE(columns.define({"ename", "format", "a3", "heading", "Name"}), QString());
    QCOMPARE(columns.define({"empno", "for", "9,990.9", "hea", "No"}), QString());
    QCOMPARE(printed(ResultPrinter::Format::Text, {"EMPNO", "ENAME"},
                     {{7369, QString("SMITH")}, {QVariant(), QString("東京都")}}, {0, -1, true, 1, &columns}),
             QString("\n      No Nam\n-------- ---\n 7,369.0 SMI\n         TH\n         東\n         京\n         都\n"
                     "\n2 rows selected.\n"));
    QVERIFY(columns.define({"sal", "format", "9x9"}).startsWith("SP2-0246"));
    QCOMPARE(columns.define({"ename", "clear"}), QString());
    QCOMPARE(columns.find("ENAME"), nullptr);
  }

  void numberFormatsAsSqlplusPrintsThem() {
    const auto format = [](const char* model, const QVariant& value) {
      ColumnFormat column;
      column.numberFormat = QString::fromLatin1(model);
      return column.formatNumber(value);
    };
    QCOMPARE(format("99,990.99", 1600.5), QString("  1,600.50"));
    QCOMPARE(format("99,990.99", 800), QString("    800.00"));
    QCOMPARE(format("99,990.99", -0.5), QString("     -0.50"));
    QCOMPARE(format("99,990.99", 123456), QString("##########"));
    QCOMPARE(format("9.99", 0.456), QString("  .46"));
    QCOMPARE(format("999", 0), QString("   0"));
    QCOMPARE(format("0999", 42), QString(" 0042"));
    QCOMPARE(format("$9,999", -1234), QString("-$1,234"));
    QCOMPARE(format("999", QString("12.5")), QString("  13"));
  }

  void csvQuotesOnlyWhatRfc4180Requires() {
    const QString csv = printed(ResultPrinter::Format::Csv, {"ID", "A,B", "TEXT"},
                                {{1, QString("plain"), QString("say \"hi\"")},
                                 {2.5, QVariant(), QString("two\nlines")},
                                 {qint64(-3), QString("cr\r"), QString(" 東京 ")}});
    QCOMPARE(csv, QString("ID,\"A,B\",TEXT\n"
                          "1,plain,\"say \"\"hi\"\"\"\n"
                          "2.5,,\"two\nlines\"\n"
                          "-3,\"cr\r\", 東京 \n"));
    QCOMPARE(printed(ResultPrinter::Format::Csv, {"N"}, {}), QString("N\n"));
  }

  void valuesPrintAsText() {
    QCOMPARE(ResultPrinter::text(QVariant()), QString());
    QCOMPARE(ResultPrinter::text(1e20), QString("1e+20"));
    QCOMPARE(ResultPrinter::text(qint64(1234567890123)), QString("1234567890123"));
    QCOMPARE(ResultPrinter::text(QDateTime(QDate(2024, 2, 29), QTime(13, 5, 9))), QString("2024-02-29 13:05:09"));
    QCOMPARE(ResultPrinter::text(QByteArray("\x01\xAB", 2)), QString("01AB"));
    QVERIFY(!ResultPrinter::isNumber(QString("12")));
  }

  void feedbackFollowsTheStatement() {
    QVERIFY(StatementFeedback::isQuery(u"select 1 from dual"));
    QVERIFY(StatementFeedback::isQuery(u"  WITH x AS (select 1 from dual) select * from x"));
    QVERIFY(StatementFeedback::isQuery(u"((select 1 from dual) union (select 2 from dual))"));
    QVERIFY(!StatementFeedback::isQuery(u"selection"));
    QVERIFY(!StatementFeedback::isQuery(u"insert into t select * from u"));

    const QList<std::pair<QString, qint64>> statements{{"insert into t values (1)", 1},
                                                       {"UPDATE t SET a = 1", 3},
                                                       {"delete from t", 0},
                                                       {"create table t (a number)", 0},
                                                       {"create unique index i on t (a)", 0},
                                                       {"create or replace force view v as select 1 x from dual", 0},
                                                       {"create sequence s", 0},
                                                       {"comment on table t is 'x'", 0},
                                                       {"alter table t add (b number)", 0},
                                                       {"drop table t", 0},
                                                       {"truncate table t", 0},
                                                       {"create user u identified by p", 0},
                                                       {"grant select on t to u", 0},
                                                       {"alter session set nls_date_format = 'YYYY'", 0},
                                                       {"alter system kill session '1,2'", 0},
                                                       {"commit", 0},
                                                       {"rollback", 0},
                                                       {"lock table t in exclusive mode", 0},
                                                       {"analyze table t compute statistics", 0}};
    const QStringList expected{"1 row created.",     "3 rows updated.",  "0 rows deleted.",     "Table created.",
                               "Index created.",     "View created.",    "Sequence created.",   "Comment created.",
                               "Table altered.",     "Table dropped.",   "Table truncated.",    "User created.",
                               "Grant succeeded.",   "Session altered.", "System altered.",     "Commit complete.",
                               "Rollback complete.", "Table(s) Locked.", "Statement processed."};
    for (qsizetype i = 0; i < statements.size(); ++i)
      QCOMPARE(StatementFeedback::message(statements[i].first, statements[i].second), expected[i]);
  }
};

QTEST_APPLESS_MAIN(TestResultPrinter)
#include "test_resultprinter.moc"
