#pragma once

#include <QMainWindow>

struct BDBSWEEP;
struct Services;

// The main window.
class FDBSWEEP final : public QMainWindow {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP)

public:
  FDBSWEEP(BDBSWEEP& state, Services& services, QWidget* parent = nullptr);

private:
  BDBSWEEP& m_state;
  Services& m_services;
};
