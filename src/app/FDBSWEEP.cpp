#include "app/FDBSWEEP.h"

#include "about/FDBSWEEP_Ver.h"
#include "app/ConnectOracle.h"
#include "app/DemoBuildProgress.h"
#include "app/FDBSWEEP_Spl.h"
#include "app/FORA_Logon.h"
#include "app/FrameTexts.h"
#include "app/MainToolBar.h"
#include "browser/BrowserGrids.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "db/OraError.h"
#include "db/OraSession.h"
#include "filter/FilterPanel.h"
#include "jobs/PendingTransaction.h"
#include "jobs/ResultList.h"
#include "launcher/FDBSWEEP_Dia.h"
#include "launcher/LaunchCommand.h"
#include "launcher/LauncherButtons.h"
#include "launcher/TrayAutoStart.h"
#include "platform/DateTimeSettings.h"
#include "printing/clsPrinter.h"
#include "services/AppEnvironment.h"
#include "services/Clock.h"
#include "services/MessageBoxes.h"
#include "services/OraErrorBox.h"
#include "services/Services.h"
#include "services/UrlOpener.h"
#include "sessions/FDBSWEEP_SS.h"
#include "settings/RegSetting.h"
#include "widgets/FlexGrid.h"
#include "widgets/StatusPanel.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

// The size a first start opens with, and the default-size button's width.
constexpr int DefaultWidthTwips = 12015;
constexpr int DefaultHeightTwips = 9840;
// The reference column width the grids are designed for.
constexpr int DesignU = 800;
// Vertical design: the band of logon controls, then the grids.
constexpr int GridsTop = 600;
constexpr int Margin = 60;
constexpr int KeyButtonHeight = 300;
constexpr int RowHeight = 315;
constexpr int ButtonHeight = 375;
constexpr int ButtonWidth = 1100;
constexpr int FilterLabelWidth = 450;
// The launcher column: an icon and eight full-width letters.
constexpr int LauncherWidth = 2100;

const QString JVK = QStringLiteral("JVK");

QString readSetting(BDBSWEEP& state, const QString& area, const QString& key, const QString& def) {
  return RegSetting(*state.gRegistry, QStringLiteral("R"), area, key, def);
}
QString readSetting(BDBSWEEP& state, const QString& key, const QString& def) {
  return readSetting(state, JVK, key, def);
}

QPushButton* button(QWidget* parent, const QString& name, const QString& caption) {
  auto* b = new QPushButton(caption, parent);
  b->setObjectName(name);
  b->setAutoDefault(false);
  return b;
}

QLabel* label(QWidget* parent, const QString& name, const QString& text = QString()) {
  auto* l = new QLabel(text, parent);
  l->setObjectName(name);
  return l;
}

} // namespace

FDBSWEEP::FDBSWEEP(BDBSWEEP& state, Services& services, QWidget* parent)
    : QMainWindow(parent), m_state(state), m_services(services) {
  setObjectName(QStringLiteral("FDBSWEEP"));
  setWindowTitle(QStringLiteral("DBSWEEP"));
  m_tbar = new MainToolBar(this);
  addToolBar(m_tbar);
  auto* central = new QWidget(this);
  central->setObjectName(QStringLiteral("central"));
  setCentralWidget(central);
  buildTopBand(central);
  buildGrids(central);
  buildFilterAndButtons(central);
  buildLaunchers(central);
  connectBrowser();
  buildStatusBar();
  connectToolBar();
  m_timer1 = new QTimer(this);
  m_timer1->setObjectName(QStringLiteral("Timer1"));
  m_timer1->setInterval(1000);
  connect(m_timer1, &QTimer::timeout, this, &FDBSWEEP::timerTick);
  resize(twipsToPixelsX(this, DefaultWidthTwips), twipsToPixelsY(this, DefaultHeightTwips));
}

FDBSWEEP::~FDBSWEEP() = default;

