// The print object on an image, and the result report printed from the main window to a PDF
// file, read back with poppler's tools.
#include "../jobs/ShopWindow.h"
#include "printing/ResultPrint.h"
#include "printing/clsPrinter.h"

#include <QGuiApplication>
#include <QLineEdit>
#include <QMap>
#include <QImage>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>

namespace {

// Whether any pixel inside rect is darker than mid-grey.
bool inked(const QImage& image, const QRect& rect) {
  for (int y = std::max(0, rect.top()); y <= std::min(image.height() - 1, rect.bottom()); ++y)
    for (int x = std::max(0, rect.left()); x <= std::min(image.width() - 1, rect.right()); ++x)
      if (qGray(image.pixel(x, y)) < 128)
        return true;
  return false;
}

QString run(const QString& program, const QStringList& arguments) {
  QProcess p;
  p.start(program, arguments);
  p.waitForFinished(30000);
  return QString::fromUtf8(p.readAllStandardOutput());
}

// The PDF's printed lines, top to bottom, each with the top of its words: words at one height make
// one line, left to right, joined by a blank.
QList<std::pair<double, QString>> linesOf(const QString& pdf) {
  const QString html = run("pdftotext", {"-bbox", pdf, "-"});
  static const QRegularExpression word("<word xMin=\"([^\"]*)\" yMin=\"([^\"]*)\"[^>]*>([^<]*)</word>");
  QMap<qint64, QMap<double, QString>> rows; // by top in hundredths, then by left
  for (auto w = word.globalMatch(html); w.hasNext();) {
    const auto m = w.next();
    rows[qRound64(m.captured(2).toDouble() * 100)][m.captured(1).toDouble()] =
        m.captured(3).replace("&apos;", "'").replace("&amp;", "&");
  }
  QList<std::pair<double, QString>> lines;
  for (auto r = rows.begin(); r != rows.end(); ++r)
    lines.append({r.key() / 100.0, QStringList(r.value().values()).join(u' ')});
  return lines;
}

} // namespace

class TestPrinting final : public QObject {
  Q_OBJECT

  Machine m;
  QTemporaryDir out;

private Q_SLOTS:
  void initTestCase() { CreateShop(m); }
  void init() { FillShop(m); }

  void thePrinterDrawsAtItsPositionAndSwallowsWhatItCannotDo() {
    QImage page(1200, 900, QImage::Format_RGB32); // outlives the printer that draws on it
    page.fill(Qt::white);
    clsPrinter printer;
    QCOMPARE(printer.Font().family(), QString("ＭＳ ゴシック"));
    QCOMPARE(printer.Font().pointSize(), 10);
    QVERIFY(!printer.StartDoc("DBSWEEP")); // no device
    printer.StartPage();
    printer.DrawText("nothing to draw on");
    printer.EndDoc();
    QCOMPARE(printer.PrintJobID(), 0);

    printer.setHDC(&page);
    QCOMPARE(printer.Width(), 1200);
    QCOMPARE(printer.Height(), 900);
    QVERIFY(printer.StartDoc("DBSWEEP"));
    QVERIFY(printer.PrintJobID() != 0);
    QVERIFY(!printer.StartDoc("again")); // one document at a time
    printer.StartPage();
    printer.setCurrentX(300);
    printer.setCurrentY(100);
    printer.DrawText("顧客 KOKYAKU");
    const int end = printer.CurrentX();
    QVERIFY(end > 340);
    QCOMPARE(printer.CurrentY(), 100);
    printer.DrawLine(50, 700, 500, 700);
    QCOMPARE(QPoint(printer.CurrentX(), printer.CurrentY()), QPoint(500, 700));
    // An empty line is as high as any other.
    QVERIFY(printer.TextHeight("") > 0);
    QCOMPARE(printer.TextHeight(""), printer.TextHeight("あ"));
    const double screenDpi = QGuiApplication::primaryScreen()->logicalDotsPerInchX();
    QCOMPARE(printer.ScaleX(screenDpi), page.logicalDpiX());
    printer.EndPage();
    printer.EndDoc();
    QCOMPARE(printer.PrintJobID(), 0);
    printer.EndDoc(); // a second end does nothing

    // The text lies from its position rightwards and downwards, nowhere else.
    QVERIFY(inked(page, QRect(QPoint(300, 100), QPoint(end, 100 + 3 * printer.Font().pointSize()))));
    QVERIFY(!inked(page, QRect(0, 0, 1200, 99)));
    QVERIFY(!inked(page, QRect(0, 0, 299, 600)));
    QVERIFY(inked(page, QRect(200, 699, 10, 3)));
  }

