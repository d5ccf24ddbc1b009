#include "sqlconsole/StatementFeedback.h"

#include "db/script/SqlWords.h"

#include <QHash>

namespace {

QString rowsMessage(qint64 rows, const char* verb) {
  return rows == 1 ? QStringLiteral("1 row %1.").arg(QLatin1StringView(verb))
                   : QStringLiteral("%1 rows %2.").arg(rows).arg(QLatin1StringView(verb));
}

// Object words as SQL*Plus names them in its feedback.
QString objectName(const QString& word) {
  static const QHash<QString, QString> names{
      {QStringLiteral("TABLE"), QStringLiteral("Table")},     {QStringLiteral("INDEX"), QStringLiteral("Index")},
      {QStringLiteral("VIEW"), QStringLiteral("View")},       {QStringLiteral("SEQUENCE"), QStringLiteral("Sequence")},
      {QStringLiteral("USER"), QStringLiteral("User")},       {QStringLiteral("SYNONYM"), QStringLiteral("Synonym")},
      {QStringLiteral("SESSION"), QStringLiteral("Session")}, {QStringLiteral("SYSTEM"), QStringLiteral("System")},
  };
  return names.value(word);
}

// The object word of CREATE/ALTER/DROP, past modifiers such as OR REPLACE, UNIQUE or FORCE.
QString objectOf(const QStringList& words) {
  static const QStringList modifiers{
      QStringLiteral("OR"),     QStringLiteral("REPLACE"),     QStringLiteral("UNIQUE"),
      QStringLiteral("BITMAP"), QStringLiteral("FORCE"),       QStringLiteral("NOFORCE"),
      QStringLiteral("GLOBAL"), QStringLiteral("PRIVATE"),     QStringLiteral("TEMPORARY"),
      QStringLiteral("PUBLIC"), QStringLiteral("EDITIONABLE"), QStringLiteral("NONEDITIONABLE")};
  for (qsizetype i = 1; i < words.size(); ++i) {
    if (!modifiers.contains(words[i]))
      return objectName(words[i]);
  }
  return {};
}

} // namespace

bool StatementFeedback::isQuery(QStringView sql) {
  qsizetype i = 0;
  while (i < sql.size() && (sql[i].isSpace() || sql[i] == u'('))
    ++i;
  const QString first = SqlWords::wordAt(sql, i).toString().toUpper();
  return first == u"SELECT" || first == u"WITH";
}

QString StatementFeedback::message(QStringView sql, qint64 rows) {
  const QStringList words = SqlWords::leading(sql, 8);
  const QString first = words.value(0);
  if (first == u"INSERT")
    return rowsMessage(rows, "created");
  if (first == u"UPDATE")
    return rowsMessage(rows, "updated");
  if (first == u"DELETE")
    return rowsMessage(rows, "deleted");
  if (first == u"MERGE")
    return rowsMessage(rows, "merged");
  if (first == u"BEGIN" || first == u"DECLARE")
    return QStringLiteral("PL/SQL procedure successfully completed.");
  if (first == u"COMMIT")
    return QStringLiteral("Commit complete.");
  if (first == u"ROLLBACK")
    return QStringLiteral("Rollback complete.");
  if (first == u"SAVEPOINT")
    return QStringLiteral("Savepoint created.");
  if (first == u"GRANT")
    return QStringLiteral("Grant succeeded.");
  if (first == u"REVOKE")
    return QStringLiteral("Revoke succeeded.");
  if (first == u"LOCK")
    return QStringLiteral("Table(s) Locked.");
  if (first == u"RENAME")
    return QStringLiteral("Table renamed.");
  if (first == u"COMMENT")
    return QStringLiteral("Comment created.");
  if (first == u"TRUNCATE" && words.value(1) == u"TABLE")
    return QStringLiteral("Table truncated.");
  static const QHash<QString, QString> verbs{{QStringLiteral("CREATE"), QStringLiteral("created")},
                                             {QStringLiteral("ALTER"), QStringLiteral("altered")},
                                             {QStringLiteral("DROP"), QStringLiteral("dropped")}};
  if (const QString object = objectOf(words); verbs.contains(first) && !object.isEmpty())
    return object + u' ' + verbs.value(first) + u'.';
  return QStringLiteral("Statement processed.");
}
