#pragma once

#include <QIcon>
#include <QString>

// The icon a user knows a program by: the one its desktop entry names, from the desktop's icon
// theme; else the icon of the file's type. A program that does not exist has none (a null
// icon). program is a path, or a bare name found on the search path.
QIcon ProgramIcon(const QString& program);
