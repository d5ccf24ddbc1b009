#include "browser/Catalogues.h"

#include "browser/CatalogueSql.h"
#include "db/OraDatabase.h"
#include "db/OraError.h"

#include <QHash>

namespace {

// Reads every row of an open query into a table of the given width, one row per record from row
// 1 on; fill writes row r from the current record. Nothing when the query did not open or a fetch
// fails.
template <typename Fill> std::optional<TextTable> readRows(std::unique_ptr<OraDynaset> d, int width, const Fill& fill) {
  if (!d)
    return std::nullopt;
  try {
    TextTable rows(width);
    rows.redim(int(d->RecordCount()));
    for (int r = 1; r <= rows.upper(); ++r, d->MoveNext())
      fill(*d, rows, r);
    d->Close();
    return rows;
  } catch (const OraError&) {
    return std::nullopt;
  }
}

// The column rows of a column query: numeric types show precision and scale, the others their
// length. A name that is only the ID again may be known to the name-master file.
std::optional<TextTable> readColumns(std::unique_ptr<OraDynaset> d, const NameMasters& names) {
  return readRows(std::move(d), 5, [&names](OraDynaset& d, TextTable& columns, int r) {
    const QString id = FieldText(d, QStringLiteral("COLUMN_NAME"));
    const QString name = FieldText(d, QStringLiteral("COLNM_K"));
    const QString type = FieldText(d, QStringLiteral("DATA_TYPE"));
    const bool numeric = type.contains(QStringLiteral("NUM"));
    columns.set(0, r, id);
    columns.set(1, r, name == id ? ColumnDisplayName(names, id) : name);
    columns.set(2, r, type);
    columns.set(3, r, FieldText(d, numeric ? QStringLiteral("DATA_PRECISION") : QStringLiteral("DATA_LENGTH")));
    columns.set(4, r, numeric ? FieldText(d, QStringLiteral("DATA_SCALE")) : QString());
  });
}

// Opens sql read-only; null when it fails or there is no database to ask.
std::unique_ptr<OraDynaset> tryOpen(OraDatabase* db, const QString& sql) {
  try {
    return db ? db->CreateDynaset(sql, OraDynaset::ReadOnly) : nullptr;
  } catch (const OraError&) {
    return nullptr;
  }
}

} // namespace

std::unique_ptr<OraDynaset> OpenWithFallback(OraDatabase* db, const QString& sql, const QString& fallback) {
  if (!db)
    return nullptr;
  for (const QString& text : {sql, fallback}) {
    try {
      return db->CreateDynaset(text, OraDynaset::ReadOnly);
    } catch (const OraError&) {
      // The master is optional: a schema without it, or with other column names, still browses.
    }
  }
  return nullptr;
}

QString FieldText(OraDynaset& dynaset, const QString& name) {
  const QVariant v = dynaset.Fields(name);
  return v.isValid() ? v.toString() : QString();
}

std::optional<TextTable> ReadTableCatalogue(OraDatabase* db, const QString& user, const MasterTable& master,
                                            const NameMasters& names) {
  auto d = OpenWithFallback(db, TableCatalogueSql(user, master), TableCatalogueFallbackSql(user));
  return readRows(std::move(d), 2, [&names](OraDynaset& d, TextTable& tables, int r) {
    const QString id = FieldText(d, QStringLiteral("TBLNM_A"));
    const QString name = FieldText(d, QStringLiteral("TBLNM_K"));
    // The query answers the ID itself when neither master nor comment names the table, and a
    // comment that only repeats the ID says nothing either: then the file may know a name.
    tables.set(0, r, id);
    tables.set(1, r, name == id ? TableDisplayName(names, id) : name);
  });
}

std::optional<TextTable> ReadColumnCatalogue(OraDatabase* db, const QString& user, const QString& table,
                                             const MasterTable& master, const NameMasters& names) {
  return readColumns(
      OpenWithFallback(db, ColumnCatalogueSql(user, table, master), ColumnCatalogueFallbackSql(user, table)), names);
}

