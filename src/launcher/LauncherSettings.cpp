#include "launcher/LauncherSettings.h"

#include "settings/RegSetting.h"

namespace {

// The six name-master keys with the member each fills.
template <typename Names, typename F> void forEachName(Names& names, F&& f) {
  f(QStringLiteral("TBLM"), names.tableMaster);
  f(QStringLiteral("TBLID"), names.tableId);
  f(QStringLiteral("TBLNM"), names.tableName);
  f(QStringLiteral("CLMM"), names.columnMaster);
  f(QStringLiteral("CLMID"), names.columnId);
  f(QStringLiteral("CLMNM"), names.columnName);
}

} // namespace

const QStringList& HandOverForms() {
  static const QStringList forms = {QStringLiteral("引数なし"), QStringLiteral("ZapEdit:User Pass Host"),
                                    QStringLiteral("       :User , Pass, Host"), QStringLiteral("SqlPlus:User/Pass@Host"),
                                    QStringLiteral("ObjScan:/u=User/Pass@Host")};
  return forms;
}

LauncherEntry ReadLauncherEntry(clsREG& registry, int i) {
  const QString n = QString::number(i);
  LauncherEntry entry;
  entry.caption = ReadJvkSetting(registry, QStringLiteral("CHILDID") + n, QString());
  entry.program = ReadJvkSetting(registry, QStringLiteral("CHILDNAME") + n, QString());
  // Text that is no number counts as 0, as the form's list reads it.
  entry.form = ReadJvkSetting(registry, QStringLiteral("CHILDpara") + n, QStringLiteral("0")).trimmed().toInt();
  return entry;
}

void WriteLauncherEntry(clsREG& registry, int i, const LauncherEntry& entry) {
  const QString n = QString::number(i);
  WriteJvkSetting(registry, QStringLiteral("CHILDID") + n, entry.caption);
  WriteJvkSetting(registry, QStringLiteral("CHILDNAME") + n, entry.program);
  WriteJvkSetting(registry, QStringLiteral("CHILDPARA") + n, QString::number(entry.form));
}

NameMasterNames NameMasterNames::read(clsREG& registry) {
  NameMasterNames names;
  forEachName(names, [&](const QString& key, QString& value) { value = ReadJvkSetting(registry, key, value); });
  return names;
}

void NameMasterNames::write(clsREG& registry) const {
  forEachName(*this, [&](const QString& key, const QString& value) { WriteJvkSetting(registry, key, value); });
}
