#pragma once

#include <QString>

class clsREG;

// The one entry to the settings store. mode "R" reads key (value is the default, returned when
// the key is absent or empty), "W" writes value, "D" deletes key; either case. area is "JVK"
// (the program's settings), "RUN" (start-up entries), "ORA" or "ORA0".."ORA99" (the Oracle
// client), in upper or lower case. An unknown mode or area returns "ERROR" and changes nothing.
// A written value is cut at its first NUL, and so is the caller's variable.
QString RegSetting(clsREG& registry, const QString& mode, const QString& area, const QString& key, QString& value);
QString RegSetting(clsREG& registry, const QString& mode, const QString& area, const QString& key,
                   const QString& value);

// The program's own settings (area "JVK"): a value, or fallback when it is absent or empty; and
// writing one.
QString ReadJvkSetting(clsREG& registry, const QString& key, const QString& fallback);
void WriteJvkSetting(clsREG& registry, const QString& key, const QString& value);
