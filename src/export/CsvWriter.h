#pragma once

#include "export/CsvFormat.h"

#include <QList>
#include <QString>

#include <atomic>

class OraDynaset;

// How export files are encoded: the Japanese ANSI code page by default, UTF-8 with a byte-order
// mark on request.
enum class CsvEncoding { Cp932, Utf8Bom };

// How the writing of one table ended.
struct CsvTableResult {
  enum class Outcome {
    Written,      // every row is out
    CannotWrite,  // the file could not be created or written (reason in detail)
    ReadFailed,   // the rows could not be read to the end (the database's words in detail)
    Unencodable,  // a value the file's encoding cannot hold (its column in column, value in detail)
  };
  Outcome outcome = Outcome::Written;
  qint64 rows = 0;
  QString column;
  QString detail;
};

// Writes the rows of an open dynaset as delimited text, each line ended by CR LF. A file appears
// under its name only once it is complete: it is written beside it under a temporary name, so a
// failure leaves an earlier file of that name as it was and no half-written one.
class CsvWriter final {
public:
  CsvWriter(QList<CsvColumn> columns, CsvOptions options);

  // Rows written so far by the running call; may be read from another thread.
  qint64 progress() const { return m_progress.load(std::memory_order_relaxed); }

  CsvTableResult writeFile(OraDynaset& rows, const QString& path, CsvEncoding encoding);
  // The whole text, as the clipboard takes it.
  CsvTableResult writeText(OraDynaset& rows, QString& text);

private:
  QList<CsvColumn> m_columns;
  CsvOptions m_options;
  std::atomic<qint64> m_progress = 0;
};
