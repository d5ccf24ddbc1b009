#include "app/WindowFrame.h"

#include "about/FDBSWEEP_Ver.h"
#include "app/FrameTexts.h"
#include "app/MainToolBar.h"
#include "common/BDBSWEEP.h"
#include "db/OraError.h"
#include "db/OraSession.h"
#include "jobs/PendingTransaction.h"
#include "jobs/ResultList.h"
#include "launcher/FDBSWEEP_Dia.h"
#include "launcher/TrayAutoStart.h"
#include "platform/DateTimeSettings.h"
#include "printing/ResultPrint.h"
#include "printing/clsPrinter.h"
#include "services/AppEnvironment.h"
#include "services/Clock.h"
#include "services/MessageBoxes.h"
#include "services/OraErrorBox.h"
#include "services/PrintDialog.h"
#include "services/Services.h"
#include "services/UrlOpener.h"
#include "sessions/FDBSWEEP_SS.h"
#include "settings/RegSetting.h"
#include "viewers/FDBSWEEP_SQL.h"
#include "widgets/FlexGrid.h"
#include "widgets/PopPop.h"
#include "widgets/StatusPanel.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QPrinter>
#include <QPushButton>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

#include <cmath>

namespace {

const QString JVK = QStringLiteral("JVK");

QString readSetting(BDBSWEEP& state, const QString& key, const QString& def) {
  return RegSetting(*state.gRegistry, QStringLiteral("R"), JVK, key, def);
}

QCheckBox* checkBox(QWidget* parent, const QString& name, const QString& caption) {
  auto* c = new QCheckBox(caption, parent);
  c->setObjectName(name);
  return c;
}

} // namespace

QPushButton* NamedButton(QWidget* parent, const QString& name, const QString& caption) {
  auto* b = new QPushButton(caption, parent);
  b->setObjectName(name);
  b->setAutoDefault(false);
  return b;
}

FlexGrid* NamedGrid(QWidget* parent, const QString& name, int cols) {
  auto* g = new FlexGrid(parent);
  g->setObjectName(name);
  g->setCols(cols);
  g->setRows(1);
  g->setFixedRows(1);
  return g;
}

int KeyGridHeight(const FlexGrid& keys) {
  return pixelsToTwipsY(&keys, keys.horizontalHeader()->sizeHint().height() +
                                   10 * keys.verticalHeader()->defaultSectionSize() + 2 * keys.frameWidth());
}

WindowFrame::WindowFrame(QMainWindow& window, QWidget* central, BDBSWEEP& state, Services& services, Design design)
    : QObject(&window), m_window(window), m_state(state), m_services(services), m_design(std::move(design)) {
  m_tbar = new MainToolBar(&window);
  window.addToolBar(m_tbar);
  buildControls(central);
  buildStatusBar();
  connectToolBar();
  m_timer1 = new QTimer(this);
  m_timer1->setObjectName(QStringLiteral("Timer1"));
  m_timer1->setInterval(1000);
  connect(m_timer1, &QTimer::timeout, this, &WindowFrame::tick);
  window.resize(twipsToPixelsX(&window, m_design.defaultWidth), twipsToPixelsY(&window, m_design.defaultHeight));
}

WindowFrame::~WindowFrame() = default;

void WindowFrame::buildControls(QWidget* central) {
  m_lblOra = new QLabel(central);
  m_lblOra->setObjectName(QStringLiteral("lblOra"));
  m_chkTabNM = checkBox(central, QStringLiteral("chkTabNM"), QStringLiteral("ﾃｰﾌﾞﾙID表示"));
  m_chkFldNM = checkBox(central, QStringLiteral("chkFldNM"), QStringLiteral("項目ID表示"));
  m_cmdDefaultSize = NamedButton(central, QStringLiteral("cmdDefaultSize"), QStringLiteral("ﾃﾞﾌｫﾙﾄ ｻｲｽﾞ"));
  m_cmdEnd = NamedButton(central, QStringLiteral("cmdEnd"), QStringLiteral("終了"));
  connect(m_cmdDefaultSize, &QPushButton::clicked, this, &WindowFrame::cmdDefaultSize_Click);
  connect(m_cmdEnd, &QPushButton::clicked, &m_window, &QWidget::close);

  const QList<QAction*>& jobs = m_tbar->jobs();
  for (int i = 0; i < 7; ++i) {
    m_cmdJOB[size_t(i)] = NamedButton(central, QStringLiteral("cmdJOB_%1").arg(i), jobs[i]->text());
    connect(m_cmdJOB[size_t(i)], &QPushButton::clicked, this, [this, i] { cmdJOB_Click(i); });
  }
  m_grdCount = NamedGrid(central, QStringLiteral("grdCount"), 1);
  m_results = new ResultList(m_grdCount);
  m_results->clear();
  m_popPop = new PopPop(&m_window);
  connect(m_results, &ResultList::menuRequested, this,
          [this](const QPoint& pos) { m_popPop->open(m_grdCount, false, pos); });
}

