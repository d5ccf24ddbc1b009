// The main window's result print.
#include "app/FDBSWEEP.h"

#include "common/BDBSWEEP.h"
#include "printing/ResultPrint.h"
#include "printing/clsPrinter.h"
#include "services/PrintDialog.h"
#include "services/Services.h"
#include "widgets/FlexGrid.h"

#include <QLineEdit>
#include <QPrinter>
#include <QScopeGuard>

void FDBSWEEP::cmdPrint_Click() {
  const std::optional<PrintDialog::Choice> choice = m_services.printDialog.ask();
  if (!choice)
    return;
  QPrinter device(QPrinter::HighResolution);
  if (choice->outputFile.isEmpty()) {
    device.setPrinterName(choice->printerName);
  } else {
    device.setOutputFormat(QPrinter::PdfFormat);
    device.setOutputFileName(choice->outputFile);
  }
  device.setCopyCount(choice->copies);

  ResultReport report{m_state.gHost, m_state.gUser, m_state.gLastWhere + m_txtAddWhere->text(), {}};
  for (int r = 0; r < m_grdCount->Rows(); ++r)
    report.lines << m_grdCount->TextMatrix(r, 0);
  m_printer->setHDC(&device);
  const auto release = qScopeGuard([this] { m_printer->setHDC(nullptr); });
  PrintResultReport(*m_printer, report);
}
