#pragma once

#include <QStringList>
#include <QVariant>

#include <sqlite3.h>

struct SessionSettings;

// What a column's Oracle type demands of the values written to it, which SQLite's affinities
// do not: a NUMBER holds numbers within its precision, rounded to its scale; a VARCHAR2 or CHAR
// holds no more than its length in bytes or characters, a CHAR padded with blanks to it; a
// DATE holds dates, a TIMESTAMP timestamps to the digits of its fraction of a second. Each rule
// raises the error Oracle raises.
namespace ColumnTypes {

struct Column {
  QString owner, table, name;
  QString dataType; // as the dictionary reports it
  qint64 dataLength = 0;
  qint64 charLength = 0;
  QVariant precision, scale;
};

// The clauses that follow the column's type in the SQLite table: a CHECK refusing what the type
// cannot hold, and the collation a CHAR compares with.
QString clauses(const Column& c);
// The statements, run after each insert and update of table, that store the written values in
// the form the types keep (a date written as text in the stored form); none when no column
// needs one.
QStringList triggers(const QString& schema, const QString& table, const std::vector<Column>& columns);

// The functions read texts written to a DATE in the session's date format.
void registerFunctions(sqlite3* db, const SessionSettings* settings);

} // namespace ColumnTypes
