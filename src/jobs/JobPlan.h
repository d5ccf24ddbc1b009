#pragma once

#include <QList>
#include <QString>

// One table a job works on, as the target list showed it when the button was pressed.
struct JobTarget {
  QString id;
  QString name;
  int position = 0; // 1-based place in the target list, selected or not
};

// One filter row: the key column it restricts, its mode and the values typed for it.
struct JobFilterRow {
  QString columnId;
  QString mode;
  QString value1;
  QString value2;
};

// What a job works on, taken from a window once when its button is pressed: the selected
// targets in list order, the row filter and the extra condition. Jobs read the plan, never the
// window, so a window's later changes cannot reach a job already running.
struct JobPlan {
  QList<JobTarget> targets;
  QList<JobFilterRow> filterRows;
  QString addWhere;
  // The column a count reads: the first key's ID, "" when there is no key to count by.
  QString countColumn;

  // The clause of the filter rows (" where …"), "" when no row filters.
  QString where() const;
  // head completed with the filter rows and the extra condition.
  QString filtered(const QString& head) const;

  QString countSql(const JobTarget& target) const;
  // The data viewer's query, and the rows a row-by-row delete walks.
  QString selectSql(const JobTarget& target) const;
  QString fastDeleteSql(const JobTarget& target) const;
};

// The WHERE clause a set of filter rows makes, "" when none of them filters.
QString FilterRowsWhere(const QList<JobFilterRow>& rows);
