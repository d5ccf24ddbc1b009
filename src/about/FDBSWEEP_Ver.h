#pragma once

#include <QDialog>

class QLabel;
class QPushButton;
struct Services;

// The program's title, version and description, a contact line that copies itself when
// clicked, and the desktop's system information tool.
class FDBSWEEP_Ver final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_Ver)

public:
  // toolFolders: where the system information tool is looked for; the PATH when empty.
  explicit FDBSWEEP_Ver(Services& services, QStringList toolFolders = {}, QWidget* parent = nullptr);

  // Starts the system information tool, or says that there is none.
  void StartSysInfo();

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  Services& m_services;
  QStringList m_toolFolders;
  QLabel* m_lblMail;
};