void WindowFrame::buildStatusBar() {
  const QStringList tips = {QStringLiteral("クローン"), QStringLiteral("オラクルとｏｏ４ｏのバージョンを表示"),
                            QStringLiteral("セッション情報を表示"),
                            QStringLiteral("ＳＱＬ文表示、ダブルクリックで詳細表示"), QStringLiteral("日付と時刻")};
  QStatusBar* bar = m_window.statusBar();
  bar->setObjectName(QStringLiteral("stsBar"));
  bar->setSizeGripEnabled(true);
  for (int i = 0; i < 5; ++i) {
    auto* panel = new StatusPanel(bar);
    panel->setObjectName(QStringLiteral("stsBar_%1").arg(i + 1));
    panel->setToolTip(tips[i]);
    bar->addWidget(panel, i == 3 ? 1 : 0);
    m_panels[size_t(i)] = panel;
  }
  m_panels[1]->setText(QStringLiteral("ｵﾗｸﾙVer"));
  m_panels[2]->setText(QStringLiteral("ｾｯｼｮﾝ"));
  m_panels[3]->setMinimumWidth(200);
  m_panels[4]->setMinimumWidth(
      m_panels[4]->fontMetrics().horizontalAdvance(ClockPanelText(QDateTime::currentDateTime())) + 12);
  connect(m_panels[0], &StatusPanel::Click, this, &WindowFrame::refreshRequested);
  connect(m_panels[0], &StatusPanel::DblClick, this, &WindowFrame::cloneRequested);
  connect(m_panels[1], &StatusPanel::Click, this, &WindowFrame::showVersionMessage);
  connect(m_panels[1], &StatusPanel::DblClick, this, &WindowFrame::showVersionMessage);
  connect(m_panels[2], &StatusPanel::Click, this, &WindowFrame::showSessions);
  connect(m_panels[3], &StatusPanel::Click, this, [this] { m_panels[3]->setText(m_state.gLastSql); });
  connect(m_panels[3], &StatusPanel::DblClick, this, &WindowFrame::showLastSql);
  connect(m_results, &ResultList::lineClicked, m_panels[3], &StatusPanel::setText);
  const auto openDateTime = [this] { OpenDateTimeSettings(m_services.launcher); };
  connect(m_panels[4], &StatusPanel::Click, this, openDateTime);
  connect(m_panels[4], &StatusPanel::DblClick, this, openDateTime);
}

void WindowFrame::connectToolBar() {
  connect(m_tbar->logon(), &QAction::triggered, this, &WindowFrame::refreshRequested);
  connect(m_tbar->clone(), &QAction::triggered, this, &WindowFrame::cloneRequested);
  connect(m_tbar->end(), &QAction::triggered, &m_window, &QWidget::close);
  for (int i = 0; i < 7; ++i)
    connect(m_tbar->jobs()[i], &QAction::triggered, this, [this, i] { m_cmdJOB[size_t(i)]->click(); });
  connect(m_tbar->defaultSize(), &QAction::triggered, this, &WindowFrame::cmdDefaultSize_Click);
  connect(m_tbar->printResult(), &QAction::triggered, this, &WindowFrame::printRequested);
  connect(m_tbar->version(), &QAction::triggered, this, &WindowFrame::showVersionWindow);
  connect(m_tbar->help(), &QAction::triggered, this, &WindowFrame::openManual);
  connect(m_tbar->options(), &QAction::triggered, this, &WindowFrame::showOptions);
  for (QAction* resident : {m_tbar->residentOn(), m_tbar->residentOff()}) {
    const QString mode = resident == m_tbar->residentOn() ? QStringLiteral("ON") : QStringLiteral("OFF");
    connect(resident, &QAction::triggered, this, [this, mode] {
      SetTrayAutoStart(mode, *m_state.gRegistry, m_services.launcher, m_services.boxes,
                       m_services.env.db.programFolder);
    });
  }
}

