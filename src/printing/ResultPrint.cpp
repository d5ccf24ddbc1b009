#include "printing/ResultPrint.h"

#include "printing/clsPrinter.h"

namespace {

constexpr int Left = 300; // dots

// Line n of the page: every line is as high as a line of the device's font, blank ones too.
void DrawLine(clsPrinter& printer, int n, const QString& text) {
  printer.setCurrentX(Left);
  printer.setCurrentY(n * printer.TextHeight(text));
  printer.DrawText(text);
}

} // namespace

void PrintResultReport(clsPrinter& printer, const ResultReport& report) {
  if (!printer.StartDoc(QStringLiteral("DBSWEEP")))
    return;
  printer.StartPage();
  DrawLine(printer, 1,
           QStringLiteral("DBSWEEP結果リスト") + QStringLiteral("ホスト名:") + report.host +
               QStringLiteral("ユーザ名:") + report.user);
  DrawLine(printer, 2, QStringLiteral("WHERE句"));
  DrawLine(printer, 3, report.where.isEmpty() ? QStringLiteral("なし") : report.where);
  for (int r = 0; r < report.lines.size(); ++r)
    DrawLine(printer, r + 5, report.lines[r]);
  printer.EndPage();
  printer.EndDoc();
}
