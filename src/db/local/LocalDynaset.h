#pragma once

#include "db/OraDynaset.h"
#include "db/local/SqlLexer.h"
#include "db/local/Sqlite.h"

#include <memory>
#include <vector>

class LocalConnection;

// The rows of a query on an embedded instance, fetched as they are needed. A read-only or
// updatable dynaset keeps the rows it has fetched; a no-cache one keeps only the current row
// and counts with a separate query. An updatable dynaset over one table also carries each
// row's rowid, so Delete removes exactly that row.
class LocalDynaset final : public OraDynaset {
public:
  static std::unique_ptr<LocalDynaset> open(std::shared_ptr<LocalConnection> connection,
                                            const std::vector<SqlToken>& tokens, int options);

  qint64 RecordCount() override;
  using OraDynaset::Fields;
  QVariant Fields(int index) override;
  QVariantList Row() override;
  void MoveNext() override;
  bool IsEOF() override;
  void Delete() override;
  void Close() override;

private:
  // textColumns: the columns that are text by the way the select list writes them.
  LocalDynaset(std::shared_ptr<LocalConnection> connection, const QString& sql, int options, QString deleteSql,
               const QList<bool>& textColumns, std::pair<QString, QString> target);
  enum class DateColumn { No, Yes, Maybe };
  bool fetchTo(qint64 row);
  QVariant shown(QVariant value, int column) const;
  const QVariantList& current();

  std::shared_ptr<LocalConnection> m_connection;
  QString m_sql;
  int m_options;
  QString m_deleteSql;                  // "" when the rows cannot be deleted one by one
  std::pair<QString, QString> m_target; // its owner ("" for the session's own) and table
  std::unique_ptr<SqliteStmt> m_stmt;
  std::vector<DateColumn> m_dates;
  std::vector<QVariantList> m_rows; // cached rows; a no-cache dynaset holds the current one only
  qint64 m_first = 0;               // row number of m_rows[0]
  qint64 m_pos = 0;                 // current row number
  qint64 m_count = -1;
  bool m_done = false;
  bool m_closed = false;
};
