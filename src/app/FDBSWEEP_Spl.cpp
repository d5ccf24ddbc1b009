#include "app/FDBSWEEP_Spl.h"

#include "app/FrameTexts.h"
#include "common/BDBSWEEP.h"
#include "launcher/TrayAutoStart.h"
#include "services/AppEnvironment.h"
#include "services/MessageBoxes.h"
#include "services/Services.h"
#include "settings/RegSetting.h"

#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

FDBSWEEP_Spl::FDBSWEEP_Spl(BDBSWEEP& state, Services& services, QWidget* parent)
    : QDialog(parent, Qt::SplashScreen | Qt::FramelessWindowHint), m_state(state), m_services(services),
      m_version(new QLabel(this)), m_timer(new QTimer(this)) {
  setObjectName(QStringLiteral("FDBSWEEP_Spl"));
  setModal(true);
  setStyleSheet(QStringLiteral("QDialog#FDBSWEEP_Spl { background: white; border: 2px solid #2f4f7f; }"));
  auto* title = new QLabel(QStringLiteral("DBSWEEP"), this);
  title->setObjectName(QStringLiteral("lblTitle"));
  QFont big = title->font();
  big.setPointSize(big.pointSize() * 3);
  big.setBold(true);
  title->setFont(big);
  title->setAlignment(Qt::AlignCenter);
  auto* subtitle = new QLabel(QStringLiteral("Oracle テーブル一括処理ツール"), this);
  subtitle->setAlignment(Qt::AlignCenter);
  m_version->setObjectName(QStringLiteral("lblVersion"));
  m_version->setAlignment(Qt::AlignRight);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(32, 24, 32, 16);
  layout->addWidget(title);
  layout->addWidget(subtitle);
  layout->addSpacing(24);
  layout->addWidget(m_version);
  m_timer->setObjectName(QStringLiteral("timTimer"));
  connect(m_timer, &QTimer::timeout, this, [this] {
    m_timer->stop();
    accept();
  });
}

int FDBSWEEP_Spl::exec() {
  load();
  return QDialog::exec();
}

void FDBSWEEP_Spl::load() {
  m_version->setText(QStringLiteral("ﾊﾞｰｼﾞｮﾝ ") + ProgramVersionNumbers());
  m_timer->stop();
  clsREG& reg = *m_state.gRegistry;
  const QString folder = m_services.env.db.programFolder;
  // "PATH" is written on every start, so only the very first start finds it missing.
  if (RegSetting(reg, QStringLiteral("R"), QStringLiteral("JVK"), QStringLiteral("PATH"), QStringLiteral("NONE")) ==
          u"NONE" &&
      m_services.boxes.show(QStringLiteral("常駐DBSWEEPを使用しますか"), QStringLiteral("DBSWEEP"),
                            MessageBoxes::Buttons::YesNo, MessageBoxes::Icon::Question) == MessageBoxes::Answer::Yes)
    SetTrayAutoStart(QStringLiteral("ON"), reg, m_services.launcher, m_services.boxes, folder);
  RegSetting(reg, QStringLiteral("W"), QStringLiteral("JVK"), QStringLiteral("PATH"), folder);
  m_timer->start(1000);
}
