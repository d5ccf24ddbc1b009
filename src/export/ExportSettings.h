#pragma once

#include "export/CsvWriter.h"

#include <QString>

class clsREG;

// The export dialog's choices as the settings store keeps them between runs.
struct ExportSettings {
  QString outPath;
  QString separator = QStringLiteral(",");
  bool itemId = false;      // a header line of column IDs
  bool toClipboard = false; // the clipboard instead of one file per table
  QString stringSeparator = QStringLiteral("\"");
  CsvEncoding encoding = CsvEncoding::Cp932;

  // Absent values take their defaults; outPath's is defaultFolder.
  static ExportSettings read(clsREG& registry, const QString& defaultFolder);
  // Writes the five values the dialog shows; the encoding is the user's to set in the store.
  void write(clsREG& registry) const;
};

// Where exports go unless the user chose a folder: the program's folder when the user may write
// there (an installed program's folder is not), otherwise the home folder.
QString DefaultExportFolder(const QString& programFolder);

// The encoding setting's value for UTF-8 with a byte-order mark; anything else means CP932.
inline const QString Utf8EncodingValue = QStringLiteral("UTF-8");
