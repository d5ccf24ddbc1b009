// The index browser's content: the constraint and index-column catalogues, the keys, the index
// search and the plan its jobs work on.
#include "browser/FDBSWEEP_Idx.h"

#include "app/JVK_CmnUi.h"
#include "app/WindowFrame.h"
#include "browser/BrowserGrids.h"
#include "browser/CatalogueSql.h"
#include "browser/Catalogues.h"
#include "browser/FORA_COL.h"
#include "common/BDBSWEEP.h"
#include "jobs/JobPlan.h"
#include "jobs/ResultList.h"
#include "services/MessageBoxes.h"
#include "services/Services.h"
#include "widgets/FlexGrid.h"
#include "widgets/HourGlass.h"
#include "widgets/PopPop.h"

#include <QCheckBox>
#include <QCursor>
#include <QHash>
#include <QListWidget>
#include <QPushButton>
#include <QSet>

#include <optional>

namespace {

void showConnectionFailure(MessageBoxes& boxes) {
  boxes.show(QStringLiteral("サーバーの接続に失敗しました。"), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok,
             MessageBoxes::Icon::Critical);
}

} // namespace

void FDBSWEEP_Idx::connectBrowser() {
  writeGridHeadings();
  m_grdIdxFld->setEnabled(false);
  m_grdKey->setEnabled(false);
  m_browser = new BrowserGrids(m_grdIndex, m_grdIdxFld, m_grdKey, this);
  connect(m_browser, &BrowserGrids::loadFields, this, &FDBSWEEP_Idx::LoadIndexColumns);
  connect(m_browser, &BrowserGrids::addKey, this, &FDBSWEEP_Idx::cmdKey_Click);
  connect(m_browser, &BrowserGrids::removeKey, this, &FDBSWEEP_Idx::cmdBack_Click);
  connect(m_browser, &BrowserGrids::fieldMenu, this, [this] { m_popPop->open(m_grdIdxFld, false, QCursor::pos()); });
  connect(m_cmdKey, &QPushButton::clicked, this, &FDBSWEEP_Idx::cmdKey_Click);
  connect(m_cmdBack, &QPushButton::clicked, this, &FDBSWEEP_Idx::cmdBack_Click);
  connect(m_cmdSearch, &QPushButton::clicked, this, &FDBSWEEP_Idx::cmdSearch_Click);
  connect(m_chkLstIndex, &QCheckBox::clicked, this, &FDBSWEEP_Idx::SearchIndexesByKeys);
  connect(m_chkTabNM, &QCheckBox::clicked, this, &FDBSWEEP_Idx::chkTabNM_Click);
  connect(m_chkFldNM, &QCheckBox::clicked, this, &FDBSWEEP_Idx::chkFldNM_Click);

  connect(m_lstIndex, &QListWidget::itemSelectionChanged, this, &FDBSWEEP_Idx::updateJobButtons);
  m_lstIndex->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(m_lstIndex, &QListWidget::customContextMenuRequested, this, [this](const QPoint& pos) {
    if (m_lstIndex->count() > 0)
      m_popPop->open(m_lstIndex, true, m_lstIndex->viewport()->mapToGlobal(pos));
  });
  connect(m_popPop, &PopPop::selectAll, this, &FDBSWEEP_Idx::selectAllHits);
}

void FDBSWEEP_Idx::writeGridHeadings() {
  const QStringList indexHeadings = {QStringLiteral("INDEX"), QStringLiteral("TYPE"), QStringLiteral("UNIQ")};
  for (int c = 0; c < 3; ++c)
    m_grdIndex->setTextMatrix(0, c, indexHeadings[c]);
  const QStringList fieldHeadings = {QString(), QStringLiteral("項目名"), QStringLiteral("位置"),
                                     QStringLiteral("長さ"), QStringLiteral("昇順")};
  for (int c = 0; c < 5; ++c)
    m_grdIdxFld->setTextMatrix(0, c, fieldHeadings[c]);
  const QStringList keyHeadings =
      fieldHeadings + QStringList{QString(), QStringLiteral("値１"), QString(), QStringLiteral("値２")};
  for (int c = 0; c < 9; ++c)
    m_grdKey->setTextMatrix(0, c, keyHeadings[c]);
}

