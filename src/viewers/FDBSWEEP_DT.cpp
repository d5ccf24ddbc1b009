#include "viewers/FDBSWEEP_DT.h"

#include "browser/Catalogues.h"
#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "db/OraError.h"
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

constexpr int Left = 120; // twips
constexpr int GridTop = 480;
constexpr int AskEvery = 500;

} // namespace

FDBSWEEP_DT::FDBSWEEP_DT(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent)
    : RefreshedList(state, boxes, 10, parent) {
  setObjectName(QStringLiteral("FDBSWEEP_DT"));
  setWindowTitle(QStringLiteral("データ照会"));
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };

  m_grdData->setCols(3);
  m_grdData->setRows(1);
  m_grdData->setColWidth(0, int(std::lround(0.5 * u)));
  m_grdData->setColWidth(1, int(std::lround(4.8 * u)));
  m_grdData->setColWidth(2, int(std::lround(0.8 * u)));
  const int gridWidth = (m_grdData->ColWidth(0) + 20) + m_grdData->ColWidth(1) + m_grdData->ColWidth(2) + 350;
  m_lblTable->setGeometry(px(Left), px(60), px(gridWidth), px(330));
  m_grdData->setGeometry(px(Left), px(GridTop), px(gridWidth), px(5000));
  resize(px(Left + gridWidth + 300), px(GridTop + 5000 + 20 + 480 + 60) + m_stsDT->sizeHint().height());
  layoutDone();

  connect(m_frmUpd, &RefreshFrame::refreshRequested, this, &FDBSWEEP_DT::LoadData);
  connect(m_grdData, &FlexGrid::DblClick, this, &FDBSWEEP_DT::grdData_DblClick);
  connect(m_grdData, &FlexGrid::MouseDown, this, [this, menu](Qt::MouseButton button) {
    if (button != Qt::RightButton || !menu)
      return;
    // The menu acts on the row the user pointed at, not on the one selected before.
    if (m_grdData->MouseRow() >= 1)
      m_grdData->setRow(m_grdData->MouseRow());
    menu->open(m_grdData, false, QCursor::pos());
  });
  LoadData();
}

void FDBSWEEP_DT::LoadData() {
  // A tick that comes while the last load's question or failure message is still open waits for
  // it, instead of stacking one box a tick or rebuilding the list under it.
  if (m_frmUpd->held())
    return;
  const RefreshFrame::Hold hold(*m_frmUpd);
  const HourGlass wait;
  m_lblTable->setText(QStringLiteral("テーブル名：") + m_state.gCurTableID + QStringLiteral("「") +
                      m_state.gCurTableName + QStringLiteral("」"));
  const QString sql = QStringLiteral("select COUNT(*) ,") + m_state.gPickColumnID + QStringLiteral(" from ") +
                      m_state.gCurTableID + QStringLiteral(" GROUP BY ") + m_state.gPickColumnID;
  qint32 total = 0;
  try {
    if (!m_state.gDatabase)
      throw OraError(3114, QStringLiteral("not connected to ORACLE"));
    auto groups = m_state.gDatabase->CreateDynaset(sql, OraDynaset::ReadOnly);
    const int count = int(groups->RecordCount());
    m_grdData->setRows(count + 1);
    m_grdData->setTextMatrix(0, 1, m_state.gPickColumnName + QStringLiteral(" : ") + m_state.gPickColumnID);
    m_grdData->setTextMatrix(0, 2, QStringLiteral("件数"));
    for (int r = 1; r <= count; ++r, groups->MoveNext()) {
      if (r - 1 > 0 && (r - 1) % AskEvery == 0 &&
          m_boxes.show(QStringLiteral("抽出件数が ") + QString::number(r - 1) +
                           QStringLiteral(" を超えました、続けますか？"),
                       QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNo,
                       MessageBoxes::Icon::Question) == MessageBoxes::Answer::No) {
        m_grdData->setRows(r);
        break;
      }
      const QVariant value = groups->Fields(1);
      m_grdData->setTextMatrix(r, 0, QString::number(r));
      m_grdData->setTextMatrix(r, 1, value.isValid() ? value.toString() : QString());
      m_grdData->setCellForeColor(r, 1, Qt::black);
      const QString n = FieldText(*groups, QStringLiteral("COUNT(*)"));
      m_grdData->setTextMatrix(r, 2, n);
      total += qint32(n.toLongLong());
    }
    groups->Close();
  } catch (const OraError&) {
    m_boxes.show(QStringLiteral("データがありません"), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok,
                 MessageBoxes::Icon::Exclamation);
  }
  m_lblTotal->setText(QStringLiteral("TOTAL ") + QLocale(QLocale::English).toString(total) + QStringLiteral("件"));
}

void FDBSWEEP_DT::grdData_DblClick() {
  m_grdData->setCol(1);
  if (m_grdData->Row() < 1 || m_grdData->MouseRow() < 1)
    return;
  m_state.gPickedValue = m_grdData->Text();
  accept();
}
