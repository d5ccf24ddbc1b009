#pragma once

#include "common/CommandArgs.h"

#include <QDate>
#include <QString>

// Splits a command line into at most maxWords words. Blanks and tabs separate words; there is
// no quoting, so a word never holds a blank. Scanning stops at the first word beyond maxWords.
CommandArgs SplitCommandLine(const QString& line, int maxWords = 10);

// "日曜日" .. "土曜日".
QString JapaneseWeekday(const QDate& date);

// Length of text in bytes in the Japanese ANSI code page (CP932): one byte for ASCII and
// half-width katakana, two for other characters, including those CP932 cannot hold.
qint32 AnsiByteLength(const QString& text);

// The larger / smaller of two numbers; when they are equal, the first.
double MaxDouble(double a, double b);
double MinDouble(double a, double b);

// The login name of the user running the program.
QString GetWindowsUserName();
