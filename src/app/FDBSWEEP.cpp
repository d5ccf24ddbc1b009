#include "app/FDBSWEEP.h"

#include "app/ConnectOracle.h"
#include "app/DemoBuildProgress.h"
#include "app/FDBSWEEP_Spl.h"
#include "app/FORA_Logon.h"
#include "app/FrameTexts.h"
#include "app/MainToolBar.h"
#include "app/WindowFrame.h"
#include "browser/BrowserGrids.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "filter/FilterPanel.h"
#include "jobs/JobPlan.h"
#include "launcher/LaunchCommand.h"
#include "launcher/LauncherButtons.h"
#include "printing/clsPrinter.h"
#include "services/AppEnvironment.h"
#include "services/Clock.h"
#include "services/Services.h"
#include "settings/RegSetting.h"
#include "widgets/FlexGrid.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

// The size a first start opens with, and the default-size button's width.
constexpr int DefaultWidthTwips = 12015;
constexpr int RowHeight = 315;
constexpr int FilterLabelWidth = 450;
// The launcher column: an icon and eight full-width letters.
constexpr int LauncherWidth = 2100;
using namespace WindowDesign;

QString readSetting(BDBSWEEP& state, const QString& area, const QString& key, const QString& def) {
  return RegSetting(*state.gRegistry, QStringLiteral("R"), area, key, def);
}
QString readSetting(BDBSWEEP& state, const QString& key, const QString& def) {
  return readSetting(state, QStringLiteral("JVK"), key, def);
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
  auto* central = new QWidget(this);
  central->setObjectName(QStringLiteral("central"));
  setCentralWidget(central);
  m_frame = new WindowFrame(*this, central, state, services,
                            {QString(), DefaultWidthTwips, DefaultHeight, U});
  m_frame->setJobSource({[this] { return takePlan(); }, true});
  buildTopBand(central);
  buildGrids(central);
  buildFilterAndButtons(central);
  buildLaunchers(central);
  connectBrowser();
  connect(m_frame, &WindowFrame::refreshRequested, this, &FDBSWEEP::CmdLogon_Click);
  connect(m_frame, &WindowFrame::printRequested, this, &FDBSWEEP::cmdPrint_Click);
  connect(m_frame, &WindowFrame::ticked, this, [this] {
    QString uptime = UptimeLabelText(m_state.gWindowsUser, m_services.clock.uptimeMs());
    m_label3->setText(uptime.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
  });
}

FDBSWEEP::~FDBSWEEP() = default;

void FDBSWEEP::buildTopBand(QWidget* central) {
  m_cmdLogon = NamedButton(central, QStringLiteral("CmdLogon"), QStringLiteral("接続"));
  m_cmdLogon->setToolTip(QStringLiteral("接続します"));
  m_label3 = label(central, QStringLiteral("Label3"));
  m_chkTabNM = m_frame->chkTabNM();
  m_chkFldNM = m_frame->chkFldNM();
  m_lblIdxDrop = label(central, QStringLiteral("lblIdxDrop"));
  m_lblIdxDrop->setToolTip(QStringLiteral("テーブルをここにドロップすると、インデックス情報を表示します"));
  m_lblIdxDrop->setFrameStyle(QFrame::Panel | QFrame::Sunken);
  m_lblIdxDrop->setAcceptDrops(true);
  m_lblIdxDrop->installEventFilter(this);
  m_label1 = label(central, QStringLiteral("Label1"), QStringLiteral("ﾃｰﾌﾞﾙﾄﾞﾛｯﾌﾟでIndex表示"));
  m_label1->setWordWrap(true);
  const auto place = [this](QWidget* w, int x, int y, int width, int height) {
    w->setGeometry(twipsToPixelsX(this, x), twipsToPixelsY(this, y), twipsToPixelsX(this, width),
                   twipsToPixelsY(this, height));
  };
  place(m_cmdLogon, Margin, 60, 900, 450);
  place(m_frame->lblOra(), 1020, 30, 2400, 510);
  place(m_label3, 3480, 30, 3300, 510);
  place(m_chkTabNM, 6840, 20, 1600, 270);
  place(m_chkFldNM, 6840, 290, 1600, 270);
  place(m_frame->cmdDefaultSize(), 8500, 60, 1300, 450);
  place(m_lblIdxDrop, 9860, 60, 450, 450);
  place(m_label1, 10370, 30, 1600, 510);
  connect(m_cmdLogon, &QPushButton::clicked, this, &FDBSWEEP::CmdLogon_Click);
}

void FDBSWEEP::buildGrids(QWidget* central) {
  m_grdTable = NamedGrid(central, QStringLiteral("grdTable"), 1);
  m_grdFIELD = NamedGrid(central, QStringLiteral("grdFIELD"), 5);
  m_grdKey = NamedGrid(central, QStringLiteral("grdKey"), 9);
  m_grdCount = m_frame->grdCount();
  m_lstTable = new QListWidget(central);
  m_lstTable->setObjectName(QStringLiteral("lstTable"));
  m_lstTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
  m_lstTable->setToolTip(QStringLiteral("処理対象のﾃｰﾌﾞﾙを選択します"));
}

void FDBSWEEP::buildFilterAndButtons(QWidget* central) {
  m_frmWhere = new FilterPanel(central);
  m_cmdKey = NamedButton(central, QStringLiteral("cmdKey"), QStringLiteral("→"));
  m_cmdKey->setToolTip(QStringLiteral("選択した項目をキーに追加します"));
  m_cmdBack = NamedButton(central, QStringLiteral("cmdBack"), QStringLiteral("←"));
  m_cmdBack->setToolTip(QStringLiteral("選択したキーを外します"));
  m_txtAddWhere = new QLineEdit(central);
  m_txtAddWhere->setObjectName(QStringLiteral("txtAddWhere"));
  m_txtAddWhere->setToolTip(QStringLiteral("WHERE句の後ろに連結する条件の入力欄です"));
  m_chkLstTable = new QCheckBox(QStringLiteral("即時ﾃｰﾌﾞﾙ検索"), central);
  m_chkLstTable->setObjectName(QStringLiteral("chkLstTable"));
  // On from the start: the first key chosen fills the target list at once, as a new user expects.
  m_chkLstTable->setChecked(true);
  m_cmdSearch = NamedButton(central, QStringLiteral("cmdSearch"), QStringLiteral("検索"));
  const QStringList andCaptions = {QStringLiteral("ｸﾘｱ"), QStringLiteral("AND"), QStringLiteral("OR")};
  for (int i = 0; i < 3; ++i)
    m_cmdAND[size_t(i)] = NamedButton(central, QStringLiteral("cmdAND_%1").arg(i), andCaptions[i]);
  m_cmdOpt = NamedButton(central, QStringLiteral("cmdOpt"), QStringLiteral("ｵﾌﾟｼｮﾝ"));
  m_cmdPrint = NamedButton(central, QStringLiteral("cmdPrint"), QStringLiteral("結果印刷"));
  m_cmdVer = NamedButton(central, QStringLiteral("cmdVer"), QStringLiteral("バージョン"));
  connect(m_cmdPrint, &QPushButton::clicked, this, &FDBSWEEP::cmdPrint_Click);
  connect(m_cmdVer, &QPushButton::clicked, m_frame, &WindowFrame::showVersionWindow);
  connect(m_cmdOpt, &QPushButton::clicked, m_frame, &WindowFrame::showOptions);
}

void FDBSWEEP::buildLaunchers(QWidget* central) {
  m_launchers = new LauncherButtons(central);
  connect(m_launchers, &LauncherButtons::childClicked, this, [this](int i) {
    StartLauncherEntry(*m_state.gRegistry, m_services.launcher, i, currentLogon());
  });
  connect(m_launchers, &LauncherButtons::cloneClicked, this, &FDBSWEEP::startClone);
  connect(m_frame, &WindowFrame::ticked, m_launchers, &LauncherButtons::mirror);
  serveLaunchers(m_frame);
}

void FDBSWEEP::serveLaunchers(WindowFrame* frame) {
  m_launchers->attachMenu(frame->tbar()->launcherMenu());
  connect(frame, &WindowFrame::cloneRequested, this, &FDBSWEEP::startClone);
  connect(frame, &WindowFrame::optionsClosed, this, &FDBSWEEP::loadLaunchers);
}

void FDBSWEEP::loadLaunchers() { m_launchers->LoadLauncherButtons(*m_state.gRegistry); }

Logon FDBSWEEP::currentLogon() const { return {m_state.gUser, m_state.gPassword, m_state.gHost}; }

void FDBSWEEP::startClone() { StartClone(m_services.launcher, m_services.env.db.programFolder, currentLogon()); }

void FDBSWEEP::load() {
  m_printer = std::make_unique<clsPrinter>();
  m_state.gOracleVersionText = BDBSWEEP::NotConnectedText;
  m_state.gOo4oVersionText.clear();

  // The design measures, taken before the stored geometry changes the size.
  m_designGridHeight = m_frame->designGridHeight();
  m_keyGridHeight = KeyGridHeight(*m_grdKey);
  m_designListHeight = m_designGridHeight - m_keyGridHeight - KeyButtonHeight - 2 * Margin;
  m_designCountHeight = m_designGridHeight - (m_keyGridHeight + Margin + RowHeight + 30 + 4 * (ButtonHeight + 30));

  m_state.gLogonCaption = QStringLiteral("User:\r\nHost:");
  m_frame->load();
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
  logonFromCommandLine();
  loadLaunchers();
  timerTick();
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

LogonHooks FDBSWEEP::logonHooks() {
  return {[this] {
            m_frame->showLogonCaption();
            // Painted now: the failure message that may follow is modal, and the user should
            // read the attempted user and host behind it.
            m_frame->lblOra()->repaint();
          },
          [this] { BuildDemoWithProgress(m_state.gHost, m_services.env.db, this); }};
}

void FDBSWEEP::timerTick() { m_frame->tick(); }

void FDBSWEEP::CmdLogon_Click() {
  if (!m_frame->settlePendingWork())
    return;
  m_state.gSession.reset();
  FORA_Logon dialog(m_state, m_services, logonHooks(), this);
  dialog.exec();
  m_frame->showLogonCaption();
  if (!m_state.gHost.isEmpty())
    LoadTableCatalogue();
}

void FDBSWEEP::closeEvent(QCloseEvent* event) {
  if (!m_frame->settlePendingWork()) {
    event->ignore();
    return;
  }
  m_state.gSession.reset();
  event->accept();
  // Every other window goes with the main one.
  if (m_frame->saveOnClose())
    QCoreApplication::quit();
}

bool FDBSWEEP::event(QEvent* event) {
  // Another copy may have changed the launcher entries while this window was in the background.
  if (event->type() == QEvent::WindowActivate && m_frame->u() > 0) {
    loadLaunchers();
    LayoutMainWindow();
  }
  return QMainWindow::event(event);
}

void FDBSWEEP::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  if (m_frame->followResize({{m_grdTable, m_designGridHeight},
                             {m_grdFIELD, m_designGridHeight},
                             {m_lstTable, m_designListHeight},
                             {m_grdCount, m_designCountHeight}}))
    LayoutMainWindow();
}

void FDBSWEEP::LayoutMainWindow() {
  const int u = m_frame->u();
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
    place(m_frame->cmdJOB(i), left + (i % 4) * (ButtonWidth + 30), y + (i / 4) * (ButtonHeight + 30), ButtonWidth,
          ButtonHeight);
  y += 2 * (ButtonHeight + 30);
  const std::array<QPushButton*, 4> last = {m_cmdOpt, m_cmdPrint, m_cmdVer, m_frame->cmdEnd()};
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
