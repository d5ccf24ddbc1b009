#include "export/FORA_Select.h"

#include "app/ColumnInfo.h"
#include "app/JVK_CmnUi.h"
#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "export/ExportSettings.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "services/AppEnvironment.h"
#include "services/FileDialogs.h"
#include "services/MessageBoxes.h"
#include "services/Services.h"
#include "widgets/FlexGrid.h"
#include "widgets/HourGlass.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QStyle>
#include <QTimer>

#include <exception>

namespace {

constexpr int DesignWidth = 7800; // twips
constexpr int GridLeft = 120;
constexpr int Columns = 5;
const QString Tab = QStringLiteral("\t");
const QString Failed = QStringLiteral("×");
constexpr int LongestValueShown = 100; // characters of an unwritable value quoted in its message
constexpr int CellMargin = 120;        // twips a grid cell needs besides its text's own width

QString Rows(qint64 n) { return QLocale(QLocale::English).toString(n) + QStringLiteral("件"); }

} // namespace

FORA_Select::FORA_Select(BDBSWEEP& state, Services& services, JobPlan plan, StatementRunner& statements,
                         QWidget* parent)
    : QDialog(parent), m_state(state), m_services(services), m_plan(std::move(plan)), m_statements(statements),
      m_txtPath(new QLineEdit(this)), m_cmdView(new QPushButton(QStringLiteral("..."), this)),
      m_txtOutName(new QLineEdit(this)), m_grdCSV(new FlexGrid(this)), m_option1(nullptr), m_option2(nullptr),
      m_option3(nullptr), m_txtSepChara(nullptr), m_txtStrSep(new QLineEdit(this)),
      m_check1(new QCheckBox(QStringLiteral("項目名出力有無"), this)),
      m_chkCopy(new QCheckBox(QStringLiteral("クリップボード出力"), this)),
      m_cmdGo(new QPushButton(QStringLiteral("実行"), this)), m_command2(new QPushButton(QStringLiteral("取消"), this)),
      m_progress(new QTimer(this)) {
  setObjectName(QStringLiteral("FORA_Select"));
  setWindowTitle(QStringLiteral("ファイル出力実行"));
  setModal(true);
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  const auto place = [&](QWidget* w, int left, int top, int width, int height) {
    w->setGeometry(px(left), px(top), px(width), px(height));
  };

  auto* frame = new QGroupBox(QStringLiteral("区切り文字"), this);
  m_option1 = new QRadioButton(QStringLiteral("カンマ"), frame);
  m_option2 = new QRadioButton(QStringLiteral("タブ"), frame);
  m_option3 = new QRadioButton(QStringLiteral("指定"), frame);
  m_txtSepChara = new QLineEdit(frame);
  m_txtSepChara->setMaxLength(1);
  const std::pair<QObject*, const char*> names[] = {
      {m_txtPath, "txtPath"},     {m_cmdView, "cmdView"},         {m_txtOutName, "txtOutName"},
      {m_grdCSV, "grdCSV"},       {frame, "Frame1"},              {m_option1, "Option1"},
      {m_option2, "Option2"},     {m_option3, "Option3"},         {m_txtSepChara, "txtSepChara"},
      {m_txtStrSep, "txtStrSep"}, {m_check1, "Check1"},           {m_chkCopy, "chkCopy"},
      {m_cmdGo, "cmdGo"},         {m_command2, "Command2"},       {m_progress, "timProgress"}};
  for (const auto& [object, name] : names)
    object->setObjectName(QString::fromLatin1(name));

  place(new QLabel(QStringLiteral("出力先パス"), this), 120, 150, 1400, 270);
  place(m_txtPath, 1560, 120, 5460, 300);
  place(m_cmdView, 7080, 120, 450, 300);
  place(new QLabel(QStringLiteral("出力ファイル名"), this), 120, 540, 1400, 270);
  place(m_txtOutName, 1560, 510, 3000, 300);
  place(m_grdCSV, GridLeft, 930, DesignWidth - 390, 2700);
  place(frame, 120, 3750, 4200, 780);
  place(m_option1, 150, 330, 900, 300);
  place(m_option2, 1080, 330, 800, 300);
  place(m_option3, 1950, 330, 800, 300);
  place(m_txtSepChara, 2800, 300, 450, 330);
  place(new QLabel(QStringLiteral("文字列区切り"), this), 4500, 3840, 1300, 270);
  place(m_txtStrSep, 5850, 3810, 450, 300);
  place(m_check1, 4500, 4200, 3000, 270);
  place(m_chkCopy, 4500, 4500, 3000, 270);
  place(m_cmdGo, 4800, 4920, 1200, 420);
  place(m_command2, 6120, 4920, 1200, 420);
  resize(px(DesignWidth), px(5500));

  // The grid as the file output job finds it before it lists its tables.
  m_grdCSV->setCols(Columns);
  m_grdCSV->setRows(1);
  const int designWidths[Columns] = {400, 1500, 1800, 1900, 1100};
  for (int c = 0; c < Columns; ++c)
    m_grdCSV->setColWidth(c, designWidths[c]);

  m_progress->setInterval(100);
  connect(m_cmdView, &QPushButton::clicked, this, &FORA_Select::cmdView_Click);
  connect(m_grdCSV, &FlexGrid::Click, this, &FORA_Select::grdCSV_Click);
  connect(m_txtOutName, &QLineEdit::textEdited, this, &FORA_Select::txtOutName_Change);
  for (QRadioButton* option : {m_option1, m_option2, m_option3})
    connect(option, &QRadioButton::toggled, this, [this] { m_txtSepChara->setEnabled(m_option3->isChecked()); });
  connect(m_cmdGo, &QPushButton::clicked, this, &FORA_Select::cmdGo_Click);
  connect(m_command2, &QPushButton::clicked, this, &QDialog::reject);
  loadSettings();
}

