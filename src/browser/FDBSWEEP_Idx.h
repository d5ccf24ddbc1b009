#pragma once

#include "browser/TextTable.h"

#include <QMainWindow>

class BrowserGrids;
class FlexGrid;
class PopPop;
class QCheckBox;
class QListWidget;
class QPushButton;
class WindowFrame;
class clsPrinter;
struct BDBSWEEP;
struct JobPlan;
struct Services;

// The index browser: the constraints of the table dropped from the main window, the columns of
// one of them, keys chosen among those columns, and every index of the user holding all the keys.
// Its jobs work on the tables of the indexes selected, with no row filter, and report in its own
// result list; its deletes wait for its own rollback or commit.
class FDBSWEEP_Idx final : public QMainWindow {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_Idx)

public:
  // tables is the main window's table grid: the window shows the table in its current row.
  FDBSWEEP_Idx(BDBSWEEP& state, Services& services, FlexGrid& tables, clsPrinter& printer, QWidget* parent);
  ~FDBSWEEP_Idx() override;

  // The frame's settings and clock, then the constraints of the table.
  void load();
  // The frame, whose launcher menu and clone requests the main window serves.
  WindowFrame* frame() const { return m_frame; }

  // Lists the constraints, other than check constraints, of the table in the main window's
  // current row, and drops everything chosen on the old list.
  void LoadIndexCatalogue();
  // Shows the columns of the index in grdIndex's current row, unless they are already shown.
  void LoadIndexColumns();
  // Fills lstIndex with the indexes holding every key column.
  void SearchIndexesByKeys();
  void lstidxCntClear();
  void lstidxCntAddItem(const QString& text, const QString& code);

protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

private:
  void buildControls(QWidget* central);
  void connectBrowser();
  void writeGridHeadings();
  // The heights and the reference width for the window's size, then the layout.
  void fitToSize();
  void layoutWindow();
  // The refresh of the first toolbar entry and status panel: settles pending work, then reloads.
  void refresh();
  void chkTabNM_Click();
  void chkFldNM_Click();
  void cmdKey_Click();
  void cmdBack_Click();
  void cmdSearch_Click();
  void clearHits();
  void updateJobButtons();
  void selectAllHits(bool selected);
  // The selected indexes' tables, each once, in list order, and the first key to count.
  JobPlan takePlan();

  BDBSWEEP& m_state;
  Services& m_services;
  FlexGrid& m_tables;
  clsPrinter& m_printer;
  WindowFrame* m_frame = nullptr;
  BrowserGrids* m_browser = nullptr;
  PopPop* m_popPop = nullptr;

  FlexGrid* m_grdIndex = nullptr;
  FlexGrid* m_grdIdxFld = nullptr;
  FlexGrid* m_grdKey = nullptr;
  QListWidget* m_lstIndex = nullptr;
  QCheckBox* m_chkLstIndex = nullptr;
  QCheckBox* m_chkTabNM = nullptr;
  QCheckBox* m_chkFldNM = nullptr;
  QPushButton* m_cmdKey = nullptr;
  QPushButton* m_cmdBack = nullptr;
  QPushButton* m_cmdSearch = nullptr;

  // The hits of the last index search: index name, the text shown, the index's table.
  TextTable m_hits{3};
  QString m_curIndexID;
  QString m_curIndexName;

  // Layout values in twips, at design size.
  int m_designGridHeight = 0;
  int m_designListHeight = 0;
  int m_designCountHeight = 0;
  int m_keyGridHeight = 0;
};
