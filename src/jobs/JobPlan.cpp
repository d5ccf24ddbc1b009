#include "jobs/JobPlan.h"

#include "filter/RowFilter.h"

QString FilterRowsWhere(const QList<JobFilterRow>& rows) {
  QString where;
  for (const JobFilterRow& row : rows)
    RowFilter::AppendCondition(where, RowFilter::Condition(row.mode, row.columnId, row.value1, row.value2));
  return where;
}

QString JobPlan::where() const { return FilterRowsWhere(filterRows); }

QString JobPlan::filtered(const QString& head) const { return head + RowFilter::FullFilter(where(), addWhere); }

QString JobPlan::countSql(const JobTarget& target) const {
  return filtered(QStringLiteral("select ") + countColumn + QStringLiteral(" from ") + target.id);
}

QString JobPlan::selectSql(const JobTarget& target) const {
  return filtered(QStringLiteral("select * from ") + target.id);
}

QString JobPlan::fastDeleteSql(const JobTarget& target) const {
  return filtered(QStringLiteral("DELETE FROM ") + target.id);
}
