#include "sqlconsole/Describe.h"

#include "db/OraDatabase.h"
#include "db/OraDynaset.h"
#include "db/OraError.h"

#include <QSet>

namespace {

// A dictionary name as written: quoted names keep their case, others are upper-cased.
QString dictionaryName(QStringView name) {
  if (name.size() >= 2 && name.front() == u'"' && name.back() == u'"')
    return name.mid(1, name.size() - 2).toString();
  return name.toString().toUpper();
}

QString quoted(const QString& text) { return u'\'' + QString(text).replace(u'\'', QStringLiteral("''")) + u'\''; }

QString typeOf(OraDynaset& column) {
  const QString type = column.Fields(QStringLiteral("DATA_TYPE")).toString();
  const QVariant precision = column.Fields(QStringLiteral("DATA_PRECISION"));
  const QVariant scale = column.Fields(QStringLiteral("DATA_SCALE"));
  if (type == u"NUMBER") {
    if (precision.isNull())
      return scale.isNull() ? type : QStringLiteral("NUMBER(38)");
    return scale.isNull() || scale.toInt() == 0
               ? QStringLiteral("NUMBER(%1)").arg(precision.toInt())
               : QStringLiteral("NUMBER(%1,%2)").arg(precision.toInt()).arg(scale.toInt());
  }
  if (type == u"FLOAT")
    return QStringLiteral("FLOAT(%1)").arg(precision.toInt());
  if (type == u"NCHAR" || type == u"NVARCHAR2")
    return QStringLiteral("%1(%2)").arg(type).arg(column.Fields(QStringLiteral("CHAR_LENGTH")).toInt());
  static const QStringList sized{QStringLiteral("VARCHAR2"), QStringLiteral("VARCHAR"), QStringLiteral("CHAR"),
                                 QStringLiteral("RAW")};
  // A length in characters is marked, the session's default being bytes.
  if ((type == u"VARCHAR2" || type == u"CHAR") && column.Fields(QStringLiteral("CHAR_USED")).toString() == u"C")
    return QStringLiteral("%1(%2 CHAR)").arg(type).arg(column.Fields(QStringLiteral("CHAR_LENGTH")).toInt());
  if (sized.contains(type))
    return QStringLiteral("%1(%2)").arg(type).arg(column.Fields(QStringLiteral("DATA_LENGTH")).toInt());
  return type;
}

QString line(const QString& name, const QString& null, const QString& type) {
  QString text = u' ' + name.leftJustified(41) + u' ' + null.leftJustified(8) + u' ' + type;
  while (text.endsWith(u' '))
    text.chop(1);
  return text + u'\n';
}

} // namespace

QString Describe::columns(OraDatabase& database, const QString& name, const QString& user) {
  const qsizetype dot = name.indexOf(u'.');
  QString owner = dot < 0 ? user.toUpper() : dictionaryName(QStringView(name).left(dot));
  QString table = dictionaryName(QStringView(name).mid(dot + 1));
  const auto columnsOf = [&] {
    return database.CreateDynaset(
        QStringLiteral("SELECT column_name, nullable, data_type, data_length, data_precision, data_scale, char_length, "
                       "char_used FROM all_tab_columns WHERE owner = %1 AND table_name = %2 ORDER BY column_id")
            .arg(quoted(owner), quoted(table)),
        OraDynaset::ReadOnly);
  };
  auto columns = columnsOf();
  // A synonym describes what it stands for: the session's own first, then a public one, and on
  // through synonyms for synonyms until a loop comes back.
  QSet<QString> seen;
  for (int hops = 0; columns->IsEOF(); ++hops) {
    if (seen.contains(owner + u'.' + table))
      break;
    seen.insert(owner + u'.' + table);
    auto synonym = database.CreateDynaset(
        QStringLiteral("SELECT table_owner, table_name FROM all_synonyms WHERE synonym_name = %1 AND owner IN (%2%3) "
                       "ORDER BY CASE owner WHEN 'PUBLIC' THEN 1 ELSE 0 END")
            .arg(quoted(table), quoted(owner), dot < 0 || hops > 0 ? QStringLiteral(", 'PUBLIC'") : QString()),
        OraDynaset::ReadOnly);
    if (synonym->IsEOF())
      break;
    owner = synonym->Fields(QStringLiteral("TABLE_OWNER")).toString();
    table = synonym->Fields(QStringLiteral("TABLE_NAME")).toString();
    synonym->Close();
    columns = columnsOf();
  }
  if (columns->IsEOF())
    throw OraError(4043, QStringLiteral("object %1 does not exist").arg(name));
  QString text = line(QStringLiteral("Name"), QStringLiteral("Null?"), QStringLiteral("Type")) +
                 line(QString(41, u'-'), QString(8, u'-'), QString(28, u'-'));
  for (; !columns->IsEOF(); columns->MoveNext())
    text +=
        line(columns->Fields(QStringLiteral("COLUMN_NAME")).toString(),
             columns->Fields(QStringLiteral("NULLABLE")).toString() == u"N" ? QStringLiteral("NOT NULL") : QString(),
             typeOf(*columns));
  columns->Close();
  return text;
}