FORA_Select::~FORA_Select() = default;

void FORA_Select::loadSettings() {
  const ExportSettings saved =
      ExportSettings::read(*m_state.gRegistry, DefaultExportFolder(m_services.env.db.programFolder));
  m_txtPath->setText(saved.outPath);
  if (saved.separator == u",") {
    m_option1->setChecked(true);
  } else if (saved.separator == Tab) {
    m_option2->setChecked(true);
  } else {
    m_option3->setChecked(true);
    m_txtSepChara->setText(saved.separator);
  }
  m_txtSepChara->setEnabled(m_option3->isChecked());
  m_check1->setChecked(saved.itemId);
  m_chkCopy->setChecked(saved.toClipboard);
  m_txtStrSep->setText(saved.stringSeparator);
  m_encoding = saved.encoding;
}

int FORA_Select::textTwips(const QString& text) const {
  return pixelsToTwipsX(this, m_grdCSV->fontMetrics().horizontalAdvance(text)) + CellMargin;
}

void FORA_Select::fitColumn(int row, int col, int margin) {
  const int textWidth = textTwips(m_grdCSV->TextMatrix(row, col));
  if (textWidth > m_grdCSV->ColWidth(col))
    m_grdCSV->setColWidth(col, textWidth);
  // The margin counts the grid's own frame and scroll bar on top, so the columns are seen whole.
  int gridWidth = margin + pixelsToTwipsX(this, m_grdCSV->style()->pixelMetric(QStyle::PM_ScrollBarExtent) +
                                                    2 * m_grdCSV->frameWidth());
  for (int c = 0; c < Columns; ++c)
    gridWidth += m_grdCSV->ColWidth(c);
  m_grdCSV->resize(twipsToPixelsX(this, gridWidth), m_grdCSV->height());
  // The dialog grows to hold the grid with the margin it has on its left on its right too.
  const int needed = GridLeft + gridWidth + GridLeft;
  if (needed > pixelsToTwipsX(this, width()))
    resize(twipsToPixelsX(this, needed), height());
}

