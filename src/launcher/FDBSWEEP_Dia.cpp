#include "launcher/FDBSWEEP_Dia.h"

#include "common/BDBSWEEP.h"
#include "launcher/LauncherSettings.h"
#include "launcher/ProgramIcon.h"
#include "launcher/clsFDia.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "widgets/Twips.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int IconTwips = 500;
const QString Circled = QStringLiteral("①②③④⑤⑥⑦⑧⑨⑩");

} // namespace

FDBSWEEP_Dia::FDBSWEEP_Dia(BDBSWEEP& state, Services& services, QWidget* parent)
    : QDialog(parent), m_state(state), m_services(services) {
  setObjectName(QStringLiteral("FDBSWEEP_Dia"));
  setWindowTitle(QStringLiteral("オプション設定"));
  setModal(true);
  auto* ok = new QPushButton(QStringLiteral("OK"), this);
  auto* cancel = new QPushButton(QStringLiteral("ｷｬﾝｾﾙ"), this);
  ok->setObjectName(QStringLiteral("OKButton"));
  cancel->setObjectName(QStringLiteral("CancelButton"));
  // Enter moves on like Tab in the entries; it must not press OK on the way.
  for (QPushButton* button : {ok, cancel})
    button->setAutoDefault(false);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(buildEntries());
  layout->addWidget(buildNameMasters());
  layout->addLayout(buttons);
  connect(ok, &QPushButton::clicked, this, &FDBSWEEP_Dia::OKButton_Click);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  load();
}

QWidget* FDBSWEEP_Dia::buildEntries() {
  auto* box = new QWidget(this);
  auto* grid = new QGridLayout(box);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->addWidget(new QLabel(QStringLiteral("ボタン表示"), box), 0, 1);
  grid->addWidget(new QLabel(QStringLiteral("実行ファイル"), box), 0, 2);
  grid->addWidget(new QLabel(QStringLiteral("引継情報"), box), 0, 5);
  const int icon = twipsToPixelsX(this, IconTwips);
  for (int i = 0; i < LauncherEntries; ++i) {
    Entry& e = m_entries[size_t(i)];
    const QString n = QString::number(i);
    e.txtTitle = new QLineEdit(box);
    e.txtTitle->setMaxLength(LongestCaption);
    e.txtTitle->setFixedWidth(twipsToPixelsX(this, 1300));
    e.txtName = new QLineEdit(box);
    e.txtName->setMinimumWidth(twipsToPixelsX(this, 4200));
    e.cmdView = new QPushButton(QStringLiteral("..."), box);
    e.cmdView->setAutoDefault(false);
    e.cmdView->setFixedWidth(twipsToPixelsX(this, 450));
    e.Icon1 = new QLabel(box);
    e.Icon1->setFixedSize(icon, icon);
    e.cmbPara = new QComboBox(box);
    e.txtTitle->setObjectName(QStringLiteral("txtTitle_") + n);
    e.txtName->setObjectName(QStringLiteral("txtName_") + n);
    e.cmdView->setObjectName(QStringLiteral("cmdView_") + n);
    e.Icon1->setObjectName(QStringLiteral("Icon1_") + n);
    e.cmbPara->setObjectName(QStringLiteral("cmbPara_") + n);
    grid->addWidget(new QLabel(Circled.mid(i, 1), box), i + 1, 0);
    grid->addWidget(e.txtTitle, i + 1, 1);
    grid->addWidget(e.txtName, i + 1, 2);
    grid->addWidget(e.cmdView, i + 1, 3);
    grid->addWidget(e.Icon1, i + 1, 4);
    grid->addWidget(e.cmbPara, i + 1, 5);
    for (QWidget* w : {static_cast<QWidget*>(e.txtTitle), static_cast<QWidget*>(e.txtName),
                       static_cast<QWidget*>(e.cmbPara)})
      w->installEventFilter(this);
    connect(e.txtName, &QLineEdit::textChanged, this, [this, i] { showIcon(i); });
    connect(e.cmdView, &QPushButton::clicked, this, [this, i] { cmdView_Click(i); });
  }
  return box;
}

