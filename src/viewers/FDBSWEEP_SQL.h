#pragma once

#include <QDialog>

class QPlainTextEdit;
class QPushButton;

// The full text of the last statement the program prepared, to read whole or to copy and run
// elsewhere. The opener hands over the text each time; the window keeps nothing between showings.
class FDBSWEEP_SQL final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_SQL)

public:
  explicit FDBSWEEP_SQL(const QString& sql, QWidget* parent = nullptr);

private:
  void cmdCopy_Click();

  QPlainTextEdit* m_txtSql;
  QPushButton* m_cmdCopy;
  QPushButton* m_cmdEnd;
};
