// The main window's schema browser: the table and column catalogues, the keys and their filter
// rows, the table search and the target list.
#include "app/FDBSWEEP.h"

#include "app/JVK_CmnUi.h"
#include "app/WindowFrame.h"
#include "browser/BrowserGrids.h"
#include "browser/CatalogueSql.h"
#include "browser/Catalogues.h"
#include "browser/FDBSWEEP_Idx.h"
#include "browser/FORA_COL.h"
#include "common/BDBSWEEP.h"
#include "filter/FilterPanel.h"
#include "filter/RowFilter.h"
#include "jobs/JobPlan.h"
#include "services/MessageBoxes.h"
#include "services/Services.h"
#include "viewers/FDBSWEEP_DT.h"
#include "widgets/DragKind.h"
#include "widgets/FlexGrid.h"
#include "widgets/HourGlass.h"
#include "widgets/PopPop.h"

#include <QCheckBox>
#include <QCursor>
#include <QDropEvent>
#include <QLineEdit>
#include <QLabel>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>

namespace {

const QString ErrorTitle = QStringLiteral("エラー");

} // namespace

void FDBSWEEP::connectBrowser() {
  writeGridHeadings();
  // Nothing to choose from until a catalogue is loaded.
  m_grdFIELD->setEnabled(false);
  m_grdKey->setEnabled(false);
  m_browser = new BrowserGrids(m_grdTable, m_grdFIELD, m_grdKey, this);
  m_popPop = m_frame->popPop();
  connect(m_browser, &BrowserGrids::loadFields, this, &FDBSWEEP::LoadColumnCatalogue);
  connect(m_browser, &BrowserGrids::addKey, this, &FDBSWEEP::cmdKey_Click);
  connect(m_browser, &BrowserGrids::removeKey, this, &FDBSWEEP::cmdBack_Click);
  connect(m_browser, &BrowserGrids::fieldMenu, this, [this] { m_popPop->open(m_grdFIELD, false, QCursor::pos()); });
  connect(m_cmdKey, &QPushButton::clicked, this, &FDBSWEEP::cmdKey_Click);
  connect(m_cmdBack, &QPushButton::clicked, this, &FDBSWEEP::cmdBack_Click);
  connect(m_cmdSearch, &QPushButton::clicked, this, &FDBSWEEP::cmdSearch_Click);
  connect(m_chkLstTable, &QCheckBox::clicked, this, &FDBSWEEP::SearchTablesByKeys);
  connect(m_chkTabNM, &QCheckBox::clicked, this, &FDBSWEEP::chkTabNM_Click);
  connect(m_chkFldNM, &QCheckBox::clicked, this, &FDBSWEEP::chkFldNM_Click);
  connect(m_frmWhere, &FilterPanel::pickValue, this, &FDBSWEEP::pickValue);

  connect(m_lstTable, &QListWidget::itemSelectionChanged, this, &FDBSWEEP::updateJobButtons);
  m_lstTable->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(m_lstTable, &QListWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (m_lstTable->count() > 0)
      m_popPop->open(m_lstTable, true, m_lstTable->viewport()->mapToGlobal(pos));
  });
  connect(m_popPop, &PopPop::selectAll, this, &FDBSWEEP::selectAllTargets);

  connect(m_cmdAND[0], &QPushButton::clicked, m_txtAddWhere, &QLineEdit::clear);
  connect(m_cmdAND[1], &QPushButton::clicked, this,
          [this] { m_txtAddWhere->setText(m_txtAddWhere->text() + QStringLiteral(" AND ")); });
  connect(m_cmdAND[2], &QPushButton::clicked, this,
          [this] { m_txtAddWhere->setText(m_txtAddWhere->text() + QStringLiteral(" OR ")); });
  m_txtAddWhere->installEventFilter(this);
}

