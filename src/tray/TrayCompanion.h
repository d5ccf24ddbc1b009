#pragma once

#include <QList>
#include <QObject>

class ProcessLauncher;
class QAction;
class QMenu;
class QSystemTrayIcon;
class clsREG;

// The resident companion: an icon in the desktop's system tray whose menu starts DBSWEEP, starts
// the launcher's programs logged on as the last logon, or ends the companion.
class TrayCompanion final : public QObject {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(TrayCompanion)

public:
  TrayCompanion(ProcessLauncher& launcher, clsREG& registry, QString ownFolder, QObject* parent = nullptr);
  ~TrayCompanion() override;

  void show();
  QMenu* menu() const { return m_menu; }
  QAction* startAction() const { return m_start; }
  QAction* quitAction() const { return m_quit; }
  // One entry per launcher entry, shown as the main window shows its buttons.
  const QList<QAction*>& launcherActions() const { return m_children; }

  // Starts DBSWEEP from the folder the program recorded at its first start, else from the
  // companion's own; when neither starts, the tray says so in a balloon.
  void startDbsweep();
  // Reads the launcher entries again; the menu does so each time it opens.
  void loadLauncherEntries();

private:
  ProcessLauncher& m_launcher;
  clsREG& m_registry;
  QString m_ownFolder;
  QMenu* m_menu;
  QAction* m_start;
  QList<QAction*> m_children;
  QAction* m_quit;
  QSystemTrayIcon* m_icon;
};