bool TableMasterExists(OraDatabase* db, const QString& user, const QString& masterTable) {
  if (!db)
    return false;
  try {
    return db->CreateDynaset(TableMasterCheckSql(user, masterTable), OraDynaset::ReadOnly)->RecordCount() > 0;
  } catch (const OraError&) {
    return false;
  }
}

std::optional<TextTable> ReadTableSearch(OraDatabase* db, const QString& sql, const NameMasters& names) {
  return readRows(tryOpen(db, sql), 2, [&names](OraDynaset& d, TextTable& targets, int r) {
    const QString id = FieldText(d, QStringLiteral("TABLE_NAME"));
    const QString name = FieldText(d, QStringLiteral("TBLNM_K"));
    targets.set(0, r, id);
    targets.set(1, r, name == id ? TableDisplayName(names, id) : name);
  });
}

std::optional<TextTable> ReadColumnInfo(OraDatabase* db, const QString& user, const QString& table,
                                        const MasterTable& master, const NameMasters& names) {
  return readColumns(OpenWithFallback(db, ColumnInfoSql(user, table, master), ColumnInfoFallbackSql(user, table)),
                     names);
}

std::optional<TextTable> ReadIndexCatalogue(OraDatabase* db, const QString& user, const QString& table) {
  return readRows(tryOpen(db, IndexCatalogueSql(user, table)), 3, [](OraDynaset& d, TextTable& indexes, int r) {
    const QString name = FieldText(d, QStringLiteral("IDXNM"));
    indexes.set(0, r, name);
    indexes.set(1, r, name);
    indexes.set(2, r, FieldText(d, QStringLiteral("IDXTYPE")));
  });
}

std::optional<TextTable> ReadIndexColumns(OraDatabase* db, const QString& user, const QString& index,
                                          const MasterTable& master, const NameMasters& names) {
  auto d = OpenWithFallback(db, IndexColumnsSql(user, index, master), IndexColumnsFallbackSql(user, index));
  return readRows(std::move(d), 5, [&names](OraDynaset& d, TextTable& columns, int r) {
    const QString id = FieldText(d, QStringLiteral("COLUMN_NAME"));
    const QString name = FieldText(d, QStringLiteral("COLNM_K"));
    columns.set(0, r, id);
    columns.set(1, r, name == id ? ColumnDisplayName(names, id) : name);
    columns.set(2, r, FieldText(d, QStringLiteral("COLUMN_POSITION")));
    columns.set(3, r, FieldText(d, QStringLiteral("COLUMN_LENGTH")));
    columns.set(4, r, FieldText(d, QStringLiteral("DESCEND")));
  });
}

std::optional<TextTable> ReadIndexSearch(OraDatabase* db, const QString& user, const QString& sql) {
  // The jobs work on tables, and the search names only indexes.
  const std::optional<TextTable> tables =
      readRows(tryOpen(db, IndexTablesSql(user)), 2, [](OraDynaset& d, TextTable& pairs, int r) {
        pairs.set(0, r, FieldText(d, QStringLiteral("INDEX_NAME")));
        pairs.set(1, r, FieldText(d, QStringLiteral("TABLE_NAME")));
      });
  if (!tables)
    return std::nullopt;
  QHash<QString, QString> tableOf;
  for (int r = 1; r <= tables->upper(); ++r)
    tableOf.insert(tables->at(0, r), tables->at(1, r));
  return readRows(tryOpen(db, sql), 3, [&tableOf](OraDynaset& d, TextTable& hits, int r) {
    const QString index = FieldText(d, QStringLiteral("INDEX_NAME"));
    hits.set(0, r, index);
    hits.set(1, r, FieldText(d, QStringLiteral("IDXNM_K")));
    hits.set(2, r, tableOf.value(index));
  });
}
