#pragma once

#include <QDateTime>
#include <QString>

// The texts the main window's frame shows, built from plain values so they can be checked
// without a window.

// "3.5.5": the program's major, minor and revision numbers.
QString ProgramVersionNumbers();

// " 2004年12月28日(火) 09:05:07".
QString ClockPanelText(const QDateTime& now);

// The logon name and the machine's uptime. The uptime counter is the old signed 32-bit
// millisecond count, which goes negative after about 24.8 days; then the label asks for a
// restart instead.
QString UptimeLabelText(const QString& windowsUser, qint32 uptimeMs);
