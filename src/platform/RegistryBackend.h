#pragma once

#include <QFileDevice>
#include <QString>

#include <optional>

// A value as the settings store holds it. Text values are the normal case; a DWORD value reads back
// as its decimal number, and any other kind of value reads as absent.
struct RegValue final {
  enum class Type { Text, ExpandText, DWord, Other };
  Type type = Type::Text;
  QString text;
  quint32 dword = 0;
};

// Raised by a backend when the store itself fails (a folder that cannot be written, a file that
// cannot be read, a lock that is never released). A missing key or value is not an error: reads
// say "absent" instead. Such failures are ordinary (a read-only configuration folder, say), so
// whoever calls the store carries on without the value rather than stopping the user.
struct RegistryError final {
  QString description;
  QString folder; // where the store keeps its files

  static RegistryError of(const QFileDevice& file, const QString& folder) {
    return {file.fileName() + QStringLiteral(": ") + file.errorString(), folder};
  }
};

// One place where settings live, addressed as registry-style key paths ("SOFTWARE\JVK\...") under a
// root handle. Value names are matched without regard to case, as registry value names are.
class RegistryBackend {
public:
  static constexpr quint32 HKeyLocalMachine = 0x80000002u;

  virtual ~RegistryBackend() = default;
  virtual std::optional<RegValue> read(quint32 root, const QString& keyPath, const QString& name) = 0;
  virtual void write(quint32 root, const QString& keyPath, const QString& name, const QString& value) = 0;
  virtual void remove(quint32 root, const QString& keyPath, const QString& name) = 0;
};
