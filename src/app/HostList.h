#pragma once

#include <QString>
#include <QStringList>

// The aliases of one tnsnames.ora, in file order. A line is skipped when it is empty or begins
// with a space or "#"; any other line gives one entry: the text before its first " =", cut at
// its first "." and stripped of spaces (an entry with no " =" is ""). So in the usual layout,
// where an entry's description lines are indented, each alias appears once. Lines end with LF;
// a CR before the LF is dropped, so a file written on Windows reads the same. A file that is
// missing or unreadable gives no entries.
QStringList ReadTnsNames(const QString& path);

// The hosts the logon dialog offers, in this order: the aliases of $TNS_ADMIN/tnsnames.ora,
// those of <oracleHome>/network/admin/tnsnames.ora (both files when both exist, duplicates
// kept; one file named by both is read once), then "local:NAME" for every embedded instance
// under <dataFolder>/instances, sorted by name, with local:demo among them even before it has
// been built. tnsAdmin and oracleHome may be empty; an oracleHome that is not an absolute
// folder (the settings store gives "ERROR" or "0" without a client) is ignored.
QStringList LoadHostList(const QString& oracleHome, const QString& tnsAdmin, const QString& dataFolder);
