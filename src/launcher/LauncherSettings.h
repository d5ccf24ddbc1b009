#pragma once

#include <QString>
#include <QStringList>

class clsREG;

// One entry of the external program launcher as the settings keep it: the button's caption, the
// program, and the form in which the connection is handed to it (its place in HandOverForms, -1
// for none chosen).
struct LauncherEntry {
  QString caption;
  QString program;
  int form = 0;
};

inline constexpr int LauncherEntries = 10;
inline constexpr int LongestCaption = 8;

// The hand-over forms as the options dialog lists them, in the order their places are stored.
const QStringList& HandOverForms();

LauncherEntry ReadLauncherEntry(clsREG& registry, int i);
void WriteLauncherEntry(clsREG& registry, int i, const LauncherEntry& entry);

// The names of the two name-master tables and of their ID and name columns.
struct NameMasterNames {
  QString tableMaster = QStringLiteral("TBTBLM");
  QString tableId = QStringLiteral("TBL_ID");
  QString tableName = QStringLiteral("TBL_NM");
  QString columnMaster = QStringLiteral("TBCLMM");
  QString columnId = QStringLiteral("CLM_ID");
  QString columnName = QStringLiteral("CLM_NM");

  static NameMasterNames read(clsREG& registry);
  void write(clsREG& registry) const;
};
