// Fills a FlexGrid with 100,000 rows x 20 columns and reports how long filling, showing,
// sorting and scrolling take and how much memory the filled grid holds.
//   bench_flexgrid [rows] [cols]
#include "widgets/FlexGrid.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

namespace {

// Resident memory of this process in KiB, from /proc.
long residentKiB() {
  QFile f(QStringLiteral("/proc/self/status"));
  if (!f.open(QIODevice::ReadOnly))
    return -1;
  for (const QByteArray& line : f.readAll().split('\n'))
    if (line.startsWith("VmRSS:"))
      return line.mid(6).trimmed().split(' ').first().toLong();
  return -1;
}

double ms(QElapsedTimer& t) { return double(t.nsecsElapsed()) / 1e6; }

} // namespace

int main(int argc, char* argv[]) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 100000;
  const int cols = argc > 2 ? std::atoi(argv[2]) : 20;

  FlexGrid grid;
  grid.resize(1200, 800);
  QCoreApplication::processEvents();
  const long before = residentKiB();

  QElapsedTimer t;
  t.start();
  grid.setCols(cols);
  grid.setRows(rows + 1);
  for (int c = 0; c < cols; ++c)
    grid.setTextMatrix(0, c, QStringLiteral("COLUMN_%1").arg(c));
  for (int r = 1; r <= rows; ++r) {
    grid.setTextMatrix(r, 0, QString::number(r));
    for (int c = 1; c < cols; ++c)
      grid.setTextMatrix(r, c, QStringLiteral("V%1-%2").arg((r * 7919 + c * 104729) % 1000003).arg(c));
  }
  const double fill = ms(t);
  const long filled = residentKiB();

  t.restart();
  grid.show();
  QCoreApplication::processEvents();
  grid.viewport()->grab();
  const double firstPaint = ms(t);

  t.restart();
  grid.setRow(1);
  grid.setCol(1);
  grid.setRowSel(rows);
  grid.Sort(FlexGrid::SortOrder::GenericAscending);
  const double sortText = ms(t);

  t.restart();
  grid.setCol(0);
  grid.Sort(FlexGrid::SortOrder::GenericAscending);
  const double sortNumber = ms(t);

  t.restart();
  grid.Scroll(ScrollMove::Bottom);
  QCoreApplication::processEvents();
  grid.viewport()->grab();
  const double scroll = ms(t);

  std::printf("FlexGrid %d rows x %d columns\n", rows, cols);
  std::printf("  fill (Rows, Cols, TextMatrix for every cell): %9.1f ms\n", fill);
  std::printf("  first paint:                                   %9.1f ms\n", firstPaint);
  std::printf("  sort by a text column (whole grid):           %9.1f ms\n", sortText);
  std::printf("  sort by the number column (restore order):    %9.1f ms\n", sortNumber);
  std::printf("  scroll to the bottom and repaint:              %9.1f ms\n", scroll);
  std::printf("  resident memory of the filled grid:           %9.1f MiB\n", double(filled - before) / 1024.0);
  std::printf("  check: first row after restore = %s, last = %s\n", qPrintable(grid.TextMatrix(1, 0)),
              qPrintable(grid.TextMatrix(rows, 0)));
  return 0;
}
