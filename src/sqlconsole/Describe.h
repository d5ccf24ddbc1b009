#pragma once

#include <QString>

class OraDatabase;

// DESCRIBE [owner.]name: the columns of a table or view as SQL*Plus lists them (Name, Null?,
// Type), from the dictionary, through any synonyms. An unknown object raises ORA-04043.
namespace Describe {

QString columns(OraDatabase& database, const QString& name, const QString& user);

} // namespace Describe
