#include "export/ExportSettings.h"

#include "settings/RegSetting.h"

#include <QDir>
#include <QFileInfo>

ExportSettings ExportSettings::read(clsREG& registry, const QString& defaultFolder) {
  ExportSettings s;
  s.outPath = ReadJvkSetting(registry, QStringLiteral("OutPath"), defaultFolder);
  s.separator = ReadJvkSetting(registry, QStringLiteral("SepChara"), QStringLiteral(","));
  s.itemId = ReadJvkSetting(registry, QStringLiteral("ItemID"), QStringLiteral("NO")) == u"YES";
  s.toClipboard = ReadJvkSetting(registry, QStringLiteral("CSVDest"), QStringLiteral("1")) == u"2";
  s.stringSeparator = ReadJvkSetting(registry, QStringLiteral("StrSep"), QStringLiteral("\""));
  const QString encoding = ReadJvkSetting(registry, QStringLiteral("CSVEncoding"), QStringLiteral("CP932"));
  s.encoding = encoding.compare(Utf8EncodingValue, Qt::CaseInsensitive) == 0 ? CsvEncoding::Utf8Bom
                                                                              : CsvEncoding::Cp932;
  return s;
}

void ExportSettings::write(clsREG& registry) const {
  WriteJvkSetting(registry, QStringLiteral("OutPath"), outPath);
  WriteJvkSetting(registry, QStringLiteral("SepChara"), separator);
  WriteJvkSetting(registry, QStringLiteral("ItemID"), itemId ? QStringLiteral("YES") : QStringLiteral("NO"));
  WriteJvkSetting(registry, QStringLiteral("CSVDest"), toClipboard ? QStringLiteral("2") : QStringLiteral("1"));
  WriteJvkSetting(registry, QStringLiteral("StrSep"), stringSeparator);
}

QString DefaultExportFolder(const QString& programFolder) {
  const QFileInfo folder(programFolder);
  if (!programFolder.isEmpty() && folder.isDir() && folder.isWritable())
    return QDir::toNativeSeparators(folder.absoluteFilePath());
  return QDir::homePath();
}
