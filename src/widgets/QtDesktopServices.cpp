#include "widgets/QtDesktopServices.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>

QString QtFileDialogs::openFileName(const QString& title, const QString& startFolder, const QString& filter) {
  return QFileDialog::getOpenFileName(QApplication::activeWindow(), title, startFolder, filter);
}

QString QtFileDialogs::BrowseForFolder(const QString& title, const QString& startFolder) {
  return QFileDialog::getExistingDirectory(QApplication::activeWindow(), title, startFolder);
}

std::optional<PrintDialog::Choice> QtPrintDialog::ask() {
  QPrinter printer;
  QPrintDialog dialog(&printer, QApplication::activeWindow());
  // One page of results: no selection and no page range to choose.
  dialog.setOption(QAbstractPrintDialog::PrintSelection, false);
  dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
  if (dialog.exec() != QDialog::Accepted)
    return std::nullopt;
  return Choice{printer.printerName(), printer.outputFileName(), printer.copyCount()};
}

bool DesktopUrlOpener::open(const QUrl& url) { return QDesktopServices::openUrl(url); }
