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
// Whether a text has the stored form's shape (a DATE value, or a text that reads like one).
inline bool hasStoredShape(QStringView s) {
  return s.size() == 19 && s[0].isDigit() && s[4] == u'/' && s[7] == u'/' && s[10] == u' ' && s[13] == u':' &&
         s[16] == u':';
}

} // namespace OracleDate
