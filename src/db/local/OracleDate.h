#pragma once

#include <QDateTime>
#include <QString>

// DATE values are stored as text in one fixed form, "YYYY/MM/DD HH24:MI:SS" (always with the
// time), which sorts as the dates do and needs no conversion for display but dropping a
// midnight time.
namespace OracleDate {

inline QString format(const QDateTime& when) { return when.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")); }
inline QString now() { return format(QDateTime::currentDateTime()); }
inline QDateTime parse(const QString& stored) {
  return QDateTime::fromString(stored, QStringLiteral("yyyy/MM/dd HH:mm:ss"));
}

} // namespace OracleDate
