#include "about/FDBSWEEP_Ver.h"

#include "about/SystemInfoTool.h"
#include "app/FrameTexts.h"
#include "app/JVK_CmnUi.h"
#include "services/MessageBoxes.h"
#include "services/ProcessLauncher.h"
#include "services/Services.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QString Title = QStringLiteral("DBSWEEP");

} // namespace

FDBSWEEP_Ver::FDBSWEEP_Ver(Services& services, QStringList toolFolders, QWidget* parent)
    : QDialog(parent), m_services(services), m_toolFolders(std::move(toolFolders)), m_lblMail(new QLabel(this)) {
  setObjectName(QStringLiteral("FDBSWEEP_Ver"));
  setWindowTitle(Title + QStringLiteral("のﾊﾞｰｼﾞｮﾝ情報"));
  setModal(true);
  auto* lblTitle = new QLabel(Title, this);
  auto* lblVersion = new QLabel(QStringLiteral("ﾊﾞｰｼﾞｮﾝ ") + ProgramVersionNumbers(), this);
  auto* lblDes = new QLabel(QStringLiteral("オラクルデータを削除、件数カウントしたり、ランチャーも出来たり．．．"), this);
  m_lblMail->setText(QStringLiteral("お問い合わせ：DBSWEEP サポート窓口 dbsweep-support@example.jp"));
  auto* cmdSysInfo = new QPushButton(QStringLiteral("ｼｽﾃﾑ情報(&S)..."), this);
  auto* cmdOK = new QPushButton(QStringLiteral("OK"), this);
  lblTitle->setObjectName(QStringLiteral("lblTitle"));
  lblVersion->setObjectName(QStringLiteral("lblVersion"));
  lblDes->setObjectName(QStringLiteral("lblDes"));
  m_lblMail->setObjectName(QStringLiteral("lblMail"));
  cmdSysInfo->setObjectName(QStringLiteral("cmdSysInfo"));
  cmdOK->setObjectName(QStringLiteral("cmdOK"));

  QFont big = lblTitle->font();
  big.setPointSizeF(big.pointSizeF() * 1.6);
  big.setBold(true);
  lblTitle->setFont(big);
  lblDes->setWordWrap(true);
  m_lblMail->setCursor(Qt::PointingHandCursor);
  m_lblMail->setToolTip(QStringLiteral("クリックするとコピーします"));
  m_lblMail->installEventFilter(this);
  cmdOK->setDefault(true);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cmdSysInfo);
  buttons->addWidget(cmdOK);
  auto* layout = new QVBoxLayout(this);
  for (QWidget* w : {static_cast<QWidget*>(lblTitle), static_cast<QWidget*>(lblVersion),
                     static_cast<QWidget*>(lblDes), static_cast<QWidget*>(m_lblMail)})
    layout->addWidget(w);
  layout->addSpacing(12);
  layout->addLayout(buttons);
  setMinimumWidth(460);

  connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
  connect(cmdSysInfo, &QPushButton::clicked, this, &FDBSWEEP_Ver::StartSysInfo);
}

bool FDBSWEEP_Ver::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_lblMail && event->type() == QEvent::MouseButtonRelease &&
      static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
    CopyTextToClipboard(m_lblMail->text());
  return QDialog::eventFilter(watched, event);
}

void FDBSWEEP_Ver::StartSysInfo() {
  const std::optional<SystemInfoTool> tool = FindSystemInfoTool(m_toolFolders);
  if (tool && m_services.launcher.start(tool->program, tool->arguments, ProcessLauncher::WindowState::Normal))
    return;
  m_services.boxes.show(QStringLiteral("現時点ではｼｽﾃﾑ情報を使用できません"), Title, MessageBoxes::Buttons::Ok);
}
