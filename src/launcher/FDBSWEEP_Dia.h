#pragma once

#include <QDialog>

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
struct Services;
struct BDBSWEEP;

// The options: the ten entries of the external program launcher (caption, program, and how the
// connection is handed over) and the names of the name-master tables. Written only by OK.
class FDBSWEEP_Dia final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_Dia)

public:
  FDBSWEEP_Dia(BDBSWEEP& state, Services& services, QWidget* parent = nullptr);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  struct Entry {
    QLineEdit* txtTitle;
    QLineEdit* txtName;
    QPushButton* cmdView;
    QLabel* Icon1;
    QComboBox* cmbPara;
  };
  QWidget* buildEntries();
  QWidget* buildNameMasters();
  void load();
  void showIcon(int i);
  void cmdView_Click(int i);
  void OKButton_Click();

  BDBSWEEP& m_state;
  Services& m_services;
  std::array<Entry, 10> m_entries{};
  QLineEdit* m_txtTBLM = nullptr;
  QLineEdit* m_txtTBLID = nullptr;
  QLineEdit* m_txtTBLNM = nullptr;
  QLineEdit* m_txtCLMM = nullptr;
  QLineEdit* m_txtCLMID = nullptr;
  QLineEdit* m_txtCLMNM = nullptr;
};
