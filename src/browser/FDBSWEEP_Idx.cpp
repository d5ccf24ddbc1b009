#include "browser/FDBSWEEP_Idx.h"

#include "app/WindowFrame.h"
#include "common/BDBSWEEP.h"
#include "jobs/JobPlan.h"
#include "jobs/ResultList.h"
#include "widgets/FlexGrid.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include <cmath>

namespace {

constexpr int DefaultWidthTwips = 11115;
using namespace WindowDesign;

} // namespace

FDBSWEEP_Idx::FDBSWEEP_Idx(BDBSWEEP& state, Services& services, FlexGrid& tables, clsPrinter& printer,
                           QWidget* parent)
    : QMainWindow(parent, Qt::Window), m_state(state), m_services(services), m_tables(tables), m_printer(printer) {
  setObjectName(QStringLiteral("FDBSWEEP_Idx"));
  setWindowTitle(QStringLiteral("DBSWEEP"));
  // Closed is gone: the next drop opens a fresh window on the table dropped then.
  setAttribute(Qt::WA_DeleteOnClose);
  auto* central = new QWidget(this);
  central->setObjectName(QStringLiteral("central"));
  setCentralWidget(central);
  m_frame = new WindowFrame(*this, central, state, services,
                            {QStringLiteral("I"), DefaultWidthTwips, DefaultHeight, U});
  m_frame->setJobSource({[this] { return takePlan(); }, false});
  m_chkTabNM = m_frame->chkTabNM();
  m_chkFldNM = m_frame->chkFldNM();
  m_popPop = m_frame->popPop();
  buildControls(central);
  connectBrowser();
  connect(m_frame, &WindowFrame::refreshRequested, this, &FDBSWEEP_Idx::refresh);
  connect(m_frame, &WindowFrame::printRequested, this,
          [this] { m_frame->printResults(m_printer, m_state.gLastWhere); });
}

FDBSWEEP_Idx::~FDBSWEEP_Idx() = default;

void FDBSWEEP_Idx::buildControls(QWidget* central) {
  m_grdIndex = NamedGrid(central, QStringLiteral("grdIndex"), 3);
  m_grdIdxFld = NamedGrid(central, QStringLiteral("grdIdxFld"), 5);
  m_grdKey = NamedGrid(central, QStringLiteral("grdKey"), 9);
  m_lstIndex = new QListWidget(central);
  m_lstIndex->setObjectName(QStringLiteral("lstIndex"));
  m_lstIndex->setSelectionMode(QAbstractItemView::ExtendedSelection);
  m_lstIndex->setToolTip(QStringLiteral("処理対象のﾃｰﾌﾞﾙを選択します"));
  m_chkLstIndex = new QCheckBox(QStringLiteral("即時ﾃｰﾌﾞﾙ検索"), central);
  m_chkLstIndex->setObjectName(QStringLiteral("chkLstIndex"));
  // On from the start, as in the main window: the first key chosen lists the indexes at once.
  m_chkLstIndex->setChecked(true);
  m_cmdKey = NamedButton(central, QStringLiteral("cmdKey"), QStringLiteral("→"));
  m_cmdKey->setToolTip(QStringLiteral("選択した項目をキーに追加します"));
  m_cmdBack = NamedButton(central, QStringLiteral("cmdBack"), QStringLiteral("←"));
  m_cmdBack->setToolTip(QStringLiteral("選択したキーを外します"));
  m_cmdSearch = NamedButton(central, QStringLiteral("cmdSearch"), QStringLiteral("検索"));
}

void FDBSWEEP_Idx::load() {
  m_designGridHeight = m_frame->designGridHeight();
  m_keyGridHeight = KeyGridHeight(*m_grdKey);
  m_designListHeight = m_designGridHeight - m_keyGridHeight - KeyButtonHeight - 2 * Margin;
  m_designCountHeight = m_designGridHeight - (ButtonHeight + 30 + 4 * (ButtonHeight + 30));
  m_frame->load();
  // The stored size may be the size the window already has, and then no resize lays it out.
  fitToSize();
  LoadIndexCatalogue();
}

void FDBSWEEP_Idx::refresh() {
  if (m_frame->settlePendingWork())
    LoadIndexCatalogue();
}

void FDBSWEEP_Idx::closeEvent(QCloseEvent* event) {
  // The session stays: the main window goes on working on it.
  if (!m_frame->settlePendingWork()) {
    event->ignore();
    return;
  }
  m_frame->saveOnClose();
  event->accept();
}

