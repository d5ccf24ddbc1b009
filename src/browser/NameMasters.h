#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

class clsREG;

// One name-master file read into memory: records 1..count(), as read. A lookup gives the first
// record of an ID, as a scan in file order would.
//
// The file is read with list-input rules: records of two fields, ID then name; fields end at a
// comma or a line end (CR LF, LF or CR); a field in double quotes ends at its closing quote and
// may hold commas and line breaks; an unquoted field loses its leading and trailing spaces and
// tabs. A line that is empty or holds only blanks holds no field. A record whose name is missing
// at the end of the file is dropped with everything after it.
class NameMasterFile final {
public:
  int count() const { return int(m_ids.size()); }
  QString id(int index) const;   // 1-based; "" outside 1..count()
  QString name(int index) const; // 1-based; "" outside 1..count()
  // The name of the first record whose ID equals id exactly (case and blanks count), else id itself.
  QString lookup(const QString& id) const;
  // Reads path; a file that cannot be opened leaves the master empty (count 0), without a message.
  // Text in UTF-8 (with or without a byte-order mark) or in Shift_JIS (CP932) is recognised.
  void load(const QString& path);
  void clear();

private:
  void parse(QStringView text);

  QStringList m_ids;
  QStringList m_names;
  QHash<QString, int> m_firstIndex; // ID -> 0-based index of its first record
};

// A name-master table in the user's schema: its name and the columns that hold the ID and the
// display name. Read from the settings each time, so a change in the options takes effect at the
// next query.
struct MasterTable final {
  QString table;
  QString nameColumn;
  QString idColumn;
};
// "TBLM", "TBLNM", "TBLID" (defaults TBTBLM, TBL_NM, TBL_ID).
MasterTable TableMasterSettings(clsREG& registry);
// "CLMM", "CLMNM", "CLMID" (defaults TBCLMM, CLM_NM, CLM_ID).
MasterTable ColumnMasterSettings(clsREG& registry);

struct NameMasters final {
  NameMasterFile tables;
  NameMasterFile columns;
};

// Reads the "TBLM" and "CLMM" settings (area "JVK", defaults "TBTBLM" and "TBCLMM") and loads
// <name>.dat for each, looking in each folder of `folders` in turn and taking the first that exists.
// A master whose file is found nowhere is left empty.
void LoadNameMasters(NameMasters& masters, clsREG& registry, const QStringList& folders);

// The name the table-name file gives the table or view ID, else the ID itself.
QString TableDisplayName(const NameMasters& masters, const QString& id);
// The name the column-name file gives the column ID, else the ID itself.
QString ColumnDisplayName(const NameMasters& masters, const QString& id);