void FDBSWEEP_Idx::LoadIndexCatalogue() {
  // The main window's table and its columns stay as they are: only its current row is read.
  m_tables.setCol(0);
  if (m_tables.Rows() < 2 || m_tables.Text().isEmpty())
    return;
  const int row = m_tables.Row();
  const QString table = m_state.gTables.at(0, row).trimmed();
  setWindowTitle(table + QStringLiteral("「") + m_state.gTables.at(1, row).trimmed() + QStringLiteral("」:DBSWEEP"));

  std::optional<TextTable> indexes;
  {
    const HourGlass wait;
    indexes = ReadIndexCatalogue(m_state.gDatabase.get(), m_state.gUser, table);
  }
  m_cmdSearch->setEnabled(false);
  if (indexes) {
    const int count = indexes->upper();
    m_grdIndex->setRows(count + 1);
    m_state.gIndexes.redim(count);
    m_state.gIndexColumns.redim(0);
    for (int r = 1; r <= count; ++r) {
      m_state.gIndexes.set(0, r, indexes->at(0, r));
      m_state.gIndexes.set(1, r, indexes->at(1, r));
      m_grdIndex->setTextMatrix(r, 1, indexes->at(2, r));
      m_grdIndex->setTextMatrix(r, 2, QString());
    }
    ShowIdsOrNames(*m_grdIndex, 0, m_state.gIndexes, m_chkTabNM->isChecked());
    m_grdIdxFld->setRows(1);
    clearHits();
    m_cmdSearch->setEnabled(true);
    // A fresh list: whichever index is clicked next shows its columns.
    m_curIndexID.clear();
    m_curIndexName.clear();
  } else {
    showConnectionFailure(m_services.boxes);
  }
  m_grdIdxFld->setEnabled(false);
  m_grdKey->setEnabled(false);
  m_grdKey->setRows(1);
}

void FDBSWEEP_Idx::LoadIndexColumns() {
  m_grdIndex->setCol(0);
  if (m_grdIndex->Rows() < 2 || m_grdIndex->Text().isEmpty())
    return;
  const int row = m_grdIndex->Row();
  const QString id = m_state.gIndexes.at(0, row).trimmed();
  if (id == m_curIndexID)
    return;
  m_curIndexID = id;
  m_curIndexName = m_state.gIndexes.at(1, row).trimmed();
  setWindowTitle(id + QStringLiteral("「") + m_curIndexName + QStringLiteral("」:DBSWEEP"));
  m_grdKey->setRows(1);
  m_lstIndex->clear();
  m_frame->setTableJobsEnabled(false);

  std::optional<TextTable> columns;
  {
    const HourGlass wait;
    columns = ReadIndexColumns(m_state.gDatabase.get(), m_state.gUser, id, ColumnMasterSettings(*m_state.gRegistry),
                               m_state.gNameMasters);
  }
  if (!columns) {
    showConnectionFailure(m_services.boxes);
    return;
  }
  m_grdIdxFld->setEnabled(true);
  m_grdKey->setEnabled(true);
  ShowFields(*m_grdIdxFld, m_state.gIndexColumns, *columns, m_chkFldNM->isChecked());
}

void FDBSWEEP_Idx::chkTabNM_Click() {
  const bool ids = m_chkTabNM->isChecked();
  ShowIdsOrNames(*m_grdIndex, 0, m_state.gIndexes, ids);
  for (int i = 0; i < m_lstIndex->count(); ++i) {
    QListWidgetItem* item = m_lstIndex->item(i);
    item->setText(m_hits.at(ids ? 0 : 1, item->data(Qt::UserRole).toInt()));
  }
}

