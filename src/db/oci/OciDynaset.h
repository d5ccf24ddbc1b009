#pragma once

#include "db/OraDynaset.h"
#include "db/oci/OciConnection.h"

#include <memory>
#include <optional>
#include <vector>

// The rows of a query on an Oracle server, fetched in arrays as they are needed. Read-only and
// updatable dynasets keep the rows fetched, and count by reading to the end. A no-cache one
// keeps only the current batch, and counts with a SELECT COUNT(*) over its query in one round
// trip, unless it has already read to the end: its own cursor does not move, so the current row
// and those after it read as before. That count is taken when it is asked for, so it can differ
// from the rows the cursor brings (which are the data as it was at the open) when the data
// changes in between.
// An updatable dynaset reads each row's ROWID beside it, so Delete removes exactly that row.
class OciDynaset final : public OraDynaset {
public:
  static std::unique_ptr<OciDynaset> open(std::shared_ptr<OciConnection> connection, const QString& sql, int options);
  ~OciDynaset() override;

  qint64 RecordCount() override;
  using OraDynaset::Fields;
  QVariant Fields(int index) override;
  void MoveNext() override;
  bool IsEOF() override;
  void Delete() override;
  void Close() override;

  // Rows asked for per round trip (after the buffer limit for wide rows).
  int fetchRows() const { return m_batchRows; }

private:
  enum class Kind { Text, Number, Date, Bytes };
  struct Column {
    Kind kind = Kind::Text;
    oci::ub2 defineType = oci::SQLT_CHR;
    oci::ub1 charsetForm = oci::SQLCS_IMPLICIT;
    qint64 capacity = 0;                       // bytes per value
    std::vector<oci::OCILobLocator*> locators; // CLOB, NCLOB and BLOB columns: one per row of a batch
    std::vector<char> data;
    std::vector<oci::sb2> indicators;
    std::vector<oci::ub4> lengths;
    std::vector<oci::ub2> codes;
  };

  OciDynaset(std::shared_ptr<OciConnection> connection, int options);
  void start(const QString& sql, bool withRowid);
  void describe();
  void define();
  // One round trip: the next batch of rows (a no-cache dynaset lets the previous one go).
  void fetchBatch();
  // The rows of the whole query as the server counts them, without reading them.
  qint64 countOnServer();
  QVariant value(const Column& column, int row);
  QVariant lobValue(const Column& column, int row);
  void releaseLocators();
  bool fetchTo(qint64 row);
  const QVariantList& current();
  void finish();

  std::shared_ptr<OciConnection> m_connection;
  int m_options;
  std::unique_ptr<OciStatement> m_statement; // open while rows remain to fetch
  QString m_sql;
  int m_hidden = 0; // 1 when the first column is the ROWID of an updatable dynaset
  std::vector<Column> m_columns;
  int m_batchRows = 1;
  std::vector<QVariantList> m_rows;
  qint64 m_first = 0; // row number of m_rows[0]
  qint64 m_pos = 0;
  qint64 m_count = -1; // once known
  bool m_done = false;
  bool m_closed = false;
  std::optional<OraError> m_fetchError;   // the error that ended the rows early
  std::optional<OraError> m_notUpdatable; // why Delete cannot work, for a query ROWID cannot follow
  std::unique_ptr<OciStatement> m_delete;
};
