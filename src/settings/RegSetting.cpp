#include "settings/RegSetting.h"

#include "settings/clsREG.h"

namespace {

const QString Error = QStringLiteral("ERROR");

void point(clsREG& reg, const QString& base, const QString& program, const QString& section) {
  reg.setRegBase(base);
  reg.setProgram(program);
  reg.setSection(section);
}

// Numbered Oracle areas are recognised by a binary text comparison, not by parsing a number:
// "ORA1X" counts, "ORANone" (a missing LAST_HOME) does not.
bool isNumberedOracleArea(const QString& area) {
  const auto between = [&](QStringView low, QStringView high) {
    return QStringView(area).compare(low, Qt::CaseSensitive) >= 0 &&
           QStringView(area).compare(high, Qt::CaseSensitive) <= 0;
  };
  return between(u"ORA0", u"ORA99") || between(u"ora0", u"ora99");
}

// Points the registry at the key of area; false for an unknown area.
bool SelectRegArea(clsREG& reg, const QString& area) {
  reg.setRootKey(RegistryBackend::HKeyLocalMachine);
  reg.setMainBranch(QStringLiteral("SOFTWARE"));
  if (area == u"JVK" || area == u"jvk")
    point(reg, QStringLiteral("JVK"), QStringLiteral("DBSWEEP"), QStringLiteral("Settings"));
  else if (area == u"RUN" || area == u"run")
    point(reg, QStringLiteral("Microsoft"), QStringLiteral("Windows"), QStringLiteral("CurrentVersion\\Run"));
  else if (area == u"ORA" || area == u"ora")
    point(reg, QStringLiteral("ORACLE"), QStringLiteral("ALL_HOMES"), QString());
  else if (isNumberedOracleArea(area))
    point(reg, QStringLiteral("ORACLE"), QStringLiteral("HOME") + area.mid(3), QString());
  else
    return false;
  return true;
}

} // namespace

QString RegSetting(clsREG& reg, const QString& mode, const QString& area, const QString& key, QString& value) {
  const bool read = mode == u"R" || mode == u"r";
  const bool write = mode == u"W" || mode == u"w";
  const bool remove = mode == u"D" || mode == u"d";
  if (!(read || write || remove) || !SelectRegArea(reg, area))
    return Error;
  if (read)
    return reg.ReadEntry(key, value);
  if (write) {
    const auto nul = value.indexOf(QChar(u'\0'));
    if (nul >= 0)
      value.truncate(nul);
    reg.WriteEntry(key, value);
  } else {
    reg.DeleteEntry(key);
  }
  return QString();
}

QString RegSetting(clsREG& reg, const QString& mode, const QString& area, const QString& key, const QString& value) {
  QString copy = value;
  return RegSetting(reg, mode, area, key, copy);
}

QString ReadJvkSetting(clsREG& registry, const QString& key, const QString& fallback) {
  return RegSetting(registry, QStringLiteral("R"), QStringLiteral("JVK"), key, fallback);
}

void WriteJvkSetting(clsREG& registry, const QString& key, const QString& value) {
  RegSetting(registry, QStringLiteral("W"), QStringLiteral("JVK"), key, value);
}