void FORA_Select::prepare(const QList<JobTarget>& targets) {
  m_grdCSV->setRows(1);
  m_grdCSV->setCols(Columns);
  const QString headings[Columns] = {QString(), QStringLiteral("Table"), QStringLiteral("ﾃｰﾌﾞﾙ"),
                                     QStringLiteral("出力ﾌｧｲﾙ名"), QStringLiteral("結果")};
  for (int c = 0; c < Columns; ++c)
    m_grdCSV->setTextMatrix(0, c, headings[c]);
  for (const JobTarget& target : targets) {
    if (m_grdCSV->Rows() == 1)
      for (int c = 0; c < Columns; ++c)
        m_grdCSV->setColWidth(c, textTwips(QStringLiteral("99")));
    const int r = m_grdCSV->Rows();
    m_grdCSV->setRows(r + 1);
    m_grdCSV->setRow(r);
    const QString cells[Columns] = {QString::number(r), target.id, target.name, target.id + QStringLiteral(".dat"),
                                    QString()};
    for (int c = 0; c < Columns; ++c) {
      m_grdCSV->setTextMatrix(r, c, cells[c]);
      fitColumn(r, c, 300);
    }
  }
  // The list is read from its top, whatever row was added last.
  if (m_grdCSV->Rows() > 1)
    m_grdCSV->setRow(1);
}

void FORA_Select::cmdView_Click() {
  const QString folder = m_services.fileDialogs.BrowseForFolder(QStringLiteral("ファイルの出力先を指定して下さい"),
                                                                m_txtPath->text());
  if (!folder.isEmpty())
    m_txtPath->setText(folder);
}

void FORA_Select::grdCSV_Click() {
  if (m_grdCSV->Row() < 1)
    return;
  m_grdCSV->setCol(3);
  m_txtOutName->setText(m_grdCSV->Text());
}

void FORA_Select::txtOutName_Change() {
  // Before any table is chosen there is no row to rename: the heading stays.
  if (m_grdCSV->Row() < 1)
    return;
  m_grdCSV->setCol(3);
  m_grdCSV->setText(m_txtOutName->text());
  fitColumn(m_grdCSV->Row(), 3, 300);
}

