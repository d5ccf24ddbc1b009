#pragma once

#include <QString>
#include <QStringList>

class clsPrinter;

// What the one-page result report shows: the connection, the filter and the result list's lines
// (its heading first), as plain texts.
struct ResultReport {
  QString host;
  QString user;
  QString where; // the filter and the extra condition, as they were joined; "" for none
  QStringList lines;
};

// Prints the report on the printer's device as one document named "DBSWEEP" of one page: a
// title line, the filter, then a line per result line. Lines below the page's end are cut off.
void PrintResultReport(clsPrinter& printer, const ResultReport& report);
