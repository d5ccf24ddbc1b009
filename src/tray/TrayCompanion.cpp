#include "tray/TrayCompanion.h"

#include "services/ProcessLauncher.h"

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

TrayCompanion::TrayCompanion(ProcessLauncher& launcher, QString programFolder, QObject* parent)
    : QObject(parent), m_launcher(launcher), m_programFolder(std::move(programFolder)), m_menu(new QMenu),
      m_start(m_menu->addAction(QStringLiteral("DBSWEEP起動"))), m_quit(nullptr),
      m_icon(new QSystemTrayIcon(trayIcon(), this)) {
  m_start->setObjectName(QStringLiteral("mnuStart"));
  m_menu->addSeparator();
  m_quit = m_menu->addAction(QStringLiteral("終了"));
  m_quit->setObjectName(QStringLiteral("mnuQuit"));
  m_icon->setToolTip(QStringLiteral("常駐DBSWEEP"));
  m_icon->setContextMenu(m_menu);
  connect(m_start, &QAction::triggered, this, &TrayCompanion::startDbsweep);
  connect(m_quit, &QAction::triggered, qApp, &QCoreApplication::quit);
  // A plain click on the icon is the quickest way to the program.
  connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
      startDbsweep();
  });
}

TrayCompanion::~TrayCompanion() { delete m_menu; }

void TrayCompanion::show() { m_icon->show(); }

void TrayCompanion::startDbsweep() {
  const QString program = m_programFolder + QStringLiteral("/dbsweep");
  if (!m_launcher.start(program, {}, ProcessLauncher::WindowState::Normal))
    m_icon->showMessage(QStringLiteral("DBSWEEP"),
                        QStringLiteral("DBSWEEPが") + m_programFolder +
                            QStringLiteral("に見つからないため、起動出来ません"),
                        QSystemTrayIcon::Warning);
}