  void blankLinesTakeALineAndNothingGoesBeyondOnePage() {
    QImage page(800, 400, QImage::Format_RGB32);
    page.fill(Qt::white);
    clsPrinter printer;
    printer.setHDC(&page);
    const ResultReport report{"local:x", "SHOP", "", {"処理結果", "", "", "LAST"}};
    PrintResultReport(printer, report);
    const int h = printer.TextHeight("");
    // Lines 5 and 8 carry the heading and LAST; 6 and 7 are blank and stay blank.
    QVERIFY(inked(page, QRect(300, 5 * h, 200, h)));
    QVERIFY(!inked(page, QRect(0, 6 * h + h / 4, 800, 2 * h - h / 2)));
    QVERIFY(inked(page, QRect(300, 8 * h, 200, h)));
    QCOMPARE(printer.PrintJobID(), 0);
  }

  void theResultListPrintsToAPdfFromTheMainWindow() {
    Shop s(m);
    QTest::mouseClick(s.job(0), Qt::LeftButton); // a count: banners, times and four tables
    QVERIFY(s.count->Rows() > 10);
    s.start.state.gHost = "local:shop";
    s.start.state.gLastWhere = " where A='1'";
    s.start.find<QLineEdit>("txtAddWhere")->setText("B=2");
    const QString pdf = out.path() + "/result.pdf";
    m.fakes.print.expect(PrintDialog::Choice{QString(), pdf, 1});
    QTest::mouseClick(s.start.find<QPushButton>("cmdPrint"), Qt::LeftButton);

    const QString info = run("pdfinfo", {pdf});
    QVERIFY2(info.contains(QRegularExpression("Pages:\\s+1\\n")), qPrintable(info));
    QVERIFY2(info.contains(QRegularExpression("Title:\\s+DBSWEEP\\n")), qPrintable(info));
    const auto lines = linesOf(pdf);
    QVERIFY(lines.size() >= 3);
    QCOMPARE(lines[0].second, QString("DBSWEEP結果リストホスト名:local:shopユーザ名:SHOP"));
    QCOMPARE(lines[1].second, QString("WHERE句"));
    QCOMPARE(lines[2].second, QString("where A='1'B=2"));
    // Then every line of the list, blank ones as gaps of a line: line r sits r + 5 lines down.
    const double step = lines[1].first - lines[0].first;
    QVERIFY(step > 0);
    QStringList printed;
    for (int r = 0; r < s.count->Rows(); ++r) {
      const QString text = s.count->TextMatrix(r, 0).simplified();
      if (text.isEmpty())
        continue;
      const auto at = std::find_if(lines.begin(), lines.end(), [&](const auto& l) { return l.second == text; });
      QVERIFY2(at != lines.end(), qPrintable(text));
      QVERIFY2(qAbs(at->first - (lines[0].first + (r + 4) * step)) < step / 4, qPrintable(text));
      printed << text;
    }
    QCOMPARE(printed.first(), QString("処理結果"));
    QVERIFY(printed.contains("＝＝＝件数カウント終了＝＝＝"));

    // Nothing chosen: nothing printed.
    QFile::remove(pdf);
    s.start.find<QLineEdit>("txtAddWhere")->clear();
    m.fakes.print.expect(std::nullopt);
    QTest::mouseClick(s.start.find<QPushButton>("cmdPrint"), Qt::LeftButton);
    QVERIFY(!QFile::exists(pdf));
  }

  void noFilterReadsNashiAndALongListIsCutAtOnePage() {
    QStringList lines;
    for (int i = 1; i <= 300; ++i)
      lines << QString("LINE%1").arg(i);
    const QString pdf = out.path() + "/long.pdf";
    QPrinter device(QPrinter::HighResolution);
    device.setOutputFormat(QPrinter::PdfFormat);
    device.setOutputFileName(pdf);
    clsPrinter printer;
    printer.setHDC(&device);
    PrintResultReport(printer, {"local:x", "SHOP", "", lines});
    printer.setHDC(nullptr);

    QVERIFY(run("pdfinfo", {pdf}).contains(QRegularExpression("Pages:\\s+1\\n")));
    const auto printed = linesOf(pdf);
    QCOMPARE(printed[2].second, QString("なし"));
    const auto has = [&](const QString& text) {
      return std::any_of(printed.begin(), printed.end(), [&](const auto& l) { return l.second == text; });
    };
    QVERIFY(has("LINE1"));
    QVERIFY(has("LINE40"));
    QVERIFY(!has("LINE300"));
  }
};

QTEST_MAIN(TestPrinting)
#include "test_printing.moc"
