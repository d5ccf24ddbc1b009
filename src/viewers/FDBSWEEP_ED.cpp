#include "viewers/FDBSWEEP_ED.h"

#include "app/ColumnInfo.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "db/NullToValue.h"
#include "db/OraDatabase.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "services/MessageBoxes.h"
#include "widgets/FlexGrid.h"
#include "widgets/FollowResize.h"
#include "widgets/HourGlass.h"
#include "widgets/Twips.h"

#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTimer>

#include <exception>
#include <vector>

namespace {

constexpr int Left = 120; // twips
constexpr int GridTop = 420;
constexpr int DesignGridWidth = 11160;
constexpr int DesignGridHeight = 6000;
constexpr int AskEvery = 500;
constexpr int DateLetters = 20;

// Binary and large-object values are not read: the type's name stands in their cells.
bool ShowsTypeName(const QString& type) { return type.contains(u"RAW") || type.contains(u"LOB"); }

} // namespace

FDBSWEEP_ED::FDBSWEEP_ED(BDBSWEEP& state, MessageBoxes& boxes, StatementRunner& statements, bool showIds,
                         QWidget* parent)
    : QDialog(parent), m_state(state), m_boxes(boxes), m_statements(statements), m_showIds(showIds),
      m_grdED(new FlexGrid(this)), m_lblTable(new QLabel(this)), m_lblTotal(new QLabel(this)) {
  setObjectName(QStringLiteral("FDBSWEEP_ED"));
  setWindowTitle(QStringLiteral("データ編集"));
  setModal(true);
  m_grdED->setObjectName(QStringLiteral("grdED"));
  m_lblTable->setObjectName(QStringLiteral("lblTable"));
  m_lblTotal->setObjectName(QStringLiteral("lblTotal"));
  m_lblTotal->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  const QString captions[] = {QStringLiteral("昇順ｿｰﾄ"), QStringLiteral("降順ｿｰﾄ"), QStringLiteral("元に戻す")};
  for (int i = 0; i < 3; ++i) {
    m_cmdSort[i] = new QPushButton(captions[i], this);
    m_cmdSort[i]->setObjectName(QStringLiteral("cmdSort_%1").arg(i));
    m_cmdSort[i]->setAutoDefault(false);
    connect(m_cmdSort[i], &QPushButton::clicked, this, [this, i] { cmdSort_Click(i); });
  }
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  m_lblTable->setGeometry(px(Left), px(60), px(DesignGridWidth), px(300));
  m_grdED->setGeometry(px(Left), px(GridTop), px(DesignGridWidth), twipsToPixelsY(this, DesignGridHeight));
  m_grdED->setRows(1);
  m_grdED->setCols(1);
  resize(px(Left + DesignGridWidth + 120), m_grdED->geometry().bottom() + 1 + twipsToPixelsY(this, 600));
  placeBottomRow();
}

FDBSWEEP_ED::~FDBSWEEP_ED() = default;

void FDBSWEEP_ED::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (m_loaded)
    return;
  m_loaded = true;
  // After the window is up, so the first rows are on screen behind the question about more.
  QTimer::singleShot(0, this, &FDBSWEEP_ED::LoadData);
}

void FDBSWEEP_ED::LoadData() {
  const HourGlass wait;
  m_loadSize = size();
  m_loadGridSize = m_grdED->size();
  m_lblTable->setText(QStringLiteral("テーブル名：") + m_state.gInfoTable + QStringLiteral("「") +
                      m_state.gInfoTableName + QStringLiteral("」"));
  qint64 total = 0;
  std::unique_ptr<OraDynaset> rows;
  try {
    // A no-cache result is counted by the database, not by reading every row first, and keeps
    // only the row being read: the first rows of a huge table come at once.
    m_statements.run([&rows, &total, sql = m_state.gLastSql, database = m_state.gDatabase] {
      if (!database)
        throw NotConnected();
      rows = database->CreateDynaset(sql, OraDynaset::NoCache);
      total = rows->RecordCount();
    });
  } catch (const std::exception&) {
    m_boxes.show(QStringLiteral("データがありません"), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok,
                 MessageBoxes::Icon::Exclamation);
    rows.reset();
  }
  if (rows) {
    const int numberWidth = m_grdED->fontMetrics().horizontalAdvance(QStringLiteral("999999"));
    m_grdED->setColWidth(0, pixelsToTwipsX(m_grdED, numberWidth));
    m_grdED->setRows(1);
    const int columns = LoadColumnInfo(m_state, m_boxes);
    m_grdED->setCols(columns + 1);
    sizeColumns(columns);
    try {
      while (readRows(*rows, AskEvery, columns)) {
        const int loaded = m_grdED->Rows() - 1;
        if (m_boxes.show(QStringLiteral("抽出件数が ") + QString::number(loaded) +
                             QStringLiteral(" を超えました、続けますか？"),
                         QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNo,
                         MessageBoxes::Icon::Question) == MessageBoxes::Answer::No)
          break;
      }
    } catch (const std::exception&) {
      // A row that cannot be read ends the reading; the rows read so far stay.
    }
    m_grdED->viewport()->update();
    try {
      m_statements.run([&rows] { rows->Close(); });
    } catch (const std::exception&) {
      // Nothing is left to read from it either way.
    }
  }
  m_lblTotal->setText(QStringLiteral("TOTAL ") + QLocale(QLocale::English).toString(total) + QStringLiteral("件"));
}

