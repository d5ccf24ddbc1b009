#pragma once

#include "platform/RegistryBackend.h"

#include <QString>

#include <exception>

class MessageBoxes;

// The registry class: reads, writes and deletes text values under
// RootKey \ MainBranch \ RegBase \ Program \ Section. RegSetting points it at an area before
// each call.
//
// A store that fails (a read-only configuration folder, a locked or unreadable file) is no reason
// to stop the user: a read gives its default, a write or delete does nothing, and the first such
// failure is told on the standard error, once (there is one instance per process), so that
// whoever wonders why nothing is kept can find out. Only a fault of the program itself shows a
// message box.
class clsREG final {
public:
  clsREG(RegistryBackend& backend, MessageBoxes& boxes);

  quint32 RootKey() const { return m_rootKey; }
  void setRootKey(quint32 root) { m_rootKey = root; }
  const QString& MainBranch() const { return m_mainBranch; }
  void setMainBranch(const QString& v) { m_mainBranch = v; }
  const QString& RegBase() const { return m_regBase; }
  void setRegBase(const QString& v) { m_regBase = v; }
  const QString& Program() const { return m_program; }
  void setProgram(const QString& v) { m_program = v; }
  const QString& Section() const { return m_section; }
  void setSection(const QString& v) { m_section = v; }

  // MainBranch\RegBase\Program\Section, without a trailing backslash when Section is empty.
  QString KeyPath() const;

  // The value of key, or def when it is absent or empty. Text is cut at its first NUL; a DWORD
  // value reads as its decimal number.
  QString ReadEntry(const QString& key, const QString& def);
  void WriteEntry(const QString& key, const QString& value);
  void DeleteEntry(const QString& key);

private:
  void warnOnce(const QString& text, const RegistryError& e);
  void report(const std::exception& e, const QString& title);

  RegistryBackend& m_backend;
  MessageBoxes& m_boxes;
  quint32 m_rootKey = RegistryBackend::HKeyLocalMachine;
  QString m_mainBranch = QStringLiteral("SOFTWARE");
  QString m_regBase;
  QString m_program;
  QString m_section = QStringLiteral("Settings");
  bool m_warned = false;
};