void FDBSWEEP::buildTopBand(QWidget* central) {
  m_cmdLogon = button(central, QStringLiteral("CmdLogon"), QStringLiteral("接続"));
  m_cmdLogon->setToolTip(QStringLiteral("接続します"));
  m_lblOra = label(central, QStringLiteral("lblOra"));
  m_label3 = label(central, QStringLiteral("Label3"));
  m_chkTabNM = new QCheckBox(QStringLiteral("ﾃｰﾌﾞﾙID表示"), central);
  m_chkTabNM->setObjectName(QStringLiteral("chkTabNM"));
  m_chkFldNM = new QCheckBox(QStringLiteral("項目ID表示"), central);
  m_chkFldNM->setObjectName(QStringLiteral("chkFldNM"));
  m_cmdDefaultSize = button(central, QStringLiteral("cmdDefaultSize"), QStringLiteral("ﾃﾞﾌｫﾙﾄ ｻｲｽﾞ"));
  const auto place = [this](QWidget* w, int x, int y, int width, int height) {
    w->setGeometry(twipsToPixelsX(this, x), twipsToPixelsY(this, y), twipsToPixelsX(this, width),
                   twipsToPixelsY(this, height));
  };
  place(m_cmdLogon, Margin, 60, 900, 450);
  place(m_lblOra, 1020, 30, 2700, 510);
  place(m_label3, 3780, 30, 3600, 510);
  place(m_chkTabNM, 7440, 20, 1800, 270);
  place(m_chkFldNM, 7440, 290, 1800, 270);
  place(m_cmdDefaultSize, 9300, 60, 1500, 450);
  connect(m_cmdLogon, &QPushButton::clicked, this, &FDBSWEEP::CmdLogon_Click);
  connect(m_cmdDefaultSize, &QPushButton::clicked, this, &FDBSWEEP::cmdDefaultSize_Click);
}

void FDBSWEEP::buildGrids(QWidget* central) {
  const auto grid = [central](const QString& name, int cols) {
    auto* g = new FlexGrid(central);
    g->setObjectName(name);
    g->setCols(cols);
    g->setRows(1);
    g->setFixedRows(1);
    return g;
  };
  m_grdTable = grid(QStringLiteral("grdTable"), 1);
  m_grdFIELD = grid(QStringLiteral("grdFIELD"), 5);
  m_grdKey = grid(QStringLiteral("grdKey"), 9);
  m_grdCount = grid(QStringLiteral("grdCount"), 1);
  m_results = new ResultList(m_grdCount);
  m_lstTable = new QListWidget(central);
  m_lstTable->setObjectName(QStringLiteral("lstTable"));
  m_lstTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
  m_lstTable->setToolTip(QStringLiteral("処理対象のﾃｰﾌﾞﾙを選択します"));
}

void FDBSWEEP::buildFilterAndButtons(QWidget* central) {
  m_frmWhere = new FilterPanel(central);
  m_cmdKey = button(central, QStringLiteral("cmdKey"), QStringLiteral("→"));
  m_cmdKey->setToolTip(QStringLiteral("選択した項目をキーに追加します"));
  m_cmdBack = button(central, QStringLiteral("cmdBack"), QStringLiteral("←"));
  m_cmdBack->setToolTip(QStringLiteral("選択したキーを外します"));
  m_txtAddWhere = new QLineEdit(central);
  m_txtAddWhere->setObjectName(QStringLiteral("txtAddWhere"));
  m_txtAddWhere->setToolTip(QStringLiteral("WHERE句の後ろに連結する条件の入力欄です"));
  m_chkLstTable = new QCheckBox(QStringLiteral("即時ﾃｰﾌﾞﾙ検索"), central);
  m_chkLstTable->setObjectName(QStringLiteral("chkLstTable"));
  // On from the start: the first key chosen fills the target list at once, as a new user expects.
  m_chkLstTable->setChecked(true);
  m_cmdSearch = button(central, QStringLiteral("cmdSearch"), QStringLiteral("検索"));
  const QStringList andCaptions = {QStringLiteral("ｸﾘｱ"), QStringLiteral("AND"), QStringLiteral("OR")};
  for (int i = 0; i < 3; ++i)
    m_cmdAND[size_t(i)] = button(central, QStringLiteral("cmdAND_%1").arg(i), andCaptions[i]);
  const QList<QAction*>& jobs = m_tbar->jobs();
  for (int i = 0; i < 7; ++i) {
    m_cmdJOB[size_t(i)] = button(central, QStringLiteral("cmdJOB_%1").arg(i), jobs[i]->text());
    connect(m_cmdJOB[size_t(i)], &QPushButton::clicked, this, [this, i] { cmdJOB_Click(i); });
  }
  m_cmdOpt = button(central, QStringLiteral("cmdOpt"), QStringLiteral("ｵﾌﾟｼｮﾝ"));
  m_cmdPrint = button(central, QStringLiteral("cmdPrint"), QStringLiteral("結果印刷"));
  m_cmdVer = button(central, QStringLiteral("cmdVer"), QStringLiteral("バージョン"));
  m_cmdEnd = button(central, QStringLiteral("cmdEnd"), QStringLiteral("終了"));
  connect(m_cmdEnd, &QPushButton::clicked, this, &QWidget::close);
  connect(m_cmdPrint, &QPushButton::clicked, this, &FDBSWEEP::cmdPrint_Click);
  connect(m_cmdVer, &QPushButton::clicked, this, &FDBSWEEP::cmdVer_Click);
  connect(m_cmdOpt, &QPushButton::clicked, this, &FDBSWEEP::cmdOpt_Click);
}

