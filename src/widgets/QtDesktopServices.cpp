#include "widgets/QtDesktopServices.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>

QString QtFileDialogs::openFileName(const QString& title, const QString& startPath, const QString& filter,
                                    Show show) {
  QFileDialog dialog(QApplication::activeWindow(), title, startPath, filter);
  dialog.setFileMode(QFileDialog::ExistingFile);
  if (show == Show::Programs) {
    // Programs are known by their permission, not by their name: only Qt's own dialog can ask.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFilter(QDir::AllDirs | QDir::Files | QDir::Executable | QDir::NoDotAndDotDot);
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
    return QString();
  return dialog.selectedFiles().first();
}

QString QtFileDialogs::saveFileName(const QString& title, const QString& startPath, const QString& filter) {
  return QFileDialog::getSaveFileName(QApplication::activeWindow(), title, startPath, filter);
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
