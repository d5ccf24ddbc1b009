#include "app/FrameTexts.h"

#include "common/JVK_Cmn.h"

#include <cmath>

QString ProgramVersionNumbers() {
  return QStringLiteral("%1.%2.%3").arg(DBSWEEP_VERSION_MAJOR).arg(DBSWEEP_VERSION_MINOR).arg(DBSWEEP_VERSION_PATCH);
}

QString ClockPanelText(const QDateTime& now) {
  return u' ' + now.date().toString(QStringLiteral("yyyy年MM月dd日")) + u'(' + JapaneseWeekday(now.date()).left(1) +
         QStringLiteral(") ") + now.time().toString(QStringLiteral("HH:mm:ss"));
}

QString UptimeLabelText(const QString& windowsUser, qint32 uptimeMs) {
  const QString head = QStringLiteral("  ﾛｸﾞｵﾝ   :") + windowsUser + QStringLiteral("\r\n");
  // Whole seconds, rounded as the old conversion to a 32-bit integer rounded: half to even.
  const auto s = qint32(std::nearbyint(uptimeMs / 1000.0));
  if (s < 0)
    return head + QStringLiteral("  そろそろPC再起動してね");
  return head + QStringLiteral("  PC起動時間:%1日 %2:%3:%4")
                    .arg(s / 86400)
                    .arg(s % 86400 / 3600)
                    .arg(s % 3600 / 60)
                    .arg(s % 60);
}