int WindowFrame::designGridHeight() const {
  const int bars = m_tbar->sizeHint().height() + m_window.statusBar()->sizeHint().height();
  return m_design.defaultHeight - pixelsToTwipsY(&m_window, bars) - WindowDesign::GridsTop - WindowDesign::Margin;
}

void WindowFrame::load() {
  m_designU = m_design.designU;
  m_u = m_designU;
  applyStoredGeometry();
  m_chkTabNM->setChecked(readSetting(m_state, QStringLiteral("TableID"), QStringLiteral("1")) == u"1");
  m_chkFldNM->setChecked(readSetting(m_state, QStringLiteral("FieldID"), QStringLiteral("1")) == u"1");
  for (QPushButton* job : m_cmdJOB) {
    job->setVisible(true);
    job->setEnabled(false);
  }
  m_panels[0]->setText(QStringLiteral("Ver.") + ProgramVersionNumbers());
  showLogonCaption();
  tick();
  m_timer1->start();
}

void WindowFrame::applyStoredGeometry() {
  const auto twips = [this](const QString& key, int def) {
    return int(std::lround(readSetting(m_state, key + m_design.geometrySuffix, QString::number(def)).toDouble()));
  };
  const int left = twips(QStringLiteral("FormLeft"), 0);
  const int top = twips(QStringLiteral("FormTop"), 0);
  const int width = twips(QStringLiteral("FormWidth"), m_design.defaultWidth);
  const int height = twips(QStringLiteral("FormHeight"), m_design.defaultHeight);
  m_window.move(twipsToPixelsX(&m_window, left), twipsToPixelsY(&m_window, top));
  m_window.resize(twipsToPixelsX(&m_window, width), twipsToPixelsY(&m_window, height));
}