void FDBSWEEP::buildLaunchers(QWidget* central) {
  m_launchers = new LauncherButtons(central);
  m_launchers->attachMenu(m_tbar->launcherMenu());
  connect(m_launchers, &LauncherButtons::childClicked, this, [this](int i) {
    StartLauncherEntry(*m_state.gRegistry, m_services.launcher, i, currentLogon());
  });
  connect(m_launchers, &LauncherButtons::cloneClicked, this, &FDBSWEEP::startClone);
  connect(m_tbar->clone(), &QAction::triggered, this, &FDBSWEEP::startClone);
}

Logon FDBSWEEP::currentLogon() const { return {m_state.gUser, m_state.gPassword, m_state.gHost}; }

void FDBSWEEP::startClone() { StartClone(m_services.launcher, m_services.env.db.programFolder, currentLogon()); }

void FDBSWEEP::buildStatusBar() {
  const QStringList tips = {QStringLiteral("クローン"), QStringLiteral("オラクルとｏｏ４ｏのバージョンを表示"),
                            QStringLiteral("セッション情報を表示"),
                            QStringLiteral("ＳＱＬ文表示、ダブルクリックで詳細表示"), QStringLiteral("日付と時刻")};
  statusBar()->setObjectName(QStringLiteral("stsBar"));
  statusBar()->setSizeGripEnabled(true);
  for (int i = 0; i < 5; ++i) {
    auto* panel = new StatusPanel(statusBar());
    panel->setObjectName(QStringLiteral("stsBar_%1").arg(i + 1));
    panel->setToolTip(tips[i]);
    statusBar()->addWidget(panel, i == 3 ? 1 : 0);
    m_panels[size_t(i)] = panel;
  }
  m_panels[1]->setText(QStringLiteral("ｵﾗｸﾙVer"));
  m_panels[2]->setText(QStringLiteral("ｾｯｼｮﾝ"));
  m_panels[3]->setMinimumWidth(200);
  m_panels[4]->setMinimumWidth(
      m_panels[4]->fontMetrics().horizontalAdvance(ClockPanelText(QDateTime::currentDateTime())) + 12);
  connect(m_panels[0], &StatusPanel::Click, this, &FDBSWEEP::CmdLogon_Click);
  connect(m_panels[0], &StatusPanel::DblClick, this, &FDBSWEEP::startClone);
  connect(m_panels[1], &StatusPanel::Click, this, &FDBSWEEP::showVersionMessage);
  connect(m_panels[1], &StatusPanel::DblClick, this, &FDBSWEEP::showVersionMessage);
  connect(m_panels[2], &StatusPanel::Click, this, &FDBSWEEP::showSessions);
  connect(m_panels[3], &StatusPanel::Click, this, [this] { m_panels[3]->setText(m_state.gLastSql); });
  connect(m_panels[3], &StatusPanel::DblClick, this, &FDBSWEEP::showLastSql);
  connect(m_results, &ResultList::lineClicked, m_panels[3], &StatusPanel::setText);
  connect(m_panels[4], &StatusPanel::Click, this, &FDBSWEEP::openDateTimeSettings);
  connect(m_panels[4], &StatusPanel::DblClick, this, &FDBSWEEP::openDateTimeSettings);
}

