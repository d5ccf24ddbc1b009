#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

// Asks for one column ID to search the tables by. What was typed ends up in columnName (the
// caller's gColSearchName), as typed; a dialog left with Escape or its close box leaves it empty.
class FORA_COL final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FORA_COL)

public:
  explicit FORA_COL(QString& columnName, QWidget* parent = nullptr);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QString& m_columnName;
  QLineEdit* m_txtColNm;
  QPushButton* m_cmdGo;
};