bool WindowFrame::saveOnClose() {
  if (m_window.isMinimized() || m_window.isMaximized())
    return false;
  const auto write = [this](const QString& key, const QString& value) {
    RegSetting(*m_state.gRegistry, QStringLiteral("W"), JVK, key, value);
  };
  const QString& suffix = m_design.geometrySuffix;
  write(QStringLiteral("FormLeft") + suffix, QString::number(pixelsToTwipsX(&m_window, m_window.x())));
  write(QStringLiteral("FormTop") + suffix, QString::number(pixelsToTwipsY(&m_window, m_window.y())));
  write(QStringLiteral("FormWidth") + suffix, QString::number(pixelsToTwipsX(&m_window, m_window.width())));
  write(QStringLiteral("FormHeight") + suffix, QString::number(pixelsToTwipsY(&m_window, m_window.height())));
  write(QStringLiteral("TableID"), m_chkTabNM->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
  write(QStringLiteral("FieldID"), m_chkFldNM->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
  return true;
}

bool WindowFrame::followResize(const std::vector<std::pair<QWidget*, int>>& designHeights) {
  if (m_designU <= 0 || m_window.isMinimized())
    return false;
  const int widthTwips = pixelsToTwipsX(&m_window, m_window.width());
  const int dh = pixelsToTwipsY(&m_window, m_window.height()) - m_design.defaultHeight;
  m_u = widthTwips > m_design.defaultWidth
            ? int(std::lround(double(m_designU) * widthTwips / m_design.defaultWidth))
            : m_designU;
  for (const auto& [widget, designHeight] : designHeights)
    widget->resize(widget->width(), twipsToPixelsY(&m_window, std::max(0, designHeight + dh)));
  return m_u > 0;
}

void WindowFrame::showLogonCaption() {
  QString caption = m_state.gLogonCaption;
  m_lblOra->setText(caption.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

void WindowFrame::tick() {
  // A settings failure shows a box, and the timer keeps ticking behind a modal box: without
  // this, every second would stack another one.
  if (m_ticking)
    return;
  const QScopedValueRollback ticking(m_ticking, true);
  m_panels[4]->setText(ClockPanelText(m_services.clock.now()));
  const QList<QAction*>& jobs = m_tbar->jobs();
  for (int i = 0; i < 7; ++i) {
    jobs[i]->setEnabled(m_cmdJOB[size_t(i)]->isEnabled());
    jobs[i]->setVisible(!m_cmdJOB[size_t(i)]->isHidden());
    jobs[i]->setText(m_cmdJOB[size_t(i)]->text());
  }
  const bool resident = TrayAutoStartRegistered(*m_state.gRegistry);
  m_tbar->residentOn()->setVisible(!resident);
  m_tbar->residentOff()->setVisible(resident);
  Q_EMIT ticked();
}

bool WindowFrame::settlePendingWork() {
  // The rollback button is enabled exactly while this window's deletes wait for a decision.
  if (!m_cmdJOB[5]->isEnabled() || !m_state.gSession)
    return true;
  try {
    if (!SettlePendingTransaction(m_services.boxes, *m_state.gSession))
      return false;
  } catch (const OraError& e) {
    // A killed or lost session has already lost its work, and no retry can bring it back: say
    // why, then let the user leave or log on again.
    ShowOraError(m_services.boxes, e);
  }
  setTransactionPending(false);
  return true;
}

void WindowFrame::setTransactionPending(bool pending) {
  m_cmdJOB[5]->setEnabled(pending);
  m_cmdJOB[6]->setEnabled(pending);
}

void WindowFrame::setTableJobsEnabled(bool enabled) {
  for (int i = 0; i <= 4; ++i)
    m_cmdJOB[size_t(i)]->setEnabled(enabled);
}

void WindowFrame::printResults(clsPrinter& printer, const QString& where) {
  const std::optional<PrintDialog::Choice> choice = m_services.printDialog.ask();
  if (!choice)
    return;
  QPrinter device(QPrinter::HighResolution);
  if (choice->outputFile.isEmpty()) {
    device.setPrinterName(choice->printerName);
  } else {
    device.setOutputFormat(QPrinter::PdfFormat);
    device.setOutputFileName(choice->outputFile);
  }
  device.setCopyCount(choice->copies);

  ResultReport report{m_state.gHost, m_state.gUser, where, {}};
  for (int r = 0; r < m_grdCount->Rows(); ++r)
    report.lines << m_grdCount->TextMatrix(r, 0);
  printer.setHDC(&device);
  const auto release = qScopeGuard([&printer] { printer.setHDC(nullptr); });
  PrintResultReport(printer, report);
}

void WindowFrame::cmdDefaultSize_Click() {
  m_window.showNormal();
  m_window.resize(twipsToPixelsX(&m_window, m_design.defaultWidth),
                  twipsToPixelsY(&m_window, m_design.defaultHeight));
}

void WindowFrame::showOptions() {
  FDBSWEEP_Dia dialog(m_state, m_services, &m_window);
  dialog.exec();
  Q_EMIT optionsClosed();
}

void WindowFrame::showVersionWindow() {
  FDBSWEEP_Ver window(m_services, {}, &m_window);
  window.exec();
}

void WindowFrame::showVersionMessage() {
  m_services.boxes.show(m_state.gOo4oVersionText + QStringLiteral("\r\n") + m_state.gOracleVersionText,
                        QStringLiteral("オラクルバージョン"), MessageBoxes::Buttons::Ok,
                        MessageBoxes::Icon::Information);
}

void WindowFrame::showSessions() {
  FDBSWEEP_SS window(m_state, m_services.boxes, m_u, m_popPop, &m_window);
  window.exec();
}

void WindowFrame::showLastSql() {
  FDBSWEEP_SQL window(m_state.gLastSql, &m_window);
  window.exec();
}

void WindowFrame::openManual() {
  const QString manual = m_services.env.db.programFolder + QStringLiteral("/manual/index.html");
  const auto refuse = [&](const QString& text) {
    m_services.boxes.show(text + QStringLiteral("\n") + QDir::toNativeSeparators(manual), QStringLiteral("DBSWEEP"),
                          MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
  };
  if (!QFileInfo::exists(manual))
    refuse(QStringLiteral("ヘルプファイルが見つかりません。"));
  else if (!m_services.urlOpener.open(QUrl::fromLocalFile(manual)))
    refuse(QStringLiteral("ヘルプを表示するブラウザを起動できません。"));
}