bool FORA_Select::choicesRunnable(const ExportSettings& choices) {
  const auto refuse = [this](const QString& text) {
    m_services.boxes.show(text, QStringLiteral("エラー"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    return false;
  };
  // Without a separator every line would lose its last character to the separator's removal.
  if (choices.separator.isEmpty())
    return refuse(QStringLiteral("区切り文字を指定してください。"));
  if (choices.toClipboard)
    return true;
  const QFileInfo folder(choices.outPath);
  if (choices.outPath.isEmpty() || !folder.isDir())
    return refuse(QStringLiteral("出力先パスのフォルダがありません。\n") + choices.outPath);
  if (!folder.isWritable())
    return refuse(QStringLiteral("出力先パスのフォルダに書き込めません。\n") + choices.outPath);
  return true;
}

void FORA_Select::cmdGo_Click() {
  QString path = m_txtPath->text();
  if (path.size() > 1 && (path.endsWith(u'\\') || path.endsWith(u'/')))
    path.chop(1);
  m_txtPath->setText(path);
  ExportSettings choices;
  choices.outPath = path;
  choices.encoding = m_encoding;
  choices.separator = m_option1->isChecked() ? QStringLiteral(",")
                      : m_option2->isChecked() ? Tab
                                               : m_txtSepChara->text();
  choices.itemId = m_check1->isChecked();
  choices.toClipboard = m_chkCopy->isChecked();
  choices.stringSeparator = m_txtStrSep->text();
  if (!choicesRunnable(choices))
    return;
  choices.write(*m_state.gRegistry);

  setRunning(true);
  const auto done = qScopeGuard([this] { setRunning(false); });
  for (int r = 1; r < m_grdCSV->Rows(); ++r) {
    const QString table = m_grdCSV->TextMatrix(r, 1);
    const QString file = path + QDir::separator() + m_grdCSV->TextMatrix(r, 3);
    QString text;
    const CsvTableResult result = exportTable(table, file, choices, text, r);
    if (result.outcome == CsvTableResult::Outcome::Written) {
      m_grdCSV->setTextMatrix(r, 4, Rows(result.rows));
      fitColumn(r, 4, 100);
      if (choices.toClipboard)
        CopyTextToClipboard(text);
    } else {
      m_grdCSV->setTextMatrix(r, 4, Failed);
      showOutcome(table, result, file);
    }
    if (choices.toClipboard)
      m_services.boxes.show(QStringLiteral("[") + table + QStringLiteral("]をクリップボードへコピーしました"),
                            QStringLiteral("クリップボード出力"), MessageBoxes::Buttons::Ok,
                            MessageBoxes::Icon::Information);
  }
  m_services.boxes.show(QStringLiteral("データ出力が終了しました"), QStringLiteral("DBSWEEP～"),
                        MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Information);
  accept();
}

CsvTableResult FORA_Select::exportTable(const QString& table, const QString& fileName, const ExportSettings& choices,
                                        QString& text, int row) {
  m_state.gInfoTable = table;
  const QString sql = m_plan.selectSql({table, QString(), row});
  m_state.gLastSql = sql;
  m_state.gLastWhere = m_plan.where();
  const HourGlass wait;
  // The rows stream through once: nothing keeps a million of them in memory.
  std::unique_ptr<OraDynaset> rows;
  qint64 total = 0;
  try {
    m_statements.run([&rows, &total, &sql, database = m_state.gDatabase] {
      if (!database)
        throw NotConnected();
      rows = database->CreateDynaset(sql, OraDynaset::NoCache);
      total = rows->RecordCount();
    });
  } catch (const std::exception& e) {
    return {CsvTableResult::Outcome::ReadFailed, 0, {}, QString::fromUtf8(e.what())};
  }
  if (LoadColumnInfo(m_state, m_services.boxes) == 0)
    return {CsvTableResult::Outcome::ReadFailed, 0, {}, {}};

  CsvWriter writer(CsvColumns(m_state.gColumnInfo), {choices.separator, choices.itemId, choices.stringSeparator});
  const auto showProgress = [this, &writer, row, total] {
    m_grdCSV->setTextMatrix(row, 4, QLocale(QLocale::English).toString(writer.progress()) + u'/' + Rows(total));
  };
  const auto progress = connect(m_progress, &QTimer::timeout, this, showProgress);
  m_progress->start();
  const auto stop = qScopeGuard([this, progress] {
    m_progress->stop();
    disconnect(progress);
  });
  CsvTableResult result;
  try {
    m_statements.run([&] {
      result = choices.toClipboard ? writer.writeText(*rows, text)
                                   : writer.writeFile(*rows, fileName, choices.encoding);
      rows->Close();
    });
  } catch (const std::exception& e) {
    return {CsvTableResult::Outcome::ReadFailed, writer.progress(), {}, QString::fromUtf8(e.what())};
  }
  return result;
}

void FORA_Select::showOutcome(const QString& table, const CsvTableResult& result, const QString& path) {
  switch (result.outcome) {
  case CsvTableResult::Outcome::CannotWrite:
    m_services.boxes.show(QStringLiteral("出力処理でエラーが発生しました。\n") + path + u'\n' + result.detail,
                          QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    break;
  case CsvTableResult::Outcome::Unencodable: {
    QString value = result.detail;
    if (value.size() > LongestValueShown)
      value = value.left(LongestValueShown) + QStringLiteral("…");
    m_services.boxes.show(QStringLiteral("テーブル %1 の項目 %2 に、Shift_JIS(CP932)で書けない文字を含む値があります。\n"
                                         "値: %3\n"
                                         "このテーブルは出力しませんでした。UTF-8で出力するには、設定 CSVEncoding を "
                                         "UTF-8 にしてください。")
                              .arg(table, result.column, value),
                          QStringLiteral("エラー"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    break;
  }
  case CsvTableResult::Outcome::ReadFailed:
  case CsvTableResult::Outcome::Written: break; // a table that cannot be read shows × and no message
  }
}

void FORA_Select::setRunning(bool running) {
  m_running = running;
  for (QWidget* w : std::initializer_list<QWidget*>{m_txtPath, m_cmdView, m_txtOutName, m_grdCSV, m_option1,
                                                   m_option2, m_option3, m_txtSepChara, m_txtStrSep, m_check1,
                                                   m_chkCopy, m_cmdGo, m_command2})
    w->setEnabled(!running && (w != m_txtSepChara || m_option3->isChecked()));
}

void FORA_Select::reject() {
  // The window's close button must not pull the dialog from under a table being written.
  if (!m_running)
    QDialog::reject();
}

void FORA_Select::closeEvent(QCloseEvent* event) {
  if (m_running)
    event->ignore();
  else
    QDialog::closeEvent(event);
}
