#pragma once

#include <QMainWindow>
#include <QPointer>

#include <array>
#include <memory>

class BrowserGrids;
class clsPrinter;
class FDBSWEEP_Idx;
class FilterPanel;
class LauncherButtons;
struct Logon;
class FlexGrid;
class PopPop;
class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class WindowFrame;
struct BDBSWEEP;
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
  void readOracleHome();
  void readPrintFont();
  void logonFromCommandLine();
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
  // Prints the result list with the filter and the extra condition.
  void cmdPrint_Click();
  void selectAllTargets(bool selected);
  void appendDroppedName();
  // Opens the index browser on the table dropped on lblIdxDrop, or brings it to the front.
  void showIndexBrowser();

  void CmdLogon_Click();
  // The launcher column beside the result list, mirrored in the toolbar menus of both windows.
  void buildLaunchers(QWidget* central);
  // Lets frame's launcher menu, clone entry and options dialog act on this window's launcher.
  void serveLaunchers(WindowFrame* frame);
  void loadLaunchers();
  // The connection handed to launched programs and clones.
  Logon currentLogon() const;
  void startClone();

  BDBSWEEP& m_state;
  Services& m_services;

  WindowFrame* m_frame = nullptr;
  QPushButton* m_cmdLogon = nullptr;
  QCheckBox* m_chkTabNM = nullptr;
  QCheckBox* m_chkFldNM = nullptr;
  QLabel* m_label3 = nullptr;
  // The drop label for the index browser, and its caption beside it.
  QLabel* m_lblIdxDrop = nullptr;
  QLabel* m_label1 = nullptr;
  QPointer<FDBSWEEP_Idx> m_idx;
  FlexGrid* m_grdTable = nullptr;
  FlexGrid* m_grdFIELD = nullptr;
  FlexGrid* m_grdKey = nullptr;
  FlexGrid* m_grdCount = nullptr;
  QListWidget* m_lstTable = nullptr;
  FilterPanel* m_frmWhere = nullptr;
  QPushButton* m_cmdKey = nullptr;
  QPushButton* m_cmdBack = nullptr;
  PopPop* m_popPop = nullptr;
  QLineEdit* m_txtAddWhere = nullptr;
  QCheckBox* m_chkLstTable = nullptr;
  QPushButton* m_cmdSearch = nullptr;
  std::array<QPushButton*, 3> m_cmdAND{};
  QPushButton* m_cmdOpt = nullptr;
  QPushButton* m_cmdPrint = nullptr;
  QPushButton* m_cmdVer = nullptr;
  LauncherButtons* m_launchers = nullptr;
  BrowserGrids* m_browser = nullptr;
  std::unique_ptr<clsPrinter> m_printer;

  // Layout values in twips, taken at design size before the stored geometry applies.
  int m_designGridHeight = 0;  // grdTable and grdFIELD
  int m_designListHeight = 0;  // lstTable
  int m_designCountHeight = 0; // grdCount
  int m_keyGridHeight = 0;     // grdKey and frmWhere
};
