#include "db/oci/OciText.h"

#include <QRegularExpression>


namespace OciText {

QString sessionSettingsSql() {
  return QStringLiteral("ALTER SESSION SET NLS_DATE_FORMAT = 'YYYY/MM/DD HH24:MI:SS' "
                        "NLS_NUMERIC_CHARACTERS = '.,' "
                        "NLS_TIMESTAMP_FORMAT = 'YYYY/MM/DD HH24:MI:SS.FF' "
                        "NLS_TIMESTAMP_TZ_FORMAT = 'YYYY/MM/DD HH24:MI:SS.FF TZH:TZM'");
}

QVariant number(QByteArrayView text) {
  const QByteArray t = text.trimmed().toByteArray();
  bool ok = false;
  const qlonglong whole = t.toLongLong(&ok);
  if (ok)
    return whole;
  // A fraction, a value beyond qint64 or no number at all (BINARY_DOUBLE's "~"): the text as
  // Oracle wrote it, every digit kept, as the embedded engine hands it over too (.5, not 0.5).
  return QString::fromLatin1(t);
}

QString date(QByteArrayView text) {
  QString d = QString::fromUtf8(text);
  if (d.size() == 19 && d.endsWith(QStringLiteral(" 00:00:00")))
    d.truncate(10);
  return d;
}

QString releaseFromBanner(const QString& banner) {
  static const QRegularExpression version(QStringLiteral("\\bVersion (\\d+(?:\\.\\d+)+)"));
  static const QRegularExpression release(QStringLiteral("\\bRelease (\\d+(?:\\.\\d+)+)"));
  if (const auto m = version.match(banner); m.hasMatch())
    return m.captured(1);
  if (const auto m = release.match(banner); m.hasMatch())
    return m.captured(1);
  return banner.section(u'\n', 0, 0).trimmed();
}

QString errorText(QString message, int code) {
  const QString prefix = QStringLiteral("ORA-%1: ").arg(code, 5, 10, QChar(u'0'));
  if (message.startsWith(prefix))
    message.remove(0, prefix.size());
  while (message.endsWith(u'\n') || message.endsWith(u'\r') || message.endsWith(u' '))
    message.chop(1);
  return message;
}

bool sessionLost(int code) {
  switch (code) {
  case 28:    // your session has been killed
  case 1012:  // not logged on
  case 1033:  // initialization or shutdown in progress
  case 1034:  // ORACLE not available
  case 1089:  // immediate shutdown in progress
  case 1092:  // instance terminated, disconnection forced
  case 2396:  // exceeded maximum idle time
  case 3113:  // end-of-file on communication channel
  case 3114:  // not connected to ORACLE
  case 3135:  // connection lost contact
  case 12153: // not connected
  case 12537: // connection closed
  case 12547: // lost contact
  case 12570: // packet reader failure
  case 12583: // no reader
    return true;
  default: return false;
  }
}

} // namespace OciText
