#include "settings/clsREG.h"

#include "services/MessageBoxes.h"

namespace {

QString cutAtNul(const QString& text) {
  const auto nul = text.indexOf(QChar(u'\0'));
  return nul < 0 ? text : text.left(nul);
}

} // namespace

clsREG::clsREG(RegistryBackend& backend, MessageBoxes& boxes) : m_backend(backend), m_boxes(boxes) {}

QString clsREG::KeyPath() const {
  QString path = m_mainBranch + u'\\' + m_regBase + u'\\' + m_program + u'\\' + m_section;
  if (path.endsWith(u'\\'))
    path.chop(1);
  return path;
}

QString clsREG::ReadEntry(const QString& key, const QString& def) {
  try {
    const auto value = m_backend.read(m_rootKey, KeyPath(), key);
    if (!value)
      return def;
    QString text;
    switch (value->type) {
    case RegValue::Type::Text:
    case RegValue::Type::ExpandText: text = cutAtNul(value->text); break;
    case RegValue::Type::DWord: text = QString::number(value->dword); break;
    case RegValue::Type::Other: return def;
    }
    return text.isEmpty() ? def : text;
  } catch (const RegistryError& e) {
    report(e, QStringLiteral("ReadEntry"));
    return def;
  }
}

void clsREG::WriteEntry(const QString& key, const QString& value) {
  try {
    m_backend.write(m_rootKey, KeyPath(), key, value);
  } catch (const RegistryError& e) {
    report(e, QStringLiteral("WriteEntry"));
  }
}

void clsREG::DeleteEntry(const QString& key) {
  try {
    m_backend.remove(m_rootKey, KeyPath(), key);
  } catch (const RegistryError& e) {
    report(e, QStringLiteral("DeleteEntry"));
  }
}

void clsREG::report(const RegistryError& e, const QString& title) {
  m_boxes.show(QStringLiteral("Error: ") + QString::number(e.number) + QStringLiteral(". ") + e.description, title,
               MessageBoxes::Buttons::Ok);
}
