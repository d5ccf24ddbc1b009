#pragma once

#include <QString>

// What SQL*Plus tells the user after a statement, and which statements return rows.
namespace StatementFeedback {

// SELECT or WITH, possibly behind opening parentheses ("(SELECT ...) UNION ...").
bool isQuery(QStringView sql);

// "1 row created.", "3 rows updated.", "Table created.", ... or "Statement processed."
QString message(QStringView sql, qint64 rows);

} // namespace StatementFeedback