QWidget* FDBSWEEP_Dia::buildNameMasters() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  struct Frame {
    const char* name;
    QString caption;
    std::array<QLineEdit**, 3> boxes;
    std::array<const char*, 3> boxNames;
    const char* initName;
    bool tables;
  };
  const NameMasterNames defaults;
  const Frame frames[] = {
      {"frmTBLM", QStringLiteral("ﾃｰﾌﾞﾙ名変換ﾃｰﾌﾞﾙ設定"), {&m_txtTBLM, &m_txtTBLID, &m_txtTBLNM},
       {"txtTBLM", "txtTBLID", "txtTBLNM"}, "cmdINITTBLM", true},
      {"frmCLMM", QStringLiteral("項目名変換ﾃｰﾌﾞﾙ設定"), {&m_txtCLMM, &m_txtCLMID, &m_txtCLMNM},
       {"txtCLMM", "txtCLMID", "txtCLMNM"}, "cmdINITCLMM", false}};
  const QString labels[] = {QStringLiteral("テーブルID"), QStringLiteral("├ＩＤ項目"), QStringLiteral("└名称項目")};
  for (const Frame& f : frames) {
    auto* frame = new QGroupBox(f.caption, row);
    frame->setObjectName(QString::fromLatin1(f.name));
    auto* grid = new QGridLayout(frame);
    for (int k = 0; k < 3; ++k) {
      *f.boxes[size_t(k)] = new QLineEdit(frame);
      (*f.boxes[size_t(k)])->setObjectName(QString::fromLatin1(f.boxNames[size_t(k)]));
      grid->addWidget(new QLabel(labels[k], frame), k, 0);
      grid->addWidget(*f.boxes[size_t(k)], k, 1);
    }
    auto* init = new QPushButton(QStringLiteral("初期値"), frame);
    init->setObjectName(QString::fromLatin1(f.initName));
    init->setAutoDefault(false);
    grid->addWidget(init, 3, 1, Qt::AlignRight);
    // Each frame's defaults, and nothing else; saved only by OK.
    const std::array<QLineEdit*, 3> boxes = {*f.boxes[0], *f.boxes[1], *f.boxes[2]};
    const std::array<QString, 3> values =
        f.tables ? std::array<QString, 3>{defaults.tableMaster, defaults.tableId, defaults.tableName}
                 : std::array<QString, 3>{defaults.columnMaster, defaults.columnId, defaults.columnName};
    connect(init, &QPushButton::clicked, this, [boxes, values] {
      for (size_t k = 0; k < 3; ++k)
        boxes[k]->setText(values[k]);
    });
    layout->addWidget(frame);
  }
  return row;
}

void FDBSWEEP_Dia::load() {
  for (int i = 0; i < LauncherEntries; ++i) {
    Entry& e = m_entries[size_t(i)];
    const LauncherEntry saved = ReadLauncherEntry(*m_state.gRegistry, i);
    e.cmbPara->clear();
    e.cmbPara->addItems(HandOverForms());
    e.txtTitle->setText(saved.caption);
    e.txtName->setText(saved.program);
    e.cmbPara->setCurrentIndex(saved.form >= 0 && saved.form < e.cmbPara->count() ? saved.form : -1);
    showIcon(i);
  }
  const NameMasterNames names = NameMasterNames::read(*m_state.gRegistry);
  m_txtTBLM->setText(names.tableMaster);
  m_txtTBLID->setText(names.tableId);
  m_txtTBLNM->setText(names.tableName);
  m_txtCLMM->setText(names.columnMaster);
  m_txtCLMID->setText(names.columnId);
  m_txtCLMNM->setText(names.columnName);
}

void FDBSWEEP_Dia::showIcon(int i) {
  Entry& e = m_entries[size_t(i)];
  const QIcon icon = ProgramIcon(e.txtName->text());
  if (icon.isNull())
    e.Icon1->clear();
  else
    e.Icon1->setPixmap(icon.pixmap(e.Icon1->size()));
}

void FDBSWEEP_Dia::cmdView_Click(int i) {
  Entry& e = m_entries[size_t(i)];
  const QString path = e.txtName->text();
  clsFDia dialog(m_services.fileDialogs);
  // A path proposes its own folder and name; a bare name is looked for beside this program.
  const qsizetype slash = path.lastIndexOf(u'/');
  dialog.InitialDir = slash >= 0 ? path.left(slash + 1) : m_services.env.db.programFolder;
  dialog.FileName = slash >= 0 ? path.mid(slash + 1) : path;
  dialog.DialogTitle = QStringLiteral("実行ﾌｧｲﾙ参照");
  dialog.Filter = QStringLiteral("実行ﾌｧｲﾙ (*)|*|すべてのﾌｧｲﾙ (*)|*");
  dialog.Flags = clsFDia::ProgramsOnly;
  bool ok = false;
  dialog.Show(true, ok);
  if (ok)
    e.txtName->setText(dialog.FileName);
}

void FDBSWEEP_Dia::OKButton_Click() {
  for (int i = 0; i < LauncherEntries; ++i) {
    const Entry& e = m_entries[size_t(i)];
    WriteLauncherEntry(*m_state.gRegistry, i, {e.txtTitle->text(), e.txtName->text(), e.cmbPara->currentIndex()});
  }
  NameMasterNames names;
  names.tableMaster = m_txtTBLM->text();
  names.tableId = m_txtTBLID->text();
  names.tableName = m_txtTBLNM->text();
  names.columnMaster = m_txtCLMM->text();
  names.columnId = m_txtCLMID->text();
  names.columnName = m_txtCLMNM->text();
  names.write(*m_state.gRegistry);
  accept();
}

bool FDBSWEEP_Dia::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      focusNextChild();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}
