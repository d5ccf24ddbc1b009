#include "export/CsvWriter.h"

#include "db/OraDynaset.h"
#include "export/Cp932Text.h"

#include <QSaveFile>

#include <exception>
#include <optional>

namespace {

const QString LineEnd = QStringLiteral("\r\n");
constexpr qsizetype ChunkChars = 1 << 16; // text gathered before it is encoded and written

// A value the file's encoding cannot hold, found while its line is built.
struct Unencodable {
  int column;
  QString value;
};

// The file system refused the bytes.
struct WriteFailed {
  QString reason;
};

// Where whole lines go: a file in an encoding, or the clipboard's text.
class LineTarget {
public:
  virtual ~LineTarget() = default;
  // Throws Unencodable for a field the target could not hold.
  virtual void checkField(const QString& line, int column, qsizetype first, qsizetype end) = 0;
};

class FileLines final : public LineTarget {
public:
  FileLines(QSaveFile& file, CsvEncoding encoding) : m_file(file), m_encoding(encoding) {
    if (encoding == CsvEncoding::Utf8Bom)
      write(QByteArrayLiteral("\xEF\xBB\xBF"));
  }
  void checkField(const QString& line, int column, qsizetype first, qsizetype end) override {
    if (m_encoding != CsvEncoding::Cp932)
      return;
    if (m_cp932.firstUnencodable(QStringView(line).sliced(first, end - first)) >= 0)
      throw Unencodable{column, line.sliced(first, end - first)};
  }
  // The lines waiting to be written; written once they make a chunk, and by flush.
  QString& pending() { return m_pending; }
  void maybeFlush() {
    if (m_pending.size() >= ChunkChars)
      flush();
  }
  void flush() {
    write(m_encoding == CsvEncoding::Cp932 ? m_cp932.encode(m_pending) : m_pending.toUtf8());
    m_pending.clear();
  }

private:
  void write(const QByteArray& bytes) {
    if (m_file.write(bytes) != bytes.size())
      throw WriteFailed{m_file.errorString()};
  }

  QSaveFile& m_file;
  CsvEncoding m_encoding;
  Cp932Text m_cp932;
  QString m_pending;
};

class TextLines final : public LineTarget {
public:
  void checkField(const QString&, int, qsizetype, qsizetype) override {}
};

// Appends the header and every row to text, line by line, calling lineDone after each line.
template <typename LineDone>
void WriteLines(OraDynaset& rows, const QList<CsvColumn>& columns, const CsvOptions& options, LineTarget& target,
                QString& text, std::atomic<qint64>& progress, LineDone&& lineDone) {
  if (options.header) {
    text += CsvHeaderLine(columns, options);
    text += LineEnd;
    lineDone();
  }
  while (!rows.IsEOF()) {
    AppendCsvRow(text, rows, columns, options, [&](int column, qsizetype first, qsizetype end) {
      target.checkField(text, column, first, end);
    });
    text += LineEnd;
    progress.fetch_add(1, std::memory_order_relaxed);
    lineDone();
    rows.MoveNext();
  }
}

CsvTableResult Finished(std::optional<CsvTableResult> failure, qint64 rows) {
  if (failure) {
    failure->rows = rows;
    return *failure;
  }
  return {CsvTableResult::Outcome::Written, rows, {}, {}};
}

} // namespace

CsvWriter::CsvWriter(QList<CsvColumn> columns, CsvOptions options)
    : m_columns(std::move(columns)), m_options(std::move(options)) {}

CsvTableResult CsvWriter::writeFile(OraDynaset& rows, const QString& path, CsvEncoding encoding) {
  m_progress = 0;
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly))
    return {CsvTableResult::Outcome::CannotWrite, 0, {}, file.errorString()};
  std::optional<CsvTableResult> failure;
  try {
    FileLines lines(file, encoding);
    WriteLines(rows, m_columns, m_options, lines, lines.pending(), m_progress, [&] { lines.maybeFlush(); });
    lines.flush();
  } catch (const Unencodable& u) {
    failure = CsvTableResult{CsvTableResult::Outcome::Unencodable, 0, m_columns[u.column].id, u.value};
  } catch (const WriteFailed& w) {
    failure = CsvTableResult{CsvTableResult::Outcome::CannotWrite, 0, {}, w.reason};
  } catch (const std::exception& e) {
    failure = CsvTableResult{CsvTableResult::Outcome::ReadFailed, 0, {}, QString::fromUtf8(e.what())};
  }
  if (failure) {
    file.cancelWriting();
  } else if (!file.commit()) {
    failure = CsvTableResult{CsvTableResult::Outcome::CannotWrite, 0, {}, file.errorString()};
  }
  return Finished(failure, m_progress);
}

CsvTableResult CsvWriter::writeText(OraDynaset& rows, QString& text) {
  m_progress = 0;
  text.clear();
  std::optional<CsvTableResult> failure;
  try {
    TextLines lines;
    WriteLines(rows, m_columns, m_options, lines, text, m_progress, [] {});
  } catch (const std::exception& e) {
    failure = CsvTableResult{CsvTableResult::Outcome::ReadFailed, 0, {}, QString::fromUtf8(e.what())};
    text.clear();
  }
  return Finished(failure, m_progress);
}
