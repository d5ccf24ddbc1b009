#pragma once

#include "export/CsvWriter.h"
#include "jobs/FileOutputJob.h"
#include "jobs/JobPlan.h"

#include <QDialog>

class FlexGrid;
class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTimer;
class StatementRunner;
struct BDBSWEEP;
struct ExportSettings;
struct Services;

// The export dialog: the tables of the file output job with their file names, where the files
// go, how fields are separated and quoted, a header line or not, and files or the clipboard.
// 実行 writes every table in turn, each table's rows off the window's thread with the row in
// progress shown in its 結果 cell, and closes the dialog.
class FORA_Select final : public QDialog, public FileOutputDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FORA_Select)

public:
  // plan gives the filter every table's query takes; statements runs the database work.
  FORA_Select(BDBSWEEP& state, Services& services, JobPlan plan, StatementRunner& statements,
              QWidget* parent = nullptr);
  ~FORA_Select() override;

  void prepare(const QList<JobTarget>& targets) override;
  void run() override { exec(); }

protected:
  void closeEvent(QCloseEvent* event) override;
  void reject() override;

private:
  void loadSettings();
  void cmdView_Click();
  void grdCSV_Click();
  void txtOutName_Change();
  void cmdGo_Click();
  // Whether the choices can be run: a separator, and for files a folder to write in.
  bool choicesRunnable(const ExportSettings& choices);
  CsvTableResult exportTable(const QString& table, const QString& fileName, const ExportSettings& choices,
                             QString& text, int row);
  void showOutcome(const QString& table, const CsvTableResult& result, const QString& path);
  // Widens a column to its text and the grid and dialog to the columns; margin in twips.
  void fitColumn(int row, int col, int margin);
  int textTwips(const QString& text) const;
  void setRunning(bool running);

  BDBSWEEP& m_state;
  Services& m_services;
  JobPlan m_plan;
  StatementRunner& m_statements;
  bool m_running = false;
  CsvEncoding m_encoding = CsvEncoding::Cp932; // read at load; only the settings store changes it

  QLineEdit* m_txtPath;
  QPushButton* m_cmdView;
  QLineEdit* m_txtOutName;
  FlexGrid* m_grdCSV;
  QRadioButton* m_option1;
  QRadioButton* m_option2;
  QRadioButton* m_option3;
  QLineEdit* m_txtSepChara;
  QLineEdit* m_txtStrSep;
  QCheckBox* m_check1;
  QCheckBox* m_chkCopy;
  QPushButton* m_cmdGo;
  QPushButton* m_command2;
  QTimer* m_progress; // shows the row being written in the running table's 結果 cell
};
