#include "platform/OracleClientRegistry.h"

#include <QDir>

OracleClientRegistry::OracleClientRegistry(const QProcessEnvironment& env) : m_home(findClientHome(env)) {}

QString OracleClientRegistry::findClientHome(const QProcessEnvironment& env) {
  const QString home = env.value(QStringLiteral("ORACLE_HOME")).trimmed();
  if (!home.isEmpty())
    return QDir::cleanPath(home);
  const auto folders = env.value(QStringLiteral("LD_LIBRARY_PATH")).split(u':', Qt::SkipEmptyParts);
  for (const QString& folder : folders)
    if (!QDir(folder).entryList({QStringLiteral("libclntsh.so*")}, QDir::Files).isEmpty())
      return QDir::cleanPath(folder);
  return {};
}

std::optional<RegValue> OracleClientRegistry::read(quint32, const QString& keyPath, const QString& name) {
  if (m_home.isEmpty())
    return std::nullopt;
  const auto is = [](const QString& a, const char16_t* b) {
    return a.compare(QStringView(b), Qt::CaseInsensitive) == 0;
  };
  if (is(keyPath, u"SOFTWARE\\ORACLE\\ALL_HOMES") && is(name, u"LAST_HOME"))
    return RegValue{RegValue::Type::Text, QStringLiteral("0"), 0};
  if (is(keyPath, u"SOFTWARE\\ORACLE\\HOME0") && is(name, u"ORACLE_HOME"))
    return RegValue{RegValue::Type::Text, m_home, 0};
  return std::nullopt;
}
