#pragma once

#include <QString>

#include <optional>

// The system print dialog. What the user chose is handed back as plain facts, so that the
// printing code decides how to open the device and tests can answer without a printer.
class PrintDialog {
public:
  struct Choice {
    QString printerName;
    // Set when the user chose to print into a file (a PDF on this platform).
    QString outputFile;
    int copies = 1;
  };

  virtual ~PrintDialog() = default;
  // Nothing when the user cancels.
  virtual std::optional<Choice> ask() = 0;
};
