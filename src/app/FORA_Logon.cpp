#include "app/FORA_Logon.h"

#include "app/ConnectOracle.h"
#include "app/HostList.h"
#include "app/LastLogon.h"
#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "db/OraSession.h"
#include "services/AppEnvironment.h"
#include "services/MessageBoxes.h"
#include "services/Services.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

bool isEnter(const QEvent* event) {
  if (event->type() != QEvent::KeyPress)
    return false;
  const int key = static_cast<const QKeyEvent*>(event)->key();
  return key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

FORA_Logon::FORA_Logon(BDBSWEEP& state, Services& services, LogonHooks hooks, QWidget* parent)
    : QDialog(parent), m_state(state), m_services(services), m_hooks(std::move(hooks)) {
  setObjectName(QStringLiteral("FORA_Logon"));
  setWindowTitle(QStringLiteral("Oracle ﾛｸﾞｵﾝ"));
  setModal(true);

  fraStep3 = new QGroupBox(QStringLiteral("接続に使用する値"), this);
  fraStep3->setObjectName(QStringLiteral("fraStep3"));
  txtUID = new QLineEdit(fraStep3);
  txtUID->setObjectName(QStringLiteral("txtUID"));
  txtPWD = new QLineEdit(fraStep3);
  txtPWD->setObjectName(QStringLiteral("txtPWD"));
  txtPWD->setEchoMode(QLineEdit::Password);
  // One "*" per character, whatever the style would draw.
  txtPWD->setStyleSheet(QStringLiteral("QLineEdit { lineedit-password-character: 42; }"));
  cmbHost = new QComboBox(fraStep3);
  cmbHost->setObjectName(QStringLiteral("cmbHost"));
  cmbHost->setEditable(true);
  cmbHost->setInsertPolicy(QComboBox::NoInsert);
  cmbHost->setMinimumContentsLength(24);

  auto* grid = new QGridLayout(fraStep3);
  const QList<QPair<QString, QWidget*>> rows = {{QStringLiteral("UserID(&U):"), txtUID},
                                                {QStringLiteral("Password(&P):"), txtPWD},
                                                {QStringLiteral("HostName(&B):"), cmbHost}};
  for (int i = 0; i < rows.size(); ++i) {
    auto* label = new QLabel(rows[i].first, fraStep3);
    label->setObjectName(QStringLiteral("lblStep3_%1").arg(i));
    label->setBuddy(rows[i].second);
    grid->addWidget(label, i, 0);
    grid->addWidget(rows[i].second, i, 1);
  }

  cmdOK = new QPushButton(QStringLiteral("OK(&O)"), this);
  cmdOK->setObjectName(QStringLiteral("cmdOK"));
  cmdCancel = new QPushButton(QStringLiteral("ｷｬﾝｾﾙ"), this);
  cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
  // Enter walks through the fields, so no button may take it as the dialog's default; on a
  // focused button Enter presses that button (see eventFilter).
  for (QPushButton* button : {cmdOK, cmdCancel}) {
    button->setAutoDefault(false);
    button->setDefault(false);
  }
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdOK);
  buttons->addWidget(cmdCancel);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(fraStep3);
  layout->addLayout(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);

  setTabOrder(txtUID, txtPWD);
  setTabOrder(txtPWD, cmbHost);
  setTabOrder(cmbHost, cmdOK);
  setTabOrder(cmdOK, cmdCancel);
  // An editable combo box keeps the focus itself and hands keys and focus to its line edit.
  for (QWidget* w : {static_cast<QWidget*>(txtUID), static_cast<QWidget*>(txtPWD), static_cast<QWidget*>(cmbHost),
                     static_cast<QWidget*>(cmdOK), static_cast<QWidget*>(cmdCancel)})
    w->installEventFilter(this);

  connect(cmdOK, &QPushButton::clicked, this, &FORA_Logon::cmdOK_Click);
  connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

void FORA_Logon::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  // A window restored from the task bar is not a new showing.
  if (!event->spontaneous())
    load();
}

void FORA_Logon::load() {
  cmbHost->clear();
  cmbHost->addItems(LoadHostList(m_state.gOracleHome, m_services.env.tnsAdmin, m_services.env.db.dataFolder));

  // After a logon in this process the dialog offers that logon again, even a failed one.
  if (!m_state.gHost.isEmpty()) {
    cmbHost->setEditText(m_state.gHost);
    txtUID->setText(m_state.gUser);
    txtPWD->setText(m_state.gPassword);
    return;
  }
  if (cmbHost->count() > 0)
    cmbHost->setCurrentIndex(0);
  const Logon last = ReadLastLogon(*m_state.gRegistry);
  txtUID->setText(last.user);
  txtPWD->setText(last.password);
  cmbHost->setEditText(last.host);
}

bool FORA_Logon::eventFilter(QObject* watched, QEvent* event) {
  const bool isField = watched == txtUID || watched == txtPWD || watched == cmbHost;
  if (isField && event->type() == QEvent::FocusIn) {
    QLineEdit* edit = watched == cmbHost ? cmbHost->lineEdit() : static_cast<QLineEdit*>(watched);
    edit->selectAll();
    // A click moves the cursor after the focus arrives; select again once it has.
    if (static_cast<QFocusEvent*>(event)->reason() == Qt::MouseFocusReason)
      QTimer::singleShot(0, edit, &QLineEdit::selectAll);
  } else if (isEnter(event)) {
    if (isField)
      focusNextChild();
    else
      static_cast<QPushButton*>(watched)->click();
    return true;
  }
  return QDialog::eventFilter(watched, event);
}

void FORA_Logon::cmdOK_Click() {
  m_state.gHost = cmbHost->currentText();
  m_state.gUser = txtUID->text();
  m_state.gPassword = txtPWD->text();
  if (!ConnectOracle(m_state, m_services.boxes, m_services.env.db, m_hooks)) {
    m_services.boxes.show(QStringLiteral("サーバーの接続に失敗しました。"), QStringLiteral("エラー"),
                          MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Critical);
    reject();
    return;
  }
  m_state.gOo4oVersionText = QStringLiteral("OO4O　Ver:") + m_state.gSession->OipVersionNumber();
  m_state.gOracleVersionText = QStringLiteral("ORCLE Ver:") + m_state.gDatabase->RDBMSVersion();
  WriteLastLogon(*m_state.gRegistry, {txtUID->text(), m_state.gPassword, cmbHost->currentText()});
  m_state.gCurTableID = QString();
  accept();
}
