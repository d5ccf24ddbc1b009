#pragma once

#include "db/local/SqlLexer.h"

#include <QVariantList>

#include <variant>

class LocalConnection;

// MERGE INTO target USING source ON (condition) WHEN MATCHED THEN UPDATE SET ... [WHERE ...]
// [DELETE WHERE ...] WHEN NOT MATCHED THEN INSERT [(columns)] VALUES (...) [WHERE ...], run as
// the UPDATE, INSERT and DELETE it stands for, all against the target as it was before the
// statement: the caller runs it as one statement, so an error undoes all of it.
class MergeStatement final {
public:
  // values: those of the ?N parameters in tokens, when a PL/SQL block runs it.
  MergeStatement(LocalConnection& connection, const std::vector<SqlToken>& tokens, QVariantList values = {});
  // The rows updated and inserted.
  qint64 run();

private:
  using Tokens = std::vector<SqlToken>;
  struct Range {
    size_t begin = 0, end = 0;
    bool empty() const { return begin >= end; }
  };

  void parse();
  Range until(std::initializer_list<QStringView> stops);
  Range group();
  Tokens join(std::initializer_list<std::variant<Range, QString>> parts) const;
  qint64 dml(const Tokens& statement);
  void checkStableSource();

  LocalConnection& m_c;
  const Tokens m_t;
  QVariantList m_values;
  size_t m_pos = 0;
  Range m_target, m_targetAlias, m_source, m_sourceAlias, m_on;
  QString m_targetName; // how the source's statements name the target's rows
  QStringList m_setColumns;
  std::vector<Range> m_setValues;
  Range m_updateWhere, m_deleteWhere, m_insertColumns, m_insertValues, m_insertWhere;
  bool m_matched = false, m_notMatched = false;
};
