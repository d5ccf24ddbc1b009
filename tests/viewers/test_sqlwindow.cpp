#include "viewers/FDBSWEEP_SQL.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

class TestSqlWindow final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void theStatementArrivesWholeAndCopiesAsEdited() {
    const QString sql = "select 社員番号, 氏名\n  from 社員\n where 部署 = '営業部'\n   and " +
                        QString("給与 > 0 and ").repeated(40) + "1 = 1";
    FDBSWEEP_SQL window(sql);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(window.windowTitle(), QString("SQL表示"));
    auto* text = window.findChild<QPlainTextEdit*>("txtSql");
    auto* copy = window.findChild<QPushButton*>("cmdCopy");
    auto* end = window.findChild<QPushButton*>("cmdEnd");
    QVERIFY(text && copy && end);
    QCOMPARE(copy->text(), QString("Copy"));
    QCOMPARE(end->text(), QString("閉じる"));
    QCOMPARE(text->toPlainText(), sql);

    QGuiApplication::clipboard()->setText("before");
    text->setFocus();
    QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(text, " order by 2");
    QTest::mouseClick(copy, Qt::LeftButton);
    QCOMPARE(QGuiApplication::clipboard()->text(), sql + " order by 2");
    QVERIFY(window.isVisible());

    QTest::mouseClick(end, Qt::LeftButton);
    QVERIFY(!window.isVisible());
  }

  void beforeAnyStatementTheBoxIsEmpty() {
    FDBSWEEP_SQL window(QString{});
    window.show();
    auto* text = window.findChild<QPlainTextEdit*>("txtSql");
    QVERIFY(text);
    QVERIFY(text->toPlainText().isEmpty());
  }
};

QTEST_MAIN(TestSqlWindow)
#include "test_sqlwindow.moc"
