#include "filter/RowFilter.h"

namespace RowFilter {

QString NextMode(const QString& mode) {
  if (mode == All)
    return Only;
  if (mode == Only)
    return Either;
  if (mode == Either)
    return Range;
  if (mode == Range)
    return All;
  return Only;
}

bool ShowsValue1(const QString& mode) { return mode == Only || mode == Either || mode == Range; }
bool ShowsValue2(const QString& mode) { return mode == Either || mode == Range; }

QString Condition(const QString& mode, const QString& column, const QString& value1, const QString& value2) {
  if (mode == Only)
    return u'(' + column + QStringLiteral(" like '") + value1 + QStringLiteral("')");
  if (mode == Either)
    return u'(' + column + QStringLiteral(" like '") + value1 + QStringLiteral("' or ") + column +
           QStringLiteral(" like '") + value2 + QStringLiteral("')");
  if (mode == Range)
    return u'(' + column + QStringLiteral(" between '") + value1 + QStringLiteral("' and '") + value2 +
           QStringLiteral("')");
  return QString();
}

void AppendCondition(QString& where, const QString& condition) {
  if (condition.isEmpty())
    return;
  where += (where.isEmpty() ? QStringLiteral(" where ") : QStringLiteral(" and ")) + condition;
}

QString FullFilter(const QString& where, const QString& addWhere) {
  if (addWhere.isEmpty())
    return where;
  if (!where.isEmpty())
    return where + u' ' + addWhere;
  return QStringLiteral(" WHERE ") + addWhere;
}

int MaxLength(const QString& type, const QString& digits, const QString& scale) {
  if (type == u"DATE")
    return 0;
  // A decimal point needs a place of its own.
  if (type == u"NUMBER")
    return digits.toInt() + (scale.toInt() > 0 ? 1 : 0);
  return digits.toInt();
}

} // namespace RowFilter
