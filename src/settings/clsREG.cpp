#include "settings/clsREG.h"

#include "services/MessageBoxes.h"

#include <QDebug>

#include <new>
#include <utility>

namespace {

const QString NotSaved = QStringLiteral("dbsweep: settings cannot be saved in %1: %2; nothing will be kept");

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
    warnOnce(QStringLiteral("dbsweep: settings cannot be read from %1: %2; defaults are used"), e);
  } catch (const std::exception& e) {
    report(e, QStringLiteral("ReadEntry"));
  }
  return def;
}

void clsREG::WriteEntry(const QString& key, const QString& value) {
  try {
    m_backend.write(m_rootKey, KeyPath(), key, value);
  } catch (const RegistryError& e) {
    warnOnce(NotSaved, e);
  } catch (const std::exception& e) {
    report(e, QStringLiteral("WriteEntry"));
  }
}

void clsREG::DeleteEntry(const QString& key) {
  try {
    m_backend.remove(m_rootKey, KeyPath(), key);
  } catch (const RegistryError& e) {
    warnOnce(NotSaved, e);
  } catch (const std::exception& e) {
    report(e, QStringLiteral("DeleteEntry"));
  }
}

void clsREG::warnOnce(const QString& text, const RegistryError& e) {
  if (std::exchange(m_warned, true))
    return;
  qWarning().noquote() << text.arg(e.folder, e.description);
}

void clsREG::report(const std::exception& e, const QString& title) {
  // The number is what a user quotes when reporting the fault: 7 for memory running out, 51 for
  // anything else going wrong inside the program.
  const bool memory = dynamic_cast<const std::bad_alloc*>(&e) != nullptr;
  const QString description = memory ? QStringLiteral("Out of memory") : QString::fromLocal8Bit(e.what());
  m_boxes.show(QStringLiteral("Error: %1. %2").arg(QString::number(memory ? 7 : 51), description), title,
               MessageBoxes::Buttons::Ok);
}
