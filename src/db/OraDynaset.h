#pragma once

#include "db/FieldNames.h"

#include <QString>
#include <QVariant>

// The rows of a query, positioned on the first row when created. A field value is a QVariant;
// Null is an invalid QVariant, distinct from "" (which Oracle itself never stores).
class OraDynaset {
public:
  // Options of CreateDynaset.
  static constexpr int Updatable = 0;
  static constexpr int ReadOnly = 4;
  static constexpr int NoCache = 8;

  virtual ~OraDynaset() = default;

  // Number of rows of the whole result; the position stays. A no-cache result asks the server
  // to count, the others fetch to the end and keep what they fetched.
  virtual qint64 RecordCount() = 0;
  int FieldCount() const { return m_names.count(); }
  QString FieldName(int index) const { return m_names.name(index); }
  // The current row's value by column name (any case) or by 0-based position. An unknown name or
  // position raises an error; so does reading when there is no current row.
  QVariant Fields(const QString& name) { return Fields(m_names.indexOf(name)); }
  virtual QVariant Fields(int index) = 0;
  // Every value of the current row in column order, as Fields gives them one by one; a reader
  // of whole rows pays for one call a row instead of one a field.
  virtual QVariantList Row() {
    QVariantList values;
    values.reserve(FieldCount());
    for (int i = 0; i < FieldCount(); ++i)
      values << Fields(i);
    return values;
  }
  virtual void MoveNext() = 0;
  // True once MoveNext has gone past the last row (or the result is empty).
  virtual bool IsEOF() = 0;
  // Deletes the current row from its table (updatable dynasets only).
  virtual void Delete() = 0;
  virtual void Close() = 0;

protected:
  FieldNames m_names; // filled by the result set when it learns its columns
};