void FDBSWEEP_Idx::chkFldNM_Click() {
  const bool ids = m_chkFldNM->isChecked();
  ShowIdsOrNames(*m_grdIdxFld, 1, m_state.gIndexColumns, ids);
  ShowKeyNames(*m_grdKey, m_state.gIndexColumns, ids);
}

void FDBSWEEP_Idx::cmdKey_Click() {
  // Any column of an index can be a key: without filter rows there is no value to type, so no
  // column type is refused.
  const int r = m_grdIdxFld->Row();
  if (r < 1 || m_grdIdxFld->Rows() < 2 || IsKeyField(*m_grdIdxFld, r) || !RoomForKey(*m_grdKey, m_services.boxes))
    return;
  AppendKey(*m_grdIdxFld, *m_grdKey, r);
  SearchIndexesByKeys();
}

void FDBSWEEP_Idx::cmdBack_Click() {
  const int k = m_grdKey->Row();
  if (k >= 1 && m_grdKey->Rows() > 1) {
    RemoveKey(*m_grdIdxFld, *m_grdKey, k);
    SearchIndexesByKeys();
  }
  if (m_grdKey->Rows() < 2)
    m_frame->setTableJobsEnabled(false);
}

void FDBSWEEP_Idx::clearHits() {
  m_frame->setTableJobsEnabled(false);
  m_frame->results()->clear();
  m_lstIndex->clear();
}

void FDBSWEEP_Idx::SearchIndexesByKeys() {
  // The same rule as the table search: a single column gives nothing worth a search.
  if (m_grdIdxFld->Rows() <= 2)
    return;
  clearHits();
  if (!m_chkLstIndex->isChecked())
    return;
  const HourGlass wait;
  QStringList columns;
  for (int k = 1; k < m_grdKey->Rows(); ++k)
    columns << m_state.gIndexColumns.at(0, m_grdKey->TextMatrix(k, 0).toInt());
  if (columns.isEmpty())
    return;
  std::optional<TextTable> hits =
      ReadIndexSearch(m_state.gDatabase.get(), m_state.gUser, IndexSearchSql(m_state.gUser, columns));
  m_hits = hits ? std::move(*hits) : TextTable(3);
  const int field = m_chkTabNM->isChecked() ? 0 : 1;
  for (int r = 1; r <= m_hits.upper(); ++r)
    AddListItemWithData(m_lstIndex, m_hits.at(field, r), r);
}

void FDBSWEEP_Idx::cmdSearch_Click() {
  FORA_COL dialog(m_state.gColSearchName, this);
  dialog.exec();
  if (!m_state.gColSearchName.isEmpty())
    clearHits();
}

void FDBSWEEP_Idx::updateJobButtons() {
  m_frame->setTableJobsEnabled(m_grdKey->Rows() >= 2 && !m_lstIndex->selectedItems().isEmpty());
}

void FDBSWEEP_Idx::selectAllHits(bool selected) {
  if (m_popPop->target() != m_lstIndex)
    return;
  SelectEveryItem(*m_lstIndex, selected);
  updateJobButtons();
}

JobPlan FDBSWEEP_Idx::takePlan() {
  // The jobs act on tables: two selected indexes of one table make one target, named as the
  // main window's table list names it.
  QHash<QString, QString> tableNames;
  for (int r = 1; r <= m_state.gTables.upper(); ++r)
    tableNames.insert(m_state.gTables.at(0, r), m_state.gTables.at(1, r));
  JobPlan plan;
  QSet<QString> taken;
  for (int i = 0; i < m_lstIndex->count(); ++i) {
    const QListWidgetItem* item = m_lstIndex->item(i);
    const QString table = m_hits.at(2, item->data(Qt::UserRole).toInt());
    if (!item->isSelected() || table.isEmpty() || taken.contains(table))
      continue;
    taken.insert(table);
    plan.targets.append({table, tableNames.value(table, table), i + 1});
  }
  if (m_grdKey->Rows() >= 2)
    plan.countColumn = m_state.gIndexColumns.at(0, m_grdKey->TextMatrix(1, 0).toInt()).trimmed();
  return plan;
}
