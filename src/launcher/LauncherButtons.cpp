#include "launcher/LauncherButtons.h"

#include "launcher/LaunchCommand.h"
#include "launcher/LauncherSettings.h"
#include "launcher/ProgramIcon.h"
#include "widgets/Twips.h"

#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The icon beside a launcher button's caption.
constexpr int IconTwips = 255;

} // namespace

LauncherButtons::LauncherButtons(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("fraChild"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  m_cmdClone = new QPushButton(QStringLiteral("ｸﾛｰﾝ"), this);
  m_cmdClone->setObjectName(QStringLiteral("cmdClone"));
  m_cmdClone->setToolTip(QStringLiteral("現在と同じ接続情報でDBSWEEPを起動します"));
  m_cmdClone->setAutoDefault(false);
  column->addWidget(m_cmdClone);
  connect(m_cmdClone, &QPushButton::clicked, this, &LauncherButtons::cloneClicked);
  const int icon = twipsToPixelsX(this, IconTwips);
  for (int i = 0; i < LauncherEntries; ++i) {
    auto* b = new QPushButton(this);
    b->setObjectName(QStringLiteral("cmdChild_%1").arg(i));
    b->setAutoDefault(false);
    b->setIconSize(QSize(icon, icon));
    // Left-aligned like a list: the icons line up however long the captions are.
    b->setStyleSheet(QStringLiteral("text-align: left; padding-left: 4px; padding-right: 4px;"));
    b->hide();
    column->addWidget(b);
    connect(b, &QPushButton::clicked, this, [this, i] { Q_EMIT childClicked(i); });
    m_cmdChild[size_t(i)] = b;
  }
  column->addStretch(1);
}

void LauncherButtons::LoadLauncherButtons(clsREG& registry) {
  for (int i = 0; i < LauncherEntries; ++i) {
    QPushButton* b = m_cmdChild[size_t(i)];
    const LauncherEntry entry = ReadLauncherEntry(registry, i);
    if (!LauncherEntryShown(entry.caption)) {
      b->hide();
      continue;
    }
    b->setText(entry.caption);
    b->setToolTip(entry.program);
    b->setIcon(ProgramIcon(entry.program));
    b->show();
  }
}

void LauncherButtons::attachMenu(QMenu* menu) {
  menu->clear();
  m_menuEntries.removeAll(nullptr);
  for (int i = 0; i < LauncherEntries; ++i) {
    QAction* entry = menu->addAction(QString());
    entry->setObjectName(QStringLiteral("mnuChild_%1").arg(i));
    connect(entry, &QAction::triggered, this, [this, i] { Q_EMIT childClicked(i); });
    m_menuEntries.append(entry);
  }
  mirror();
}

void LauncherButtons::mirror() {
  for (int k = 0; k < m_menuEntries.size(); ++k) {
    QAction* entry = m_menuEntries[k];
    if (!entry)
      continue;
    const QPushButton* b = m_cmdChild[size_t(k % LauncherEntries)];
    entry->setText(b->text());
    entry->setIcon(b->icon());
    entry->setVisible(!b->isHidden());
  }
}