void FDBSWEEP::connectToolBar() {
  connect(m_tbar->logon(), &QAction::triggered, this, &FDBSWEEP::CmdLogon_Click);
  connect(m_tbar->end(), &QAction::triggered, this, &QWidget::close);
  for (int i = 0; i < 7; ++i)
    connect(m_tbar->jobs()[i], &QAction::triggered, this, [this, i] { m_cmdJOB[size_t(i)]->click(); });
  connect(m_tbar->defaultSize(), &QAction::triggered, this, &FDBSWEEP::cmdDefaultSize_Click);
  connect(m_tbar->printResult(), &QAction::triggered, this, &FDBSWEEP::cmdPrint_Click);
  connect(m_tbar->version(), &QAction::triggered, this, &FDBSWEEP::cmdVer_Click);
  connect(m_tbar->help(), &QAction::triggered, this, &FDBSWEEP::openManual);
  connect(m_tbar->options(), &QAction::triggered, this, &FDBSWEEP::cmdOpt_Click);
  connect(m_tbar->residentOn(), &QAction::triggered, this, [this] {
    SetTrayAutoStart(QStringLiteral("ON"), *m_state.gRegistry, m_services.launcher, m_services.boxes,
                     m_services.env.db.programFolder);
  });
  connect(m_tbar->residentOff(), &QAction::triggered, this, [this] {
    SetTrayAutoStart(QStringLiteral("OFF"), *m_state.gRegistry, m_services.launcher, m_services.boxes,
                     m_services.env.db.programFolder);
  });
}

void FDBSWEEP::load() {
  m_printer = std::make_unique<clsPrinter>();
  m_state.gOracleVersionText = BDBSWEEP::NotConnectedText;
  m_state.gOo4oVersionText.clear();

  // The design measures, taken before the stored geometry changes the size.
  const int barsHeight = pixelsToTwipsY(this, m_tbar->sizeHint().height() + statusBar()->sizeHint().height());
  m_designWidth = DefaultWidthTwips;
  m_designHeight = DefaultHeightTwips;
  m_designGridHeight = DefaultHeightTwips - barsHeight - GridsTop - Margin;
  // The key grid shows all ten keys at once, so the filter rows beside it never scroll apart.
  m_keyGridHeight =
      pixelsToTwipsY(this, m_grdKey->horizontalHeader()->sizeHint().height() +
                               10 * m_grdKey->verticalHeader()->defaultSectionSize() + 2 * m_grdKey->frameWidth());
  m_designListHeight = m_designGridHeight - m_keyGridHeight - KeyButtonHeight - 2 * Margin;
  m_designCountHeight = m_designGridHeight - (m_keyGridHeight + Margin + RowHeight + 30 + 4 * (ButtonHeight + 30));
  m_designU = DesignU;
  m_u = DesignU;

  applyStoredGeometry();
  m_chkTabNM->setChecked(readSetting(m_state, QStringLiteral("TableID"), QStringLiteral("1")) == u"1");
  m_chkFldNM->setChecked(readSetting(m_state, QStringLiteral("FieldID"), QStringLiteral("1")) == u"1");
  m_state.gWindowsUser = GetWindowsUserName();
  readOracleHome();
  readPrintFont();
  // Relative paths used anywhere later resolve against the program's own folder.
  QDir::setCurrent(m_services.env.db.programFolder);

  FDBSWEEP_Spl splash(m_state, m_services, this);
  splash.exec();

  LoadNameMasters(m_state.gNameMasters, *m_state.gRegistry,
                  {m_services.env.db.programFolder, m_services.env.db.settingsFolder});
  m_cmdSearch->setEnabled(false);
  for (QPushButton* job : m_cmdJOB) {
    job->setVisible(true);
    job->setEnabled(false);
  }
  m_panels[0]->setText(QStringLiteral("Ver.") + ProgramVersionNumbers());
  m_state.gLogonCaption = QStringLiteral("User:\r\nHost:");
  showLogonCaption();
  logonFromCommandLine();
  m_launchers->LoadLauncherButtons(*m_state.gRegistry);
  timerTick();
  m_timer1->start();
}

