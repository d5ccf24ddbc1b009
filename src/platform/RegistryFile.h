#pragma once

#include "platform/RegistryBackend.h"

#include <QList>
#include <QString>

// The text form of one key path's values, in the manner of a .reg export:
//   [SOFTWARE\JVK\DBSWEEP\Settings]
//   "FormLeft"="0"
//   "Counter"=dword:0000002a
// Lines of a kind this version does not know are kept as they are and read as absent values.
class RegistryFile final {
public:
  struct Entry {
    QString name;
    RegValue value;
    QString line; // the original line of an entry of unknown kind
  };

  static RegistryFile parse(const QString& text);
  QString serialize(const QString& keyPath) const;

  const Entry* find(const QString& name) const;
  void set(const QString& name, const QString& text);
  bool remove(const QString& name);

private:
  QList<Entry> m_entries;
};
