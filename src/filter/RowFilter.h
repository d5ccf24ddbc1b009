#pragma once

#include <QString>

// The filter rows: each key column has a mode and up to two values, and the rows together make
// one WHERE clause. Values go into the SQL as typed, between single quotes, whatever the column's
// type, so wildcards work in the like modes and dates compare as the session formats them.
namespace RowFilter {

inline const QString All = QStringLiteral("全て");
inline const QString Only = QStringLiteral("のみ");
inline const QString Either = QStringLiteral("と");
inline const QString Range = QStringLiteral("～");

// The mode a click on the mode label moves to: all → only → either → range → all; anything else
// becomes "only".
QString NextMode(const QString& mode);
bool ShowsValue1(const QString& mode);
bool ShowsValue2(const QString& mode);

// The condition of one row, "" for "all" and for an unknown mode.
QString Condition(const QString& mode, const QString& column, const QString& value1, const QString& value2);
// Adds a row's condition to a clause: " where " before the first, " and " between the others.
void AppendCondition(QString& where, const QString& condition);

// The filter every consumer appends to its statement head: the generated clause, followed by the
// user's extra text, which is written as a continuation (" AND …") of it.
QString FullFilter(const QString& where, const QString& addWhere);

// How many characters a value box takes for a key column of the given type, digits and scale
// (the field grid's "属性", "桁数", "小数"); 0 means no limit.
int MaxLength(const QString& type, const QString& digits, const QString& scale);

} // namespace RowFilter