void FDBSWEEP::applyStoredGeometry() {
  const auto twips = [this](const QString& key, const QString& def) {
    return int(std::lround(readSetting(m_state, key, def).toDouble()));
  };
  const int left = twips(QStringLiteral("FormLeft"), QStringLiteral("0"));
  const int top = twips(QStringLiteral("FormTop"), QStringLiteral("0"));
  const int width = twips(QStringLiteral("FormWidth"), QString::number(DefaultWidthTwips));
  const int height = twips(QStringLiteral("FormHeight"), QString::number(DefaultHeightTwips));
  move(twipsToPixelsX(this, left), twipsToPixelsY(this, top));
  resize(twipsToPixelsX(this, width), twipsToPixelsY(this, height));
}

void FDBSWEEP::readOracleHome() {
  const QString last = readSetting(m_state, QStringLiteral("ORA"), QStringLiteral("LAST_HOME"), QStringLiteral("None"));
  m_state.gOracleHome =
      readSetting(m_state, QStringLiteral("ORA") + last, QStringLiteral("ORACLE_HOME"), QStringLiteral("0"));
}

void FDBSWEEP::readPrintFont() {
  QFont& font = m_printer->Font();
  const auto flag = [this](const QString& key) { return readSetting(m_state, key, QStringLiteral("0")) != u"0"; };
  font.setBold(flag(QStringLiteral("Bold")));
  font.setItalic(flag(QStringLiteral("Italic")));
  font.setStrikeOut(flag(QStringLiteral("Strikethrough")));
  font.setUnderline(flag(QStringLiteral("Underline")));
  const QString name = readSetting(m_state, QStringLiteral("Name"), QString());
  if (!name.isEmpty())
    font.setFamily(name);
  // Whole points only, as the printer always used them.
  const int size = int(readSetting(m_state, QStringLiteral("Size"), QStringLiteral("9.75")).toDouble());
  if (size > 0)
    font.setPointSize(size);
}

void FDBSWEEP::logonFromCommandLine() {
  const CommandArgs& args = m_state.gCommandArgs;
  if (args.count() <= 2)
    return;
  m_state.gUser = args.word(1);
  m_state.gPassword = args.word(2);
  m_state.gHost = args.word(3);
  ConnectOracle(m_state, m_services.boxes, m_services.env.db, logonHooks());
  // Even after a failed logon: the catalogue then says for itself that it has nothing.
  if (!m_state.gHost.isEmpty())
    LoadTableCatalogue();
}

