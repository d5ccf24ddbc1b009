#pragma once

#include "app/ConnectOracle.h"

#include <QDialog>

class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
struct BDBSWEEP;
struct Services;

// The logon dialog: user, password and host, pre-filled from the current logon or the last
// successful one. OK connects through ConnectOracle and closes either way; the caller looks at
// state.gHost afterwards. Every showing reloads the host list and the fields.
class FORA_Logon final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FORA_Logon)

public:
  // hooks: what the main window does around the attempt (its caption, the demo instance).
  FORA_Logon(BDBSWEEP& state, Services& services, LogonHooks hooks = {}, QWidget* parent = nullptr);

protected:
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void load();
  void cmdOK_Click();

  BDBSWEEP& m_state;
  Services& m_services;
  LogonHooks m_hooks;
  QGroupBox* fraStep3;
  QLineEdit* txtUID;
  QLineEdit* txtPWD;
  QComboBox* cmbHost;
  QPushButton* cmdOK;
  QPushButton* cmdCancel;
};