bool FDBSWEEP_Idx::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate && m_frame->u() > 0)
    layoutWindow();
  return QMainWindow::event(event);
}

void FDBSWEEP_Idx::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  fitToSize();
}

void FDBSWEEP_Idx::fitToSize() {
  if (m_frame->followResize({{m_grdIndex, m_designGridHeight},
                             {m_grdIdxFld, m_designGridHeight},
                             {m_lstIndex, m_designListHeight},
                             {m_frame->grdCount(), m_designCountHeight}}))
    layoutWindow();
}

void FDBSWEEP_Idx::layoutWindow() {
  const int u = m_frame->u();
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  const auto py = [this](int twips) { return twipsToPixelsY(this, twips); };
  const auto place = [&](QWidget* w, int x, int y, int width, int height) {
    w->setGeometry(px(x), py(y), px(width), py(height));
  };
  const auto after = [this](QWidget* w, int gap) { return pixelsToTwipsX(this, w->geometry().right() + 1) + gap; };
  // Each grid as wide as its columns and its border, with Qt's wider frame on top.
  const auto placeGrid = [&](FlexGrid* g, int x, const std::vector<double>& widths, int height = -1) {
    int width = 20;
    for (size_t c = 0; c < widths.size(); ++c) {
      g->setColWidth(int(c), int(std::lround(widths[c] * u)));
      width += g->ColWidth(int(c));
    }
    g->setGeometry(px(x), py(GridsTop), px(width) + 2 * g->frameWidth(), height < 0 ? g->height() : py(height));
  };

  place(m_frame->lblOra(), Margin, 30, 2700, 510);
  place(m_chkTabNM, 2820, 20, 1800, 270);
  place(m_chkFldNM, 2820, 290, 1800, 270);
  place(m_frame->cmdDefaultSize(), 4680, 60, 1500, 450);
  place(m_frame->cmdEnd(), 6240, 60, ButtonWidth, 450);

  placeGrid(m_grdIndex, Margin, {2.4, 0.6, 0.7});
  placeGrid(m_grdIdxFld, after(m_grdIndex, 20), {0.5, 1.5, 0.6, 0.6, 0.6});
  const int keyLeft = after(m_grdIdxFld, 20);
  placeGrid(m_grdKey, keyLeft, {0.5, 1.5, 0, 0, 0, 0, 0, 0, 0}, m_keyGridHeight);
  const int keyWidth = pixelsToTwipsX(this, m_grdKey->width());
  const int keyButtonsTop = GridsTop + m_keyGridHeight + Margin;
  const int keyButtonWidth = (keyWidth - 30) / 2;
  place(m_cmdKey, keyLeft, keyButtonsTop, keyButtonWidth, KeyButtonHeight);
  place(m_cmdBack, keyLeft + keyButtonWidth + 30, keyButtonsTop, keyButtonWidth, KeyButtonHeight);
  const int listTop = keyButtonsTop + KeyButtonHeight + Margin;
  m_lstIndex->setGeometry(px(keyLeft), py(listTop), px(int(std::lround(2.4 * u)) + 20 + 232), m_lstIndex->height());

  // The search switch, the jobs and their results follow the grids.
  const int left = std::max(after(m_grdKey, Margin), after(m_lstIndex, Margin));
  int y = GridsTop;
  place(m_chkLstIndex, left, y, 1800, ButtonHeight);
  place(m_cmdSearch, left + 1830, y, 800, ButtonHeight);
  y += ButtonHeight + 30;
  for (int i = 0; i < 7; ++i)
    place(m_frame->cmdJOB(i), left + (i % 2) * (ButtonWidth + 30), y + (i / 2) * (ButtonHeight + 30), ButtonWidth,
          ButtonHeight);
  y += 4 * (ButtonHeight + 30);
  FlexGrid* count = m_frame->grdCount();
  count->setColWidth(0, int(std::lround(2.9 * u)));
  count->setGeometry(px(left), py(y), px(count->ColWidth(0) + 240) + 2 * count->frameWidth(), count->height());
}

void FDBSWEEP_Idx::lstidxCntClear() { m_frame->results()->clear(); }

void FDBSWEEP_Idx::lstidxCntAddItem(const QString& text, const QString& code) {
  m_frame->results()->addItem(text, code);
}