void FDBSWEEP::showLogonCaption() {
  QString caption = m_state.gLogonCaption;
  m_lblOra->setText(caption.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

LogonHooks FDBSWEEP::logonHooks() {
  return {[this] {
            showLogonCaption();
            // Painted now: the failure message that may follow is modal, and the user should
            // read the attempted user and host behind it.
            m_lblOra->repaint();
          },
          [this] { BuildDemoWithProgress(m_state.gHost, m_services.env.db, this); }};
}

void FDBSWEEP::timerTick() {
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
  m_launchers->mirror();
  const bool resident = TrayAutoStartRegistered(*m_state.gRegistry);
  m_tbar->residentOn()->setVisible(!resident);
  m_tbar->residentOff()->setVisible(resident);
  QString uptime = UptimeLabelText(m_state.gWindowsUser, m_services.clock.uptimeMs());
  m_label3->setText(uptime.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

bool FDBSWEEP::settlePendingWork() {
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

void FDBSWEEP::CmdLogon_Click() {
  if (!settlePendingWork())
    return;
  m_state.gSession.reset();
  FORA_Logon dialog(m_state, m_services, logonHooks(), this);
  dialog.exec();
  showLogonCaption();
  if (!m_state.gHost.isEmpty())
    LoadTableCatalogue();
}

void FDBSWEEP::cmdDefaultSize_Click() {
  showNormal();
  resize(twipsToPixelsX(this, DefaultWidthTwips), twipsToPixelsY(this, m_designHeight));
}

void FDBSWEEP::showSessions() {
  FDBSWEEP_SS window(m_state, m_services.boxes, m_u, m_popPop, this);
  window.exec();
}

void FDBSWEEP::cmdOpt_Click() {
  FDBSWEEP_Dia dialog(m_state, m_services, this);
  dialog.exec();
  m_launchers->LoadLauncherButtons(*m_state.gRegistry);
}

void FDBSWEEP::cmdVer_Click() {
  FDBSWEEP_Ver window(m_services, {}, this);
  window.exec();
}

void FDBSWEEP::openManual() {
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

void FDBSWEEP::showVersionMessage() {
  m_services.boxes.show(m_state.gOo4oVersionText + QStringLiteral("\r\n") + m_state.gOracleVersionText,
                        QStringLiteral("オラクルバージョン"), MessageBoxes::Buttons::Ok,
                        MessageBoxes::Icon::Information);
}

void FDBSWEEP::openDateTimeSettings() { OpenDateTimeSettings(m_services.launcher); }

void FDBSWEEP::closeEvent(QCloseEvent* event) {
  if (!settlePendingWork()) {
    event->ignore();
    return;
  }
  m_state.gSession.reset();
  event->accept();
  // A minimised or maximised window says nothing about where the user wants it next time.
  if (isMinimized() || isMaximized())
    return;
  const auto write = [this](const QString& key, const QString& value) {
    RegSetting(*m_state.gRegistry, QStringLiteral("W"), JVK, key, value);
  };
  write(QStringLiteral("FormLeft"), QString::number(pixelsToTwipsX(this, x())));
  write(QStringLiteral("FormTop"), QString::number(pixelsToTwipsY(this, y())));
  write(QStringLiteral("FormWidth"), QString::number(pixelsToTwipsX(this, width())));
  write(QStringLiteral("FormHeight"), QString::number(pixelsToTwipsY(this, height())));
  write(QStringLiteral("TableID"), m_chkTabNM->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
  write(QStringLiteral("FieldID"), m_chkFldNM->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
  // Every other window goes with the main one.
  QCoreApplication::quit();
}

bool FDBSWEEP::event(QEvent* event) {
  // Another copy may have changed the launcher entries while this window was in the background.
  if (event->type() == QEvent::WindowActivate && m_u > 0) {
    m_launchers->LoadLauncherButtons(*m_state.gRegistry);
    LayoutMainWindow();
  }
  return QMainWindow::event(event);
}

void FDBSWEEP::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  if (m_designU <= 0 || isMinimized())
    return;
  const int widthTwips = pixelsToTwipsX(this, width());
  const int dh = pixelsToTwipsY(this, height()) - m_designHeight;
  m_u = widthTwips > m_designWidth ? int(std::lround(double(m_designU) * widthTwips / m_designWidth)) : m_designU;
  const auto setHeight = [this](QWidget* w, int designHeight) {
    w->resize(w->width(), twipsToPixelsY(this, std::max(0, designHeight)));
  };
  setHeight(m_grdTable, m_designGridHeight + dh);
  setHeight(m_grdFIELD, m_designGridHeight + dh);
  setHeight(m_lstTable, m_designListHeight + dh);
  setHeight(m_grdCount, m_designCountHeight + dh);
  if (m_u > 0)
    LayoutMainWindow();
}

void FDBSWEEP::LayoutMainWindow() {
  const int u = m_u;
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  const auto py = [this](int twips) { return twipsToPixelsY(this, twips); };
  const auto place = [&](QWidget* w, int x, int y, int width, int height) {
    w->setGeometry(px(x), py(y), px(width), py(height));
  };
  const auto keepHeight = [&](QWidget* w, int x, int y, int width) {
    w->setGeometry(px(x), py(y), px(width), w->height());
  };
  // A grid's width is its columns plus a border; Qt's frame is wider than that border, so the
  // frame is added on top, or the last column would hide under a scroll bar.
  const auto placeGrid = [&](FlexGrid* g, int x, int y, int width, std::optional<int> height = std::nullopt) {
    g->setGeometry(px(x), py(y), px(width) + 2 * g->frameWidth(), height ? py(*height) : g->height());
  };

  m_grdTable->setColWidth(0, int(std::lround(2.1 * u)));
  const int tableWidth = m_grdTable->ColWidth(0) + 20;
  placeGrid(m_grdTable, Margin, GridsTop, tableWidth);

  const auto after = [this](QWidget* w, int gap) { return pixelsToTwipsX(this, w->geometry().right() + 1) + gap; };
  const int fieldLeft = after(m_grdTable, 20);
  const double fieldWidths[] = {0.5, 1.5, 1.0, 0.5, 0.5};
  int fieldWidth = 20;
  for (int c = 0; c < 5; ++c) {
    m_grdFIELD->setColWidth(c, int(std::lround(fieldWidths[c] * u)));
    fieldWidth += m_grdFIELD->ColWidth(c);
  }
  placeGrid(m_grdFIELD, fieldLeft, GridsTop, fieldWidth);

  const int keyLeft = after(m_grdFIELD, 20);
  m_grdKey->setColWidth(0, int(std::lround(0.5 * u)));
  m_grdKey->setColWidth(1, int(std::lround(1.5 * u)));
  for (int c = 2; c < 9; ++c)
    m_grdKey->setColWidth(c, 0);
  const int keyWidth = m_grdKey->ColWidth(0) + 20 + m_grdKey->ColWidth(1);
  placeGrid(m_grdKey, keyLeft, GridsTop, keyWidth, m_keyGridHeight);
  const int keyButtonsTop = GridsTop + m_keyGridHeight + Margin;
  const int keyButtonWidth = (keyWidth - 30) / 2;
  place(m_cmdKey, keyLeft, keyButtonsTop, keyButtonWidth, KeyButtonHeight);
  place(m_cmdBack, keyLeft + keyButtonWidth + 30, keyButtonsTop, keyButtonWidth, KeyButtonHeight);

  const int listWidth = int(std::lround(2.4 * u)) + 20 + 232;
  keepHeight(m_lstTable, keyLeft, keyButtonsTop + KeyButtonHeight + Margin, listWidth);

  // Everything else follows the grids.
  const int left = std::max(after(m_grdKey, Margin), after(m_lstTable, Margin));
  const int boxWidth = int(std::lround(1.75 * u));
  // Each filter row stands level with the key row it belongs to: the frame starts with the key
  // grid and its title takes the height of the grid's heading.
  const int frameWidth = 2 * Margin + 2 * boxWidth + 20 + FilterLabelWidth;
  place(m_frmWhere, left, GridsTop, frameWidth, m_keyGridHeight);
  m_frmWhere->resize(m_frmWhere->width(), m_grdKey->height());
  m_frmWhere->placeRows(px(Margin), m_grdKey->frameWidth() + m_grdKey->horizontalHeader()->sizeHint().height(),
                        m_grdKey->verticalHeader()->defaultSectionSize(), px(boxWidth), px(FilterLabelWidth), px(10));
  int y = GridsTop + m_keyGridHeight + Margin;
  place(m_txtAddWhere, left, y, frameWidth, RowHeight);
  y += RowHeight + 30;
  place(m_chkLstTable, left, y, 1800, ButtonHeight);
  place(m_cmdSearch, left + 1830, y, 800, ButtonHeight);
  for (int i = 0; i < 3; ++i)
    place(m_cmdAND[size_t(i)], left + 2660 + i * 630, y, 600, ButtonHeight);
  y += ButtonHeight + 30;
  for (int i = 0; i < 7; ++i)
    place(m_cmdJOB[size_t(i)], left + (i % 4) * (ButtonWidth + 30), y + (i / 4) * (ButtonHeight + 30), ButtonWidth,
          ButtonHeight);
  y += 2 * (ButtonHeight + 30);
  const std::array<QPushButton*, 4> last = {m_cmdOpt, m_cmdPrint, m_cmdVer, m_cmdEnd};
  for (int i = 0; i < 4; ++i)
    place(last[size_t(i)], left + i * (ButtonWidth + 30), y, ButtonWidth, ButtonHeight);
  y += ButtonHeight + 30;
  m_grdCount->setColWidth(0, int(std::lround(2.9 * u)));
  placeGrid(m_grdCount, left, y, m_grdCount->ColWidth(0) + 240);
  // The launcher column takes the room left beside the result list, up to its own width.
  const int launchersLeft = m_grdCount->geometry().right() + 1 + px(Margin);
  const int room = centralWidget()->width() - launchersLeft - px(Margin);
  m_launchers->setGeometry(launchersLeft, m_grdCount->y(), std::clamp(room, px(ButtonWidth), px(LauncherWidth)),
                           m_grdCount->height());
}
