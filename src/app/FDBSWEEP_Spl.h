#pragma once

#include <QDialog>

class QLabel;
class QTimer;
struct BDBSWEEP;
struct Services;

// The splash shown while the main window starts. On the very first start it also asks whether
// the resident companion should be used.
class FDBSWEEP_Spl final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_Spl)

public:
  FDBSWEEP_Spl(BDBSWEEP& state, Services& services, QWidget* parent = nullptr);

  // Runs the load steps, then shows the splash until its timer's first tick closes it.
  int exec() override;

private:
  void load();

  BDBSWEEP& m_state;
  Services& m_services;
  QLabel* m_version;
  QTimer* m_timer;
};
