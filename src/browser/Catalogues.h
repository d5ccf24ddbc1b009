#pragma once

#include "browser/NameMasters.h"
#include "browser/TextTable.h"

#include <memory>
#include <optional>

class OraDatabase;
class OraDynaset;

// Opens sql read-only and, when that raises any error, fallback instead. Null when both fail or
// there is no database to ask.
std::unique_ptr<OraDynaset> OpenWithFallback(OraDatabase* db, const QString& sql, const QString& fallback);

// The text of a field, "" for Null.
QString FieldText(OraDynaset& dynaset, const QString& name);

// Every table and view of user, in ID order, as the table catalogue holds them: row r (from 1)
// is (ID, display name). The display name is the master's, else the comment, else the
// name-master file's, else the ID. Nothing when neither catalogue query runs.
std::optional<TextTable> ReadTableCatalogue(OraDatabase* db, const QString& user, const MasterTable& master,
                                            const NameMasters& names);

// The columns of table in COLUMN_ID order, five fields per row: ID, display name (master, else
// comment, else file, else ID), data type, precision (numeric types) or length, scale (numeric
// types) or "". Nothing when neither query runs.
std::optional<TextTable> ReadColumnCatalogue(OraDatabase* db, const QString& user, const QString& table,
                                             const MasterTable& master, const NameMasters& names);

// Whether user has the table-name master; a failing check counts as no.
bool TableMasterExists(OraDatabase* db, const QString& user, const QString& masterTable);

// The hits of a table search, as the target table holds them: row r (from 1) is (ID, display
// name), the display name being the master's, else the name-master file's, else the ID. Nothing
// when the query fails.
std::optional<TextTable> ReadTableSearch(OraDatabase* db, const QString& sql, const NameMasters& names);

// The columns of table for the viewer and the export, in the layout of ReadColumnCatalogue but
// with display names from the master or the file only, never from comments. Nothing when neither
// query runs.
std::optional<TextTable> ReadColumnInfo(OraDatabase* db, const QString& user, const QString& table,
                                        const MasterTable& master, const NameMasters& names);

// The constraints of table other than check constraints, in the server's order, as the index
// browser holds them: row r (from 1) is (name, name, constraint type). Nothing when the query
// fails.
std::optional<TextTable> ReadIndexCatalogue(OraDatabase* db, const QString& user, const QString& table);

// The columns of index in the server's order, five fields per row: ID, display name (master,
// else comment, else file, else ID), position, length, "ASC" or "DESC". A constraint without an
// index of its name has none. Nothing when neither query runs.
std::optional<TextTable> ReadIndexColumns(OraDatabase* db, const QString& user, const QString& index,
                                          const MasterTable& master, const NameMasters& names);

// The hits of an index search, three fields per row: the index name, the text shown for it (the
// name again), and the table the index belongs to. Nothing when the query fails.
std::optional<TextTable> ReadIndexSearch(OraDatabase* db, const QString& user, const QString& sql);
