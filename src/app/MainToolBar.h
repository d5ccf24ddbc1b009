#pragma once

#include <QToolBar>

class QToolButton;

// The main window's toolbar: five drop-down buttons whose entries run the same actions as the
// window's buttons.
class MainToolBar final : public QToolBar {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(MainToolBar)

public:
  explicit MainToolBar(QWidget* parent = nullptr);

  // 接続: 接続, クローン, 終了.
  QAction* logon() const { return m_logon; }
  QAction* clone() const { return m_clone; }
  QAction* end() const { return m_end; }
  // 処理: one entry per job button, kept in line with the buttons by the window's clock.
  const QList<QAction*>& jobs() const { return m_jobs; }
  // 印刷.
  QAction* printFont() const { return m_printFont; }
  QAction* printResult() const { return m_printResult; }
  // ﾗﾝﾁｬｰ: one entry per launcher button.
  QMenu* launcherMenu() const { return m_launcherMenu; }
  // ｵﾌﾟｼｮﾝ.
  QAction* options() const { return m_options; }
  QAction* defaultSize() const { return m_defaultSize; }
  QAction* version() const { return m_version; }
  QAction* residentOn() const { return m_residentOn; }
  QAction* residentOff() const { return m_residentOff; }
  QAction* help() const { return m_help; }

private:
  QMenu* addDropDown(const QString& objectName, const QString& caption);

  QAction* m_logon;
  QAction* m_clone;
  QAction* m_end;
  QList<QAction*> m_jobs;
  QAction* m_printFont;
  QAction* m_printResult;
  QMenu* m_launcherMenu;
  QAction* m_options;
  QAction* m_defaultSize;
  QAction* m_version;
  QAction* m_residentOn;
  QAction* m_residentOff;
  QAction* m_help;
};