void FDBSWEEP::writeGridHeadings() {
  m_grdTable->setTextMatrix(0, 0, QStringLiteral("ﾃｰﾌﾞﾙ"));
  const QStringList fieldHeadings = {QString(), QStringLiteral("項目名"), QStringLiteral("属性"),
                                     QStringLiteral("桁数"), QStringLiteral("小数")};
  for (int c = 0; c < 5; ++c)
    m_grdFIELD->setTextMatrix(0, c, fieldHeadings[c]);
  const QStringList keyHeadings =
      fieldHeadings + QStringList{QString(), QStringLiteral("値１"), QString(), QStringLiteral("値２")};
  for (int c = 0; c < 9; ++c)
    m_grdKey->setTextMatrix(0, c, keyHeadings[c]);
  lstCountClear();
}

void FDBSWEEP::LoadTableCatalogue() {
  std::optional<TextTable> tables;
  {
    const HourGlass wait;
    tables = ReadTableCatalogue(m_state.gDatabase.get(), m_state.gUser, TableMasterSettings(*m_state.gRegistry),
                                m_state.gNameMasters);
  }
  m_cmdSearch->setEnabled(false);
  if (tables) {
    m_state.gTables = std::move(*tables);
    m_state.gColumns.redim(0);
    m_grdTable->setRows(m_state.gTables.upper() + 1);
    ShowIdsOrNames(*m_grdTable, 0, m_state.gTables, m_chkTabNM->isChecked());
    m_grdFIELD->setRows(1);
    m_lstTable->clear();
    disableTableJobs();
    lstCountClear();
    m_cmdSearch->setEnabled(true);
    // A fresh list: whichever table is clicked next shows its columns, even the one shown before.
    m_state.gCurTableID.clear();
    m_state.gCurTableName.clear();
  } else {
    m_services.boxes.show(QStringLiteral("テーブル情報が取得できません。"), ErrorTitle, MessageBoxes::Buttons::Ok,
                          MessageBoxes::Icon::Critical);
  }
  m_grdFIELD->setEnabled(false);
  m_grdKey->setEnabled(false);
  m_grdKey->setRows(1);
  m_frmWhere->hideAll();
}

void FDBSWEEP::LoadColumnCatalogue() {
  m_grdTable->setCol(0);
  if (m_grdTable->Rows() < 2 || m_grdTable->Text().isEmpty())
    return;
  const int row = m_grdTable->Row();
  const QString id = m_state.gTables.at(0, row).trimmed();
  if (id == m_state.gCurTableID)
    return;
  m_state.gCurTableID = id;
  m_state.gCurTableName = m_state.gTables.at(1, row).trimmed();
  setWindowTitle(id + QStringLiteral("「") + m_state.gCurTableName + QStringLiteral("」:DBSWEEP"));
  m_grdKey->setRows(1);
  m_frmWhere->hideAll();
  disableTableJobs();
  m_lstTable->clear();

  std::optional<TextTable> columns;
  {
    const HourGlass wait;
    columns = ReadColumnCatalogue(m_state.gDatabase.get(), m_state.gUser, id, ColumnMasterSettings(*m_state.gRegistry),
                                  m_state.gNameMasters);
  }
  if (!columns) {
    m_services.boxes.show(QStringLiteral("サーバーの接続に失敗しました。"), ErrorTitle, MessageBoxes::Buttons::Ok,
                          MessageBoxes::Icon::Critical);
    return;
  }
  m_grdFIELD->setEnabled(true);
  m_grdKey->setEnabled(true);
  ShowFields(*m_grdFIELD, m_state.gColumns, *columns, m_chkFldNM->isChecked());
}

void FDBSWEEP::disableTableJobs() { m_frame->setTableJobsEnabled(false); }

void FDBSWEEP::chkTabNM_Click() {
  const bool ids = m_chkTabNM->isChecked();
  ShowIdsOrNames(*m_grdTable, 0, m_state.gTables, ids);
  for (int i = 0; i < m_lstTable->count(); ++i) {
    QListWidgetItem* item = m_lstTable->item(i);
    item->setText(m_state.gTargets.at(ids ? 0 : 1, item->data(Qt::UserRole).toInt()));
  }
}

