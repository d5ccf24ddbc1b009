#pragma once

#include "db/OraError.h"

#include <QHash>
#include <QStringList>

// The column names of a result: a field is found by its name in any case or by its position,
// and an unknown one raises the error Oracle gives for it.
class FieldNames final {
public:
  void clear() {
    m_names.clear();
    m_index.clear();
  }
  void append(const QString& name) {
    m_index.insert(name.toUpper(), int(m_names.size()));
    m_names << name;
  }
  int count() const { return int(m_names.size()); }
  QString name(int index) const { return index >= 0 && index < count() ? m_names[index] : QString(); }
  // The position of a name; ORA-00904 when the result has no such column.
  int indexOf(const QString& name) const {
    const auto it = m_index.constFind(name.toUpper());
    if (it == m_index.constEnd())
      throw OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(name.toUpper()));
    return *it;
  }
  // ORA-01007 for a position outside the select list.
  void check(int index) const {
    if (index < 0 || index >= count())
      throw OraError(1007, QStringLiteral("variable not in select list"));
  }

private:
  QStringList m_names;
  QHash<QString, int> m_index;
};