void FDBSWEEP_ED::sizeColumns(int columns) {
  const QFontMetrics metrics = m_grdED->fontMetrics();
  for (int c = 1; c <= columns; ++c) {
    const QString id = m_state.gColumnInfo.at(0, c);
    const QString name = m_state.gColumnInfo.at(1, c);
    double letters = MaxDouble(MaxDouble(m_state.gColumnInfo.at(3, c).toDouble() + 1, AnsiByteLength(name)),
                               AnsiByteLength(id));
    if (m_state.gColumnInfo.at(2, c) == u"DATE")
      letters = DateLetters;
    const QString sample(qsizetype(std::max(0.0, letters)), u'H');
    m_grdED->setColWidth(c, pixelsToTwipsX(m_grdED, metrics.horizontalAdvance(sample)) + 60);
    m_grdED->setTextMatrix(0, c, m_showIds ? id : name);
  }
}

bool FDBSWEEP_ED::readRows(OraDynaset& rows, int count, int columns) {
  std::vector<QStringList> batch;
  bool more = true;
  QStringList typeNames; // per column: the text that stands for every value, "" to read the value
  for (int c = 1; c <= columns; ++c) {
    const QString type = m_state.gColumnInfo.at(2, c);
    typeNames << (ShowsTypeName(type) ? type : QString());
  }
  m_statements.run([&] {
    batch.reserve(size_t(count));
    while (int(batch.size()) < count && !rows.IsEOF()) {
      QStringList cells;
      cells.reserve(columns);
      for (int c = 1; c <= columns; ++c)
        cells << (typeNames[c - 1].isEmpty() ? NullToValue(rows.Fields(c - 1), 2).toString() : typeNames[c - 1]);
      batch.push_back(std::move(cells));
      rows.MoveNext();
    }
    more = !rows.IsEOF();
  });
  int r = m_grdED->Rows();
  m_grdED->setRows(r + int(batch.size()));
  for (const QStringList& cells : batch) {
    m_grdED->setTextMatrix(r, 0, QString::number(r));
    for (int c = 1; c <= columns; ++c)
      m_grdED->setTextMatrix(r, c, cells[c - 1]);
    ++r;
  }
  return more;
}

void FDBSWEEP_ED::cmdSort_Click(int index) {
  switch (index) {
  case 0:
  case 1:
    // Only a selection of several rows sorts, as after a click on a column heading.
    if (m_grdED->Row() != m_grdED->RowSel())
      m_grdED->Sort(index == 0 ? FlexGrid::SortOrder::GenericAscending : FlexGrid::SortOrder::GenericDescending);
    break;
  case 2:
    // Back to the order the rows were read in, by their numbers.
    m_grdED->setCol(0);
    m_grdED->setColSel(0);
    m_grdED->Sort(FlexGrid::SortOrder::GenericAscending);
    break;
  default: break;
  }
}

void FDBSWEEP_ED::placeBottomRow() {
  const int top = m_grdED->geometry().bottom() + 1 + twipsToPixelsY(this, 90);
  const int height = twipsToPixelsY(this, 390);
  int left = m_grdED->x();
  for (QPushButton* button : m_cmdSort) {
    button->setGeometry(left, top, twipsToPixelsX(this, 1200), height);
    left = button->geometry().right() + 1 + twipsToPixelsX(this, 60);
  }
  m_lblTotal->setGeometry(left, top, std::max(0, m_grdED->geometry().right() + 1 - left), height);
}

void FDBSWEEP_ED::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  if (m_loadSize.isEmpty())
    return;
  FollowWindowResize(*m_grdED, m_loadGridSize, m_loadSize, size());
  placeBottomRow();
}