void FDBSWEEP::chkFldNM_Click() {
  const bool ids = m_chkFldNM->isChecked();
  ShowIdsOrNames(*m_grdFIELD, 1, m_state.gColumns, ids);
  ShowKeyNames(*m_grdKey, m_state.gColumns, ids);
}

void FDBSWEEP::cmdKey_Click() {
  const int r = m_grdFIELD->Row();
  if (r < 1 || m_grdFIELD->Rows() < 2)
    return;
  const QString type = m_grdFIELD->TextMatrix(r, 2);
  if (IsKeyField(*m_grdFIELD, r))
    return;
  if (type.contains(QStringLiteral("LOB")) || type.contains(QStringLiteral("RAW"))) {
    m_services.boxes.show(type + QStringLiteral("は選択出来ません"), QStringLiteral("DBSWEEP"),
                          MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    return;
  }
  if (!RoomForKey(*m_grdKey, m_services.boxes))
    return;
  m_frmWhere->show();
  const int k = AppendKey(*m_grdFIELD, *m_grdKey, r);
  m_frmWhere->startRow(k - 1, RowFilter::MaxLength(type, m_grdFIELD->TextMatrix(r, 3), m_grdFIELD->TextMatrix(r, 4)));
  SearchTablesByKeys();
}

void FDBSWEEP::cmdBack_Click() {
  const int k = m_grdKey->Row();
  if (k >= 1 && m_grdKey->Rows() > 1) {
    // The keys after it close up, each with its filter row.
    for (int j = k + 1; j < m_grdKey->Rows(); ++j)
      m_frmWhere->moveRowUp(j - 1);
    RemoveKey(*m_grdFIELD, *m_grdKey, k);
    SearchTablesByKeys();
  }
  if (m_grdKey->Rows() < 2)
    disableTableJobs();
  m_frmWhere->hideRow(m_grdKey->Rows() - 1);
}

QList<JobFilterRow> FDBSWEEP::filterRows() {
  QList<JobFilterRow> rows;
  // It walks the key grid as the user would, so the grid's current cell ends on the last key.
  m_grdKey->setCol(0);
  for (int k = 1; k < m_grdKey->Rows(); ++k) {
    m_grdKey->setRow(k);
    const int i = k - 1;
    rows.append({m_state.gColumns.at(0, m_grdKey->Text().toInt()), m_frmWhere->mode(i), m_frmWhere->value1(i),
                 m_frmWhere->value2(i)});
  }
  return rows;
}

QString FDBSWEEP::fWhere() { return FilterRowsWhere(filterRows()); }

QString FDBSWEEP::FullFilter() { return RowFilter::FullFilter(fWhere(), m_txtAddWhere->text()); }

void FDBSWEEP::searchTables(const QStringList& columns) {
  const MasterTable master = TableMasterSettings(*m_state.gRegistry);
  disableTableJobs();
  lstCountClear();
  m_lstTable->clear();
  const bool hasMaster = TableMasterExists(m_state.gDatabase.get(), m_state.gUser, master.table);
  // Searching switched off: the list only empties.
  if (!m_chkLstTable->isChecked() || columns.isEmpty())
    return;
  const HourGlass wait;
  fillTargets(TableSearchSql(m_state.gUser, columns, hasMaster ? &master : nullptr));
}

void FDBSWEEP::SearchTablesByKeys() {
  // A table of one column cannot share keys with anything worth a search.
  if (m_grdFIELD->Rows() <= 2)
    return;
  QStringList columns;
  for (int k = 1; k < m_grdKey->Rows(); ++k)
    columns << m_state.gColumns.at(0, m_grdKey->TextMatrix(k, 0).toInt());
  searchTables(columns);
}

void FDBSWEEP::SearchTablesByColumn(const QString& name) {
  if (!name.isEmpty())
    searchTables({name});
}

void FDBSWEEP::fillTargets(const QString& sql) {
  std::optional<TextTable> targets = ReadTableSearch(m_state.gDatabase.get(), sql, m_state.gNameMasters);
  disableTableJobs();
  m_lstTable->clear();
  m_state.gTargets = targets ? std::move(*targets) : TextTable(2);
  const int field = m_chkTabNM->isChecked() ? 0 : 1;
  for (int r = 1; r <= m_state.gTargets.upper(); ++r)
    AddListItemWithData(m_lstTable, m_state.gTargets.at(field, r), r);
}

void FDBSWEEP::cmdSearch_Click() {
  FORA_COL dialog(m_state.gColSearchName, this);
  dialog.exec();
  SearchTablesByColumn(m_state.gColSearchName.toUpper());
}

void FDBSWEEP::updateJobButtons() {
  m_frame->setTableJobsEnabled(m_grdKey->Rows() >= 2 && !m_lstTable->selectedItems().isEmpty());
}

void FDBSWEEP::selectAllTargets(bool selected) {
  if (m_popPop->target() != m_lstTable)
    return;
  SelectEveryItem(*m_lstTable, selected);
  updateJobButtons();
}

void FDBSWEEP::pickValue(int row, QLineEdit* box) {
  const int v = m_grdKey->TextMatrix(row + 1, 0).toInt();
  m_grdKey->setRow(row + 1);
  m_grdKey->setCol(0);
  m_state.gPickedValue = box->text();
  m_state.gPickColumnID = m_state.gColumns.at(0, v);
  m_state.gPickColumnName = m_state.gColumns.at(1, v);
  FDBSWEEP_DT viewer(m_state, m_services.boxes, m_frame->u(), m_popPop, this);
  viewer.exec();
  box->setText(m_state.gPickedValue);
}

void FDBSWEEP::appendDroppedName() {
  QString name;
  if (m_browser->DragSource() == u"Table") {
    name = m_state.gTables.at(0, m_grdTable->Row());
  } else {
    const FlexGrid* source = m_browser->DragSource() == u"key" ? m_grdKey : m_grdFIELD;
    name = m_state.gColumns.at(0, source->TextMatrix(source->Row(), 0).toInt());
  }
  m_txtAddWhere->setText(m_txtAddWhere->text() + u' ' + name + u' ');
}

void FDBSWEEP::showIndexBrowser() {
  // One index browser at a time: while it is open a further drop only brings it forward, with
  // the table it already shows. A closed one is on its way out.
  if (!m_idx || !m_idx->isVisible()) {
    m_idx = new FDBSWEEP_Idx(m_state, m_services, *m_grdTable, *m_printer, this);
    serveLaunchers(m_idx->frame());
    m_idx->load();
  }
  m_idx->show();
  m_idx->raise();
  m_idx->activateWindow();
}

bool FDBSWEEP::eventFilter(QObject* watched, QEvent* event) {
  // Only a table row opens the index browser; anything else dropped on its label does nothing.
  if (watched == m_lblIdxDrop) {
    const QEvent::Type type = event->type();
    if (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop) {
      auto* drop = static_cast<QDropEvent*>(event);
      if (DragKindOf(drop->mimeData(), m_lblIdxDrop) != u"Table")
        return false;
      drop->acceptProposedAction();
      if (type == QEvent::Drop)
        showIndexBrowser();
      return true;
    }
  }
  // Rows dragged from the browser add their ID at the end of the extra condition; anything else
  // dropped there is ordinary text for the line edit to handle.
  if (watched == m_txtAddWhere) {
    const QEvent::Type type = event->type();
    if (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop) {
      auto* drop = static_cast<QDropEvent*>(event);
      if (!DragKindOf(drop->mimeData(), m_txtAddWhere).isEmpty()) {
        drop->acceptProposedAction();
        if (type == QEvent::Drop)
          appendDroppedName();
        return true;
      }
    }
  }
  return QMainWindow::eventFilter(watched, event);
}
