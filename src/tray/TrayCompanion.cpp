#include "tray/TrayCompanion.h"

#include "app/LastLogon.h"
#include "launcher/LaunchCommand.h"
#include "launcher/LauncherSettings.h"
#include "launcher/ProgramIcon.h"
#include "services/ProcessLauncher.h"
#include "settings/RegSetting.h"

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace {

// Drawn rather than shipped as a file: a dark-blue tile with "DB", legible at tray size.
QIcon trayIcon() {
  QPixmap pixmap(64, 64);
  pixmap.fill(Qt::transparent);
  QPainter p(&pixmap);
  p.setRenderHint(QPainter::Antialiasing);
  p.setBrush(QColor(0x2f, 0x4f, 0x7f));
  p.setPen(Qt::NoPen);
  p.drawRoundedRect(QRectF(2, 2, 60, 60), 10, 10);
  QFont font = p.font();
  font.setBold(true);
  font.setPixelSize(30);
  p.setFont(font);
  p.setPen(Qt::white);
  p.drawText(pixmap.rect(), Qt::AlignCenter, QStringLiteral("DB"));
  return QIcon(pixmap);
}

} // namespace

TrayCompanion::TrayCompanion(ProcessLauncher& launcher, clsREG& registry, QString ownFolder, QObject* parent)
    : QObject(parent), m_launcher(launcher), m_registry(registry), m_ownFolder(std::move(ownFolder)),
      m_menu(new QMenu), m_start(m_menu->addAction(QStringLiteral("DBSWEEP起動"))), m_quit(nullptr),
      m_icon(new QSystemTrayIcon(trayIcon(), this)) {
  m_start->setObjectName(QStringLiteral("mnuStart"));
  m_menu->addSeparator();
  for (int i = 0; i < LauncherEntries; ++i) {
    QAction* child = m_menu->addAction(QString());
    child->setObjectName(QStringLiteral("mnuChild_%1").arg(i));
    // The companion has no connection of its own: it hands over the last logon the logon
    // dialog kept, which the next DBSWEEP would offer too.
    connect(child, &QAction::triggered, this,
            [this, i] { StartLauncherEntry(m_registry, m_launcher, i, ReadLastLogon(m_registry)); });
    m_children.append(child);
  }
  m_menu->addSeparator();
  m_quit = m_menu->addAction(QStringLiteral("終了"));
  m_quit->setObjectName(QStringLiteral("mnuQuit"));
  m_icon->setToolTip(QStringLiteral("常駐DBSWEEP"));
  m_icon->setContextMenu(m_menu);
  connect(m_start, &QAction::triggered, this, &TrayCompanion::startDbsweep);
  connect(m_quit, &QAction::triggered, qApp, &QCoreApplication::quit);
  connect(m_menu, &QMenu::aboutToShow, this, &TrayCompanion::loadLauncherEntries);
  // A plain click on the icon is the quickest way to the program.
  connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
      startDbsweep();
  });
  loadLauncherEntries();
}

TrayCompanion::~TrayCompanion() { delete m_menu; }

void TrayCompanion::show() { m_icon->show(); }

void TrayCompanion::loadLauncherEntries() {
  for (int i = 0; i < LauncherEntries; ++i) {
    const LauncherEntry entry = ReadLauncherEntry(m_registry, i);
    QAction* child = m_children[i];
    child->setVisible(LauncherEntryShown(entry.caption));
    child->setText(entry.caption);
    child->setIcon(ProgramIcon(entry.program));
  }
}

void TrayCompanion::startDbsweep() {
  const QString recorded = ReadJvkSetting(m_registry, QStringLiteral("PATH"), QStringLiteral("NONE"));
  for (const QString& folder : {recorded, m_ownFolder}) {
    if (folder != QLatin1String("NONE") && m_launcher.start(folder + QStringLiteral("/dbsweep"), {},
                                                            ProcessLauncher::WindowState::Normal))
      return;
  }
  m_icon->showMessage(QStringLiteral("DBSWEEP"),
                      QStringLiteral("DBSWEEPが") + m_ownFolder + QStringLiteral("に見つからないため、起動出来ません"),
                      QSystemTrayIcon::Warning);
}
