#include "export/CsvWriter.h"

#include "db/OraDynaset.h"
#include "export/Cp932Text.h"

#include <QSaveFile>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace {

const QString LineEnd = QStringLiteral("\r\n");
// Text gathered before it is encoded and written: small enough that neither it nor its bytes
// cross the allocator's threshold for mapping fresh pages every time.
constexpr qsizetype ChunkChars = 1 << 14;
constexpr size_t BatchRows = 256;   // rows handed from the reading thread to the writing one at a time
constexpr size_t BatchesAhead = 8;  // how far reading may run ahead of writing

using Batch = std::vector<QVariantList>;

// A value the file's encoding cannot hold, found while its line is built.
struct Unencodable {
  int column;
  QString value;
};

// The file system refused the bytes.
struct WriteFailed {
  QString reason;
};

// Lines into a file in an encoding, a chunk at a time.
class FileLines final {
public:
  FileLines(QSaveFile& file, CsvEncoding encoding) : m_file(file), m_encoding(encoding) {
    if (encoding == CsvEncoding::Utf8Bom)
      write(QByteArrayLiteral("\xEF\xBB\xBF"));
  }
  // Throws Unencodable for a field the encoding cannot hold.
  void checkField(int column, qsizetype first, qsizetype end) {
    if (m_encoding != CsvEncoding::Cp932)
      return;
    const QStringView field = QStringView(m_pending).sliced(first, end - first);
    if (m_cp932.firstUnencodable(field) >= 0)
      throw Unencodable{column, field.toString()};
  }
  // The lines waiting to be written; written once they make a chunk, and by flush.
  QString& pending() { return m_pending; }
  void lineDone() {
    if (m_pending.size() >= ChunkChars)
      flush();
  }
  void flush() {
    write(m_encoding == CsvEncoding::Cp932 ? m_cp932.encode(m_pending) : m_pending.toUtf8());
    m_pending.resize(0); // keeps its capacity for the next chunk
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

// Batches of rows from the thread that reads them to the thread that writes them. Either side
// may give up; the other then stops at its next step.
class RowQueue final {
public:
  // False when the writing side has given up: reading can stop. Batches already written come
  // back to be freed here, on the thread that allocated them, which the allocator does without
  // taking a lock the two threads would fight over.
  bool push(Batch batch) {
    std::deque<Batch> written;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_batches.size() < BatchesAhead || m_abandoned; });
    if (m_abandoned)
      return false;
    m_batches.push_back(std::move(batch));
    written.swap(m_written);
    m_changed.notify_all();
    lock.unlock();
    return true;
  }
  void written(Batch batch) {
    const std::lock_guard lock(m_mutex);
    m_written.push_back(std::move(batch));
  }
  // The next batch; none once reading has ended and every batch is taken.
  std::optional<Batch> pop() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_batches.empty() || m_ended; });
    if (m_batches.empty())
      return std::nullopt;
    Batch batch = std::move(m_batches.front());
    m_batches.pop_front();
    m_changed.notify_all();
    return batch;
  }
  void endReading() {
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
  }
  void abandon() {
    const std::lock_guard lock(m_mutex);
    m_abandoned = true;
    m_changed.notify_all();
  }

private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<Batch> m_batches;
  std::deque<Batch> m_written;
  bool m_ended = false;
  bool m_abandoned = false;
};

CsvTableResult Failure(CsvTableResult::Outcome outcome, QString detail, QString column = {}) {
  return {outcome, 0, std::move(column), std::move(detail)};
}

QString Reason(const std::exception& e) { return QString::fromUtf8(e.what()); }

} // namespace

CsvWriter::CsvWriter(QList<CsvColumn> columns, CsvOptions options)
    : m_columns(std::move(columns)), m_options(std::move(options)) {}

// The calling thread reads the rows, a second one formats, encodes and writes them: the two
// halves take about as long as each other, so a table goes out in about half the time.
CsvTableResult CsvWriter::writeFile(OraDynaset& rows, const QString& path, CsvEncoding encoding) {
  m_progress = 0;
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly))
    return Failure(CsvTableResult::Outcome::CannotWrite, file.errorString());

  RowQueue queue;
  std::optional<CsvTableResult> writeFailure;
  std::thread writer([&] {
    try {
      FileLines lines(file, encoding);
      QString& text = lines.pending();
      if (m_options.header) {
        text += CsvHeaderLine(m_columns, m_options) + LineEnd;
        lines.lineDone();
      }
      while (std::optional<Batch> batch = queue.pop()) {
        for (const QVariantList& values : *batch) {
          AppendCsvRow(text, values, m_columns, m_options,
                       [&](int column, qsizetype first, qsizetype end) { lines.checkField(column, first, end); });
          text += LineEnd;
          lines.lineDone();
          m_progress.fetch_add(1, std::memory_order_relaxed);
        }
        queue.written(std::move(*batch));
      }
      lines.flush();
    } catch (const Unencodable& u) {
      writeFailure = Failure(CsvTableResult::Outcome::Unencodable, u.value, m_columns[u.column].id);
    } catch (const WriteFailed& w) {
      writeFailure = Failure(CsvTableResult::Outcome::CannotWrite, w.reason);
    } catch (const std::exception& e) {
      writeFailure = Failure(CsvTableResult::Outcome::ReadFailed, Reason(e));
    }
    if (writeFailure)
      queue.abandon();
  });

  std::optional<CsvTableResult> readFailure;
  try {
    Batch batch;
    batch.reserve(BatchRows);
    bool writing = true;
    while (writing && !rows.IsEOF()) {
      batch.push_back(rows.Row());
      rows.MoveNext();
      if (batch.size() == BatchRows) {
        writing = queue.push(std::move(batch));
        batch = Batch();
        batch.reserve(BatchRows);
      }
    }
    if (writing && !batch.empty())
      queue.push(std::move(batch));
  } catch (const std::exception& e) {
    readFailure = Failure(CsvTableResult::Outcome::ReadFailed, Reason(e));
  }
  queue.endReading();
  writer.join();

  std::optional<CsvTableResult> failure = writeFailure ? writeFailure : readFailure;
  if (failure)
    file.cancelWriting();
  else if (!file.commit())
    failure = Failure(CsvTableResult::Outcome::CannotWrite, file.errorString());
  CsvTableResult result = failure.value_or(CsvTableResult{});
  result.rows = m_progress;
  return result;
}

CsvTableResult CsvWriter::writeText(OraDynaset& rows, QString& text) {
  m_progress = 0;
  text.clear();
  try {
    if (m_options.header)
      text += CsvHeaderLine(m_columns, m_options) + LineEnd;
    while (!rows.IsEOF()) {
      AppendCsvRow(text, rows.Row(), m_columns, m_options, [](int, qsizetype, qsizetype) {});
      text += LineEnd;
      m_progress.fetch_add(1, std::memory_order_relaxed);
      rows.MoveNext();
    }
  } catch (const std::exception& e) {
    text.clear();
    CsvTableResult result = Failure(CsvTableResult::Outcome::ReadFailed, Reason(e));
    result.rows = m_progress;
    return result;
  }
  return {CsvTableResult::Outcome::Written, m_progress, {}, {}};
}
