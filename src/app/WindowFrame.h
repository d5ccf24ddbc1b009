#pragma once

#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

class FlexGrid;
class HourGlass;
class MainToolBar;
class PopPop;
class QCheckBox;
class QLabel;
class QMainWindow;
class QPushButton;
class QTimer;
class QWidget;
class ResultList;
class StatusPanel;
class clsPrinter;
struct BDBSWEEP;
struct JobContext;
struct JobPlan;
struct Services;

// The frame the main window and the index browser share: toolbar, status bar, clock, the
// stored geometry and display switches, the default-size and end buttons, the seven job buttons
// with their result list, and the pop-up menu of the browser's lists. Each window keeps what is
// its own (its content, and what its refresh means) and tells the frame through a few hooks.
// The measures, in twips, the browser windows are designed with.
namespace WindowDesign {
inline constexpr int DefaultHeight = 9840;
// The reference column width the grids are designed for.
inline constexpr int U = 800;
// Below the band of logon controls and display switches.
inline constexpr int GridsTop = 600;
inline constexpr int Margin = 60;
inline constexpr int KeyButtonHeight = 300;
inline constexpr int ButtonHeight = 375;
inline constexpr int ButtonWidth = 1100;
} // namespace WindowDesign

// A push button named name that never becomes the window's default for Enter.
QPushButton* NamedButton(QWidget* parent, const QString& name, const QString& caption);
// A grid named name of cols columns, with one fixed heading row and nothing under it.
FlexGrid* NamedGrid(QWidget* parent, const QString& name, int cols);
// The height, in twips, of a key grid that shows all ten keys at once, so the rows beside it
// never scroll apart from them.
int KeyGridHeight(const FlexGrid& keys);

class WindowFrame final : public QObject {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(WindowFrame)

public:
  // Where a window keeps its geometry, how big it first opens, and the reference column width
  // its grids are designed for. Sizes in twips.
  struct Design {
    QString geometrySuffix;
    int defaultWidth = 0;
    int defaultHeight = 0;
    int designU = 0;
  };

  // What the job buttons work on: the window's plan, read from its controls once per press, and
  // whether the delete job may offer to truncate (only where a filter can be empty on purpose).
  struct JobSource {
    std::function<JobPlan()> takePlan;
    bool offerTruncate = false;
  };

  // Builds the frame's controls on window; those inside the window go on central.
  WindowFrame(QMainWindow& window, QWidget* central, BDBSWEEP& state, Services& services, Design design);
  ~WindowFrame() override;

  // The toolbar, whose launcher menu and clone entry the window wires itself.
  MainToolBar* tbar() const { return m_tbar; }
  QPushButton* cmdJOB(int index) const { return m_cmdJOB[size_t(index)]; }
  QCheckBox* chkTabNM() const { return m_chkTabNM; }
  QCheckBox* chkFldNM() const { return m_chkFldNM; }
  QLabel* lblOra() const { return m_lblOra; }
  QPushButton* cmdDefaultSize() const { return m_cmdDefaultSize; }
  QPushButton* cmdEnd() const { return m_cmdEnd; }
  FlexGrid* grdCount() const { return m_grdCount; }
  ResultList* results() const { return m_results; }
  PopPop* popPop() const { return m_popPop; }
  // The reference column width for the window's current size.
  int u() const { return m_u; }
  // The design height of the grids that reach from the top band to the status bar.
  int designGridHeight() const;

  void setJobSource(JobSource source) { m_jobSource = std::move(source); }

  // Geometry and display switches from the settings, the version panel, the logon caption and
  // the running clock.
  void load();
  // One tick of the clock: date and time, the job menu, the resident entries; then ticked.
  void tick();
  void showLogonCaption();
  // After the window's size changed: the reference width, and the design height plus the
  // height gained for each widget listed. False while the window cannot be laid out (not loaded
  // yet, or minimised).
  bool followResize(const std::vector<std::pair<QWidget*, int>>& designHeights);
  // Saves geometry and display switches as the window closes; false (nothing saved) for a
  // minimised or maximised window, whose size says nothing about where the user wants it.
  bool saveOnClose();

  // Settles work pending in this window before the session goes or the window closes; false
  // when the user cancels.
  bool settlePendingWork();
  // The rollback and commit buttons: on exactly while this window's deletes wait for a decision.
  void setTransactionPending(bool pending);
  // Count, delete, data, drop and file output: on only with keys chosen and targets selected.
  void setTableJobsEnabled(bool enabled);
  void cmdJOB_Click(int index);

  // Prints the result list on one page, with the connection and the filter, where the user
  // chooses in the print dialog.
  void printResults(clsPrinter& printer, const QString& where);
  void cmdDefaultSize_Click();
  void showOptions();
  void showVersionWindow();

Q_SIGNALS:
  // The first toolbar entry or the first status panel: log on again, or refresh.
  void refreshRequested();
  void printRequested();
  void ticked();
  // The toolbar's clone entry or a double-click on the first status panel.
  void cloneRequested();
  // The options dialog closed: the launcher entries may have changed.
  void optionsClosed();

private:
  void buildControls(QWidget* central);
  void buildStatusBar();
  void connectToolBar();
  void applyStoredGeometry();
  void showVersionMessage();
  void showSessions();
  void showLastSql();
  void openManual();
  void removeWithProgress(int index, const JobPlan& plan, JobContext& context);
  void showDataOf(const JobPlan& plan, JobContext& context, std::optional<HourGlass>& wait);

  QMainWindow& m_window;
  BDBSWEEP& m_state;
  Services& m_services;
  Design m_design;
  JobSource m_jobSource;

  MainToolBar* m_tbar = nullptr;
  std::array<StatusPanel*, 5> m_panels{};
  std::array<QPushButton*, 7> m_cmdJOB{};
  QCheckBox* m_chkTabNM = nullptr;
  QCheckBox* m_chkFldNM = nullptr;
  QLabel* m_lblOra = nullptr;
  QPushButton* m_cmdDefaultSize = nullptr;
  QPushButton* m_cmdEnd = nullptr;
  FlexGrid* m_grdCount = nullptr;
  ResultList* m_results = nullptr;
  PopPop* m_popPop = nullptr;
  QTimer* m_timer1 = nullptr;
  bool m_ticking = false;
  // Zero until load: before it nothing is laid out.
  int m_designU = 0;
  int m_u = 0;
};
