#include "sessions/FDBSWEEP_SS.h"

#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "jobs/JobReport.h"
#include "services/MessageBoxes.h"
#include "viewers/RefreshFrame.h"
#include "widgets/FlexGrid.h"
#include "widgets/HourGlass.h"
#include "widgets/PopPop.h"
#include "widgets/Twips.h"

#include <QCursor>
#include <QLabel>
#include <QLocale>
#include <QStatusBar>

#include <cmath>

namespace {

const QString ListSql = QStringLiteral("SELECT SID,SERIAL#,MACHINE,PROGRAM FROM V$SESSION");
const QColor Asking(255, 255, 0), Killed(0, 255, 255), Failed(255, 0, 0), Normal(255, 255, 255);
constexpr int Left = 120; // twips
constexpr int GridTop = 480;
constexpr int GridHeight = 4500;
constexpr int AskEvery = 500;
constexpr int MarkColumn = 5;

QString text(const QVariant& value) { return value.isValid() ? value.toString() : QString(); }

} // namespace

FDBSWEEP_SS::FDBSWEEP_SS(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent)
    : RefreshedList(state, boxes, 0, parent) {
  setObjectName(QStringLiteral("FDBSWEEP_SS"));
  setWindowTitle(QStringLiteral("セッション情報照会"));
  auto* hint = new QLabel(QStringLiteral("行をクリックするとセッションを削除出来ます"), this);
  hint->setObjectName(QStringLiteral("Label2"));

  // A row's colours tell what is happening to its session; the selection colour must not hide them.
  QPalette palette = m_grdData->palette();
  palette.setColor(QPalette::Highlight, Qt::transparent);
  palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Text));
  m_grdData->setPalette(palette);

  const double widths[] = {0.5, 0.8, 0.8, 4.0, 6.0, 0.2};
  m_grdData->setCols(6);
  m_grdData->setRows(1);
  int gridWidth = 20 + 350;
  for (int c = 0; c < 6; ++c) {
    m_grdData->setColWidth(c, int(std::lround(widths[c] * u)));
    gridWidth += m_grdData->ColWidth(c);
  }
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  m_lblTable->setGeometry(px(Left), px(60), px(gridWidth), px(330));
  m_grdData->setGeometry(px(Left), px(GridTop), px(gridWidth), twipsToPixelsY(this, GridHeight));
  hint->setGeometry(px(Left), m_grdData->geometry().bottom() + 1 + px(560), px(gridWidth), px(300));
  resize(px(Left + gridWidth + 300), hint->geometry().bottom() + 1 + px(120) + m_stsDT->sizeHint().height());
  layoutDone();

  connect(m_frmUpd, &RefreshFrame::refreshRequested, this, &FDBSWEEP_SS::LoadData);
  connect(m_grdData, &FlexGrid::Click, this, &FDBSWEEP_SS::grdData_Click);
  connect(m_grdData, &FlexGrid::MouseDown, this, [this, menu](Qt::MouseButton button) {
    if (button == Qt::RightButton && menu)
      menu->open(m_grdData, false, QCursor::pos());
  });
  LoadData();
}

void FDBSWEEP_SS::LoadData() {
  // A tick while the last refresh asks about more rows, or while a kill is being asked about,
  // leaves the list as the user sees it.
  if (m_frmUpd->held())
    return;
  const RefreshFrame::Hold hold(*m_frmUpd);
  const HourGlass wait;
  m_lblTable->setText(ListSql);
  qint64 total = 0;
  try {
    if (!m_state.gDatabase)
      throw NotConnected();
    auto sessions = m_state.gDatabase->CreateDynaset(ListSql, OraDynaset::ReadOnly);
    total = sessions->RecordCount();
    m_grdData->setRows(int(total) + 1);
    const QString headings[] = {QStringLiteral("SID"), QStringLiteral("ｼﾙｱﾙ"), QStringLiteral("ｺﾝﾋﾟｭｰﾀ"),
                                QStringLiteral("ﾌﾟﾛｸﾞﾗﾑ")};
    for (int c = 1; c <= 4; ++c)
      m_grdData->setTextMatrix(0, c, headings[c - 1]);
    for (int i = 1; i <= total; ++i, sessions->MoveNext()) {
      if (i % AskEvery == 1 && i >= 2 &&
          m_boxes.show(QStringLiteral("抽出件数が ") + QString::number(i - 1) +
                           QStringLiteral(" を超えました、続けますか？"),
                       QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNo,
                       MessageBoxes::Icon::Question) == MessageBoxes::Answer::No) {
        m_grdData->setRows(i);
        break;
      }
      paintRow(i, Normal);
      m_grdData->setTextMatrix(i, 0, QString::number(i));
      for (int c = 1; c <= 4; ++c)
        m_grdData->setTextMatrix(i, c, text(sessions->Fields(c - 1)));
      m_grdData->setCellAlignment(i, 1, Qt::AlignLeft | Qt::AlignVCenter);
      m_grdData->setTextMatrix(i, MarkColumn, QString());
    }
    sessions->Close();
  } catch (const OraError&) {
    m_boxes.show(QStringLiteral("セッション情報を取得できません(サーバ未接続、権限不足等)"), QStringLiteral("エラー"),
                 MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    total = 0;
  }
  m_grdData->viewport()->update();
  m_lblTotal->setText(QStringLiteral("TOTAL ") + QLocale(QLocale::English).toString(total) + QStringLiteral("件"));
}

void FDBSWEEP_SS::paintRow(int row, const QColor& colour) {
  for (int c = 1; c <= MarkColumn; ++c)
    m_grdData->setCellBackColor(row, c, colour);
}

void FDBSWEEP_SS::grdData_Click() {
  const int row = m_grdData->MouseRow();
  if (row < 1 || row >= m_grdData->Rows())
    return;
  {
    // The row keeps its colours while the user decides: no tick rebuilds the list meanwhile.
    const RefreshFrame::Hold hold(*m_frmUpd);
    paintRow(row, Asking);
    m_grdData->setTextMatrix(row, MarkColumn, QStringLiteral("ﾚ"));
    const QString sid = m_grdData->TextMatrix(row, 1);
    const QString serial = m_grdData->TextMatrix(row, 2);
    const MessageBoxes::Answer answer = m_boxes.show(
        QStringLiteral("セッションを削除しますか？\r\nSID=[") + sid + QStringLiteral("],SERIAL#=[") + serial +
            QStringLiteral("]"),
        QStringLiteral("セッション削除確認"), MessageBoxes::Buttons::YesNo, MessageBoxes::Icon::Question, 2);
    if (answer != MessageBoxes::Answer::Yes) {
      paintRow(row, Normal);
    } else {
      try {
        if (!m_state.gDatabase)
          throw NotConnected();
        m_state.gDatabase->ExecuteSQL(QStringLiteral("ALTER SYSTEM KILL SESSION '") + sid + u',' + serial + u'\'');
        paintRow(row, Killed);
        m_boxes.show(QStringLiteral("正常終了しました"), QStringLiteral("セッション削除"), MessageBoxes::Buttons::Ok,
                     MessageBoxes::Icon::Information);
      } catch (const OraError&) {
        paintRow(row, Failed);
        m_boxes.show(QStringLiteral("セッションを削除できません"), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok,
                     MessageBoxes::Icon::Exclamation);
        paintRow(row, Normal);
      }
    }
    m_grdData->setTextMatrix(row, MarkColumn, QString());
  }
  LoadData();
}
