#include "db/local/SqlErrors.h"

#include <QRegularExpression>

namespace SqlErrors {

namespace {

const QString Busy = QStringLiteral("resource busy and acquire with NOWAIT specified or timeout expired");

// The enabled primary or unique key (or else unique index) of table with exactly these columns.
QString uniqueName(sqlite3* db, const QString& owner, const QString& table, const QStringList& columns) {
  const QString wanted = columns.join(u',');
  try {
    QVariant name = sqliteValue(
        db,
        QStringLiteral("SELECT c.constraint_name FROM CAT.constraints c WHERE c.owner = ?1 AND c.table_name = ?2 "
                       "AND c.constraint_type IN ('P', 'U') AND c.status = 'ENABLED' AND ?3 = (SELECT "
                       "group_concat(column_name, ',') "
                       "FROM (SELECT column_name FROM CAT.cons_columns k WHERE k.owner = c.owner "
                       "AND k.constraint_name = c.constraint_name ORDER BY position))"),
        {owner, table, wanted});
    if (!name.isValid())
      name = sqliteValue(
          db,
          // A descending column is the expression "COLUMN" of a hidden one.
          QStringLiteral("SELECT i.index_name FROM CAT.indexes i WHERE i.table_owner = ?1 AND i.table_name = ?2 "
                         "AND i.uniqueness = 'UNIQUE' AND ?3 = (SELECT group_concat(column_name, ',') FROM "
                         "(SELECT coalesce(substr(e.column_expression, 2, length(e.column_expression) - 2), "
                         "k.column_name) AS column_name FROM CAT.ind_columns k LEFT JOIN CAT.ind_expressions e ON "
                         "e.index_owner = k.index_owner AND e.index_name = k.index_name AND e.column_position = "
                         "k.column_position WHERE k.index_owner = i.owner AND k.index_name = i.index_name ORDER BY "
                         "k.column_position))"),
          {owner, table, wanted});
    return name.toString();
  } catch (const SqliteFailure&) {
    return {};
  }
}

QString foreignKeyName(sqlite3* db, const QString& owner, const QString& table, bool asParent) {
  try {
    const QString sql =
        asParent
            ? QStringLiteral("SELECT c.owner || '.' || c.constraint_name FROM CAT.constraints c JOIN CAT.constraints p "
                             "ON p.owner = c.r_owner AND p.constraint_name = c.r_constraint_name "
                             "WHERE c.constraint_type = 'R' AND c.status = 'ENABLED' AND p.owner = ?1 "
                             "AND p.table_name = ?2 ORDER BY c.constraint_name")
            : QStringLiteral("SELECT owner || '.' || constraint_name FROM CAT.constraints WHERE owner = ?1 "
                             "AND table_name = ?2 AND constraint_type = 'R' AND status = 'ENABLED' "
                             "ORDER BY constraint_name");
    return sqliteValue(db, sql, {owner, table}).toString();
  } catch (const SqliteFailure&) {
    return {};
  }
}

} // namespace

QString quotedPath(const QString& dotted) {
  QStringList parts = dotted.split(u'.');
  for (QString& p : parts)
    p = u'"' + p + u'"';
  return parts.join(u'.');
}

std::optional<ForeignKey> violatedForeignKey(sqlite3* db, const QString& statement, const QString& schema,
                                             const QString& owner, const QVariantList& values) {
  const QString q = u'"' + schema + u'"';
  std::optional<ForeignKey> found;
  try {
    sqliteExec(db, QStringLiteral("SAVEPOINT dbsweep_fk"));
    try {
      sqliteExec(db, QStringLiteral("PRAGMA defer_foreign_keys = ON"));
      SqliteStmt run(db, statement);
      run.bindPresent(values);
      while (run.step()) {
      }
      SqliteStmt check(db, QStringLiteral("PRAGMA %1.foreign_key_check").arg(q));
      if (check.step()) {
        const QString child = check.column(0).toString();
        const qint64 key = check.column(3).toLongLong();
        QStringList columns;
        SqliteStmt keys(db, QStringLiteral("PRAGMA %1.foreign_key_list(\"%2\")").arg(q, child));
        while (keys.step())
          if (keys.column(0).toLongLong() == key)
            columns << keys.column(3).toString();
        const QString name =
            sqliteValue(db,
                        QStringLiteral("SELECT c.owner || '.' || c.constraint_name FROM CAT.constraints c WHERE "
                                       "c.owner = ?1 AND c.table_name = ?2 AND c.constraint_type = 'R' AND ?3 = "
                                       "(SELECT group_concat(column_name, ',') FROM (SELECT column_name FROM "
                                       "CAT.cons_columns k WHERE k.owner = c.owner AND k.constraint_name = "
                                       "c.constraint_name ORDER BY position))"),
                        {owner, child, columns.join(u',')})
                .toString();
        if (!name.isEmpty())
          found = ForeignKey{name, child};
      }
    } catch (const SqliteFailure&) {
      // Some other failure on the way: the caller names a key as best it can.
    }
    sqliteExec(db, QStringLiteral("PRAGMA defer_foreign_keys = OFF"));
    sqliteExec(db, QStringLiteral("ROLLBACK TO dbsweep_fk"));
    sqliteExec(db, QStringLiteral("RELEASE dbsweep_fk"));
  } catch (const SqliteFailure&) {
    return std::nullopt;
  }
  return found;
}

OraError toOracle(sqlite3* db, const SqliteFailure& f, const QString& owner, const QString& table, Dml dml,
                  const std::optional<ForeignKey>& violated) {
  const QString& m = f.message;
  // Errors raised by the engine's own SQL functions already are Oracle's.
  static const QRegularExpression oracle(QStringLiteral("^ORA-(\\d{5}): (.*)$"),
                                         QRegularExpression::DotMatchesEverythingOption);
  if (const auto match = oracle.match(m); match.hasMatch())
    return OraError(match.captured(1).toInt(), match.captured(2));

  switch (f.code) {
  case SQLITE_CONSTRAINT_UNIQUE:
  case SQLITE_CONSTRAINT_PRIMARYKEY: {
    // "UNIQUE constraint failed: index 'IX$NAME'" for an index on expressions
    if (const qsizetype at = m.indexOf(QStringLiteral("index 'IX$")); at >= 0)
      return OraError(
          1, QStringLiteral("unique constraint (%1.%2) violated").arg(owner, m.mid(at + 10).section(u'\'', 0, 0)));
    // "UNIQUE constraint failed: T.A, T.B"
    const QStringList cols = m.section(u':', 1).trimmed().split(QStringLiteral(", "));
    QStringList names;
    QString t = table;
    for (const QString& c : cols) {
      t = c.section(u'.', 0, 0);
      names << c.section(u'.', 1);
    }
    const QString name = uniqueName(db, owner, t, names);
    return OraError(1, QStringLiteral("unique constraint (%1.%2) violated")
                           .arg(owner, name.isEmpty() ? QStringLiteral("SYS_C0000000") : name));
  }
  case SQLITE_CONSTRAINT_NOTNULL: {
    const QString column = quotedPath(owner + u'.' + m.section(u':', 1).trimmed());
    if (dml == Dml::Update)
      return OraError(1407, QStringLiteral("cannot update (%1) to NULL").arg(column));
    return OraError(1400, QStringLiteral("cannot insert NULL into (%1)").arg(column));
  }
  case SQLITE_CONSTRAINT_CHECK:
    return OraError(2290, QStringLiteral("check constraint (%1.%2) violated").arg(owner, m.section(u':', 1).trimmed()));
  case SQLITE_CONSTRAINT_FOREIGNKEY: {
    const bool parent =
        dml == Dml::Delete || (violated ? violated->childTable != table
                                        : dml == Dml::Update && foreignKeyName(db, owner, table, false).isEmpty());
    const QString name = violated ? violated->name : foreignKeyName(db, owner, table, parent);
    return parent
               ? OraError(2292, QStringLiteral("integrity constraint (%1) violated - child record found").arg(name))
               : OraError(2291, QStringLiteral("integrity constraint (%1) violated - parent key not found").arg(name));
  }
  default: break;
  }
  switch (f.code & 0xff) {
  case SQLITE_BUSY:
  case SQLITE_LOCKED: return OraError(54, Busy);
  case SQLITE_INTERRUPT: return OraError(1013, QStringLiteral("user requested cancel of current operation"));
  case SQLITE_READONLY: return OraError(1031, QStringLiteral("insufficient privileges"));
  case SQLITE_TOOBIG: return OraError(1489, QStringLiteral("result of string concatenation is too long"));
  default: break;
  }

  struct Pattern {
    QRegularExpression re;
    std::function<OraError(const QRegularExpressionMatch&)> make;
  };
  static const std::vector<Pattern> patterns = {
      {QRegularExpression(QStringLiteral("^no such table: (?:\\S+\\.)?(.+)$")),
       [](const auto&) { return OraError(942, QStringLiteral("table or view does not exist")); }},
      {QRegularExpression(QStringLiteral("^no such column: (.+)$")),
       [](const auto& mm) {
         return OraError(904, QStringLiteral("%1: invalid identifier").arg(quotedPath(mm.captured(1))));
       }},
      {QRegularExpression(QStringLiteral("^no such function: (.+)$")),
       [](const auto& mm) {
         return OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(mm.captured(1).toUpper()));
       }},
      {QRegularExpression(QStringLiteral("^'(.+)' is not a function$")),
       [](const auto& mm) {
         return OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(mm.captured(1).toUpper()));
       }},
      {QRegularExpression(QStringLiteral("^ambiguous column name: (.+)$")),
       [](const auto&) { return OraError(918, QStringLiteral("column ambiguously defined")); }},
      {QRegularExpression(QStringLiteral("has (\\d+) columns but (\\d+) values were supplied")),
       [](const auto& mm) {
         return mm.captured(2).toInt() > mm.captured(1).toInt() ? OraError(913, QStringLiteral("too many values"))
                                                                : OraError(947, QStringLiteral("not enough values"));
       }},
      {QRegularExpression(QStringLiteral("^(\\d+) values for (\\d+) columns$")),
       [](const auto& mm) {
         return mm.captured(1).toInt() > mm.captured(2).toInt() ? OraError(913, QStringLiteral("too many values"))
                                                                : OraError(947, QStringLiteral("not enough values"));
       }},
      {QRegularExpression(QStringLiteral("^sub-select returns (\\d+) columns - expected (\\d+)$")),
       [](const auto& mm) {
         return mm.captured(1).toInt() > mm.captured(2).toInt() ? OraError(913, QStringLiteral("too many values"))
                                                                : OraError(947, QStringLiteral("not enough values"));
       }},
      {QRegularExpression(QStringLiteral("^wrong number of arguments to function")),
       [](const auto&) { return OraError(909, QStringLiteral("invalid number of arguments")); }},
      {QRegularExpression(QStringLiteral("^misuse of aggregate")),
       [](const auto&) { return OraError(934, QStringLiteral("group function is not allowed here")); }},
      {QRegularExpression(QStringLiteral("^cannot modify .* because it is a view$")),
       [](const auto&) {
         return OraError(1732, QStringLiteral("data manipulation operation not legal on this view"));
       }},
      {QRegularExpression(QStringLiteral("ORDER BY term (out of range|does not match any column)")),
       [](const auto&) {
         return OraError(1785, QStringLiteral("ORDER BY item must be the number of a SELECT-list expression"));
       }},
      {QRegularExpression(QStringLiteral("^table \\S+ has no column named (.+)$")),
       [](const auto& mm) { return OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(mm.captured(1))); }},
      {QRegularExpression(QStringLiteral("^no tables specified$")),
       [](const auto&) { return OraError(923, QStringLiteral("FROM keyword not found where expected")); }},
      {QRegularExpression(QStringLiteral("^unrecognized token")),
       [](const auto&) { return OraError(911, QStringLiteral("invalid character")); }},
      {QRegularExpression(QStringLiteral("^row value misused$")),
       [](const auto&) { return OraError(907, QStringLiteral("missing right parenthesis")); }},
      {QRegularExpression(QStringLiteral("^DISTINCT is not supported for window functions")),
       [](const auto&) { return OraError(30482, QStringLiteral("DISTINCT option not allowed for this function")); }},
      // OVER (name ...) names a window SQLite would look for; Oracle reads no name there.
      {QRegularExpression(QStringLiteral("^no such window")),
       [](const auto&) { return OraError(907, QStringLiteral("missing right parenthesis")); }},
      // ROWNUM within what CONNECT BY walks row by row numbers nothing the engine can give.
      {QRegularExpression(QStringLiteral("^cannot use window functions in recursive queries$")),
       [](const auto&) { return OraError(3001, QStringLiteral("unimplemented feature")); }},
      {QRegularExpression(QStringLiteral("^misuse of window function")),
       [](const auto&) { return OraError(30483, QStringLiteral("window  functions are not allowed here")); }},
      {QRegularExpression(QStringLiteral("^default value of column .* is not constant$")),
       [](const auto&) { return OraError(984, QStringLiteral("column not allowed here")); }},
      {QRegularExpression(QStringLiteral("^aggregate functions are not allowed in the GROUP BY clause$")),
       [](const auto&) { return OraError(934, QStringLiteral("group function is not allowed here")); }},
      {QRegularExpression(QStringLiteral("^HAVING clause on a non-aggregate query$")),
       [](const auto&) { return OraError(979, QStringLiteral("not a GROUP BY expression")); }},
      {QRegularExpression(QStringLiteral("^DISTINCT aggregates must have exactly one argument$")),
       [](const auto&) { return OraError(936, QStringLiteral("missing expression")); }},
      {QRegularExpression(QStringLiteral("^incomplete input$")),
       [](const auto&) { return OraError(921, QStringLiteral("unexpected end of SQL command")); }},
      // What an index on an expression may not hold.
      {QRegularExpression(QStringLiteral("^subqueries prohibited in index expressions$")),
       [](const auto&) { return OraError(22818, QStringLiteral("subquery expressions not allowed here")); }},
      {QRegularExpression(QStringLiteral("^non-deterministic functions prohibited in index expressions$")),
       [](const auto&) { return OraError(1743, QStringLiteral("only pure functions can be indexed")); }},
      // ON or USING after a FROM item that no JOIN brought ends the statement for Oracle.
      {QRegularExpression(QStringLiteral("^a JOIN clause is required before (ON|USING)$")),
       [](const auto&) { return OraError(933, QStringLiteral("SQL command not properly ended")); }},
      {QRegularExpression(QStringLiteral("syntax error")),
       [](const auto&) { return OraError(933, QStringLiteral("SQL command not properly ended")); }},
      {QRegularExpression(QStringLiteral("^SELECTs to the left and right of .* do not have the same number")),
       [](const auto&) {
         return OraError(1789, QStringLiteral("query block has incorrect number of result columns"));
       }},
  };
  for (const Pattern& p : patterns)
    if (const auto match = p.re.match(m); match.hasMatch())
      return p.make(match);
  // A failure no Oracle error stands for is the engine's own fault: the text SQLite gave goes
  // to the log for whoever fixes it, not to the user as if it were Oracle's.
  qWarning("embedded engine: unexpected SQLite failure %d: %s", f.code, qPrintable(m));
  return OraError(600, QStringLiteral("internal error code, arguments: [sqlite%1]").arg(f.code));
}

} // namespace SqlErrors
