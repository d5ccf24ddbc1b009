#include "export/ExportSettings.h"

#include "settings/RegSetting.h"

#include <QDir>
#include <QFileInfo>

namespace {

const QString Area = QStringLiteral("JVK");

QString readValue(clsREG& registry, const QString& key, const QString& fallback) {
  return RegSetting(registry, QStringLiteral("R"), Area, key, fallback);
}

void writeValue(clsREG& registry, const QString& key, const QString& value) {
  RegSetting(registry, QStringLiteral("W"), Area, key, value);
}

} // namespace

ExportSettings ExportSettings::read(clsREG& registry, const QString& defaultFolder) {
  ExportSettings s;
  s.outPath = readValue(registry, QStringLiteral("OutPath"), defaultFolder);
  s.separator = readValue(registry, QStringLiteral("SepChara"), QStringLiteral(","));
  s.itemId = readValue(registry, QStringLiteral("ItemID"), QStringLiteral("NO")) == u"YES";
  s.toClipboard = readValue(registry, QStringLiteral("CSVDest"), QStringLiteral("1")) == u"2";
  s.stringSeparator = readValue(registry, QStringLiteral("StrSep"), QStringLiteral("\""));
  const QString encoding = readValue(registry, QStringLiteral("CSVEncoding"), QStringLiteral("CP932"));
  s.encoding = encoding.compare(Utf8EncodingValue, Qt::CaseInsensitive) == 0 ? CsvEncoding::Utf8Bom
                                                                              : CsvEncoding::Cp932;
  return s;
}

void ExportSettings::write(clsREG& registry) const {
  writeValue(registry, QStringLiteral("OutPath"), outPath);
  writeValue(registry, QStringLiteral("SepChara"), separator);
  writeValue(registry, QStringLiteral("ItemID"), itemId ? QStringLiteral("YES") : QStringLiteral("NO"));
  writeValue(registry, QStringLiteral("CSVDest"), toClipboard ? QStringLiteral("2") : QStringLiteral("1"));
  writeValue(registry, QStringLiteral("StrSep"), stringSeparator);
}

QString DefaultExportFolder(const QString& programFolder) {
  const QFileInfo folder(programFolder);
  if (!programFolder.isEmpty() && folder.isDir() && folder.isWritable())
    return QDir::toNativeSeparators(folder.absoluteFilePath());
  return QDir::homePath();
}
