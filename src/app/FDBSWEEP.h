#pragma once

#include <QMainWindow>

#include <array>
#include <memory>
#include <optional>

class BrowserGrids;
class HourGlass;
class clsPrinter;
class FilterPanel;
class FlexGrid;
class LauncherButtons;
struct Logon;
class PopPop;
class MainToolBar;
class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTimer;
class ResultList;
class StatusPanel;
struct BDBSWEEP;
struct JobContext;
struct JobFilterRow;
struct JobPlan;
struct LogonHooks;
struct Services;

// The main window: the start-up object of the program and the frame around the schema browser,
// the row filter, the jobs and their result list.
class FDBSWEEP final : public QMainWindow {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP)

public:
  FDBSWEEP(BDBSWEEP& state, Services& services, QWidget* parent = nullptr);
  ~FDBSWEEP() override;

  // The start-up sequence: settings, splash, name masters, and the logon the command line asks
  // for. Runs once, before the window is first shown.
  void load();
  // One tick of Timer1: clock, job menu, resident entries, uptime.
  void timerTick();
  // Places the lists and grids for the current reference width.
  void LayoutMainWindow();

  // Lists every table and view of the user in grdTable and drops everything chosen on the old
  // list: columns, keys, filter rows, targets, results.
  void LoadTableCatalogue();
  // Shows the columns of the table in grdTable's current row, unless they are already shown.
  void LoadColumnCatalogue();
  // The print object; its font comes from the settings at load.
  clsPrinter& printer() { return *m_printer; }
  // Empties the result list down to its heading.
  void lstCountClear();
  // The job buttons: count, delete, data, drop, file output, rollback, commit.
  void cmdJOB_Click(int index);

  // The WHERE clause of the filter rows (" where …"), "" when no row filters.
  QString fWhere();
  // What every consumer appends to its statement head: fWhere followed by txtAddWhere.
  QString FullFilter();
  // Fills the target list with the tables holding every key column.
  void SearchTablesByKeys();
  // Fills the target list with the tables holding the column name.
  void SearchTablesByColumn(const QString& name);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

private:
  void buildTopBand(QWidget* central);
  void buildGrids(QWidget* central);
  void buildFilterAndButtons(QWidget* central);
  void buildStatusBar();
  void connectToolBar();
  void applyStoredGeometry();
  void readOracleHome();
  void readPrintFont();
  void logonFromCommandLine();
  void showLogonCaption();
  // What both logon paths do around the attempt: the caption first, then the demo instance.
  LogonHooks logonHooks();

  void connectBrowser();
  void writeGridHeadings();
  void disableTableJobs();
  void chkTabNM_Click();
  void chkFldNM_Click();
  void cmdKey_Click();
  void cmdBack_Click();
  void cmdSearch_Click();
  void pickValue(int row, QLineEdit* box);
  // Empties targets and results, then, when searching is switched on, lists the tables holding
  // every one of columns.
  void searchTables(const QStringList& columns);
  void fillTargets(const QString& sql);
  void updateJobButtons();
  // What the job buttons work on, read from the controls once per press.
  JobPlan takePlan();
  QList<JobFilterRow> filterRows();
  QString countColumn();
  void showDataOf(const JobPlan& plan, JobContext& context, std::optional<HourGlass>& wait);
  void showLastSql();
  // Prints the result list on one page, with the connection and the filter, where the user
  // chooses in the print dialog.
  void cmdPrint_Click();
  void removeWithProgress(int index, const JobPlan& plan, JobContext& context);
  // The rollback and commit buttons: on exactly while this window's deletes wait for a decision.
  void setTransactionPending(bool pending);
  void selectAllTargets(bool selected);
  void appendDroppedName();

  void CmdLogon_Click();
  void cmdDefaultSize_Click();
  void showVersionMessage();
  // The version window.
  void cmdVer_Click();
  // The options: launcher entries and name-master names.
  void cmdOpt_Click();
  void buildLaunchers(QWidget* central);
  // The connection handed to launched programs and clones.
  Logon currentLogon() const;
  void startClone();
  // The session monitor.
  void showSessions();
  // The manual beside the program, in the desktop's browser.
  void openManual();
  void openDateTimeSettings();
  // Settles work pending in this window before the session goes; false when the user cancels.
  bool settlePendingWork();

  BDBSWEEP& m_state;
  Services& m_services;

  QPushButton* m_cmdLogon = nullptr;
  QPushButton* m_cmdDefaultSize = nullptr;
  QCheckBox* m_chkTabNM = nullptr;
  QCheckBox* m_chkFldNM = nullptr;
  QLabel* m_lblOra = nullptr;
  QLabel* m_label3 = nullptr;
  FlexGrid* m_grdTable = nullptr;
  FlexGrid* m_grdFIELD = nullptr;
  FlexGrid* m_grdKey = nullptr;
  FlexGrid* m_grdCount = nullptr;
  ResultList* m_results = nullptr;
  QListWidget* m_lstTable = nullptr;
  FilterPanel* m_frmWhere = nullptr;
  QPushButton* m_cmdKey = nullptr;
  QPushButton* m_cmdBack = nullptr;
  PopPop* m_popPop = nullptr;
  QLineEdit* m_txtAddWhere = nullptr;
  QCheckBox* m_chkLstTable = nullptr;
  QPushButton* m_cmdSearch = nullptr;
  std::array<QPushButton*, 3> m_cmdAND{};
  std::array<QPushButton*, 7> m_cmdJOB{};
  QPushButton* m_cmdOpt = nullptr;
  QPushButton* m_cmdPrint = nullptr;
  QPushButton* m_cmdVer = nullptr;
  QPushButton* m_cmdEnd = nullptr;
  LauncherButtons* m_launchers = nullptr;
  std::array<StatusPanel*, 5> m_panels{};
  MainToolBar* m_tbar = nullptr;
  BrowserGrids* m_browser = nullptr;
  QTimer* m_timer1 = nullptr;
  std::unique_ptr<clsPrinter> m_printer;
  bool m_ticking = false;
  bool m_jobRunning = false;

  // Layout values in twips, taken at design size before the stored geometry applies.
  int m_designWidth = 0;
  int m_designHeight = 0;
  int m_designGridHeight = 0;  // grdTable and grdFIELD
  int m_designListHeight = 0;  // lstTable
  int m_designCountHeight = 0; // grdCount
  int m_keyGridHeight = 0;     // grdKey and frmWhere
  int m_designU = 0;
  int m_u = 0;
};
