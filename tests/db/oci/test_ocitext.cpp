#include "db/oci/OciText.h"

#include <QTest>

// How Oracle's text becomes the values every window shows.
class TestOciText : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void numbersTakeTheTypeThatKeepsTheirDigits() {
    QCOMPARE(OciText::number("42").typeId(), QMetaType::LongLong);
    QCOMPARE(OciText::number("-9223372036854775808").toLongLong(), std::numeric_limits<qint64>::min());
    // Anything else stays as Oracle wrote it, digit for digit: fractions without the zero
    // before the decimal sign, values beyond qint64, BINARY_DOUBLE's infinity.
    for (const char* text : {".5", "-.25", "1.5E+000", "12345678901234567890", "-.1234567890123456", "~"})
      QCOMPARE(OciText::number(text), QVariant(QString::fromLatin1(text)));
  }

  void datesDropMidnight() {
    QCOMPARE(OciText::date("2024/02/29 00:00:00"), QStringLiteral("2024/02/29"));
    QCOMPARE(OciText::date("2024/02/29 00:00:01"), QStringLiteral("2024/02/29 00:00:01"));
  }

  void serverReleaseFromEveryBannerForm() {
    QCOMPARE(OciText::releaseFromBanner(QStringLiteral(
                 "Oracle Database 19c Enterprise Edition Release 19.0.0.0.0 - Production\nVersion 19.21.0.0.0")),
             QStringLiteral("19.21.0.0.0"));
    QCOMPARE(OciText::releaseFromBanner(
                 QStringLiteral("Oracle Database 12c Enterprise Edition Release 12.1.0.2.0 - 64bit Production")),
             QStringLiteral("12.1.0.2.0"));
    QCOMPARE(OciText::releaseFromBanner(QStringLiteral("Personal Oracle\nsomething else")),
             QStringLiteral("Personal Oracle"));
  }

  void errorTextLosesOnlyItsOwnPrefix() {
    QCOMPARE(OciText::errorText(QStringLiteral("ORA-00942: table or view does not exist\n"), 942),
             QStringLiteral("table or view does not exist"));
    // A PL/SQL error keeps its stack; a prefix of another number is not Oracle's own for it.
    QCOMPARE(OciText::errorText(QStringLiteral("ORA-06550: line 1\nORA-06512: at line 3\n"), 6550),
             QStringLiteral("line 1\nORA-06512: at line 3"));
    QCOMPARE(OciText::errorText(QStringLiteral("ORA-00001: x"), 2), QStringLiteral("ORA-00001: x"));
  }
};

QTEST_GUILESS_MAIN(TestOciText)
#include "test_ocitext.moc"
