#pragma once

#include <QString>

#include <sqlite3.h>

// The catalogue file of an instance: users, sessions, sequences and the data dictionary, as
// plain tables maintained by the statements that change them. Every connection attaches it as
// CAT and sees the dictionary through Oracle's views, created per connection.
namespace Catalogue {

inline const QString FileName = QStringLiteral("catalogue.db");

// The SQLite file holding owner's tables.
QString schemaFile(const QString& folder, const QString& owner);

// Creates the catalogue's tables in the database attached as CAT.
void create(sqlite3* db);
// Brings a catalogue made by an earlier version up to this one's tables: the privileges granted
// and their grantors, a sequence's start, cache and order.
void upgrade(sqlite3* db);

// Oracle's dictionary views (ALL_*, USER_*, V$SESSION, DUAL) for one session, as temporary views.
// readsAnyTable: the user holds SELECT ANY TABLE, so the ALL_ views of tables, views and their
// parts show every schema's, as they do for a DBA.
void installViews(sqlite3* db, const QString& user, bool dba, bool readsAnyTable, qint64 sid);

// A salted, stretched hash of a password, as "salt$hash" in hex.
QString hashPassword(const QString& password);
bool checkPassword(const QString& password, const QString& stored);

// The next number of a named counter (constraint names, session serials).
qint64 nextCounter(sqlite3* db, const QString& name);

} // namespace Catalogue
