#pragma once

#include <QObject>

class ProcessLauncher;
class QAction;
class QMenu;
class QSystemTrayIcon;

// The resident companion: an icon in the desktop's system tray whose menu starts DBSWEEP from
// the same folder, or ends the companion.
class TrayCompanion final : public QObject {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(TrayCompanion)

public:
  TrayCompanion(ProcessLauncher& launcher, QString programFolder, QObject* parent = nullptr);
  ~TrayCompanion() override;

  void show();
  QMenu* menu() const { return m_menu; }
  QAction* startAction() const { return m_start; }
  QAction* quitAction() const { return m_quit; }

  // Starts DBSWEEP; when it is not there, the tray says so in a balloon.
  void startDbsweep();

private:
  ProcessLauncher& m_launcher;
  QString m_programFolder;
  QMenu* m_menu;
  QAction* m_start;
  QAction* m_quit;
  QSystemTrayIcon* m_icon;
};
