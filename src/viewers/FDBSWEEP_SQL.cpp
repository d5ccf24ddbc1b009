#include "viewers/FDBSWEEP_SQL.h"

#include "app/JVK_CmnUi.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

FDBSWEEP_SQL::FDBSWEEP_SQL(const QString& sql, QWidget* parent)
    : QDialog(parent), m_txtSql(new QPlainTextEdit(this)), m_cmdCopy(new QPushButton(QStringLiteral("Copy"), this)),
      m_cmdEnd(new QPushButton(QStringLiteral("閉じる"), this)) {
  setObjectName(QStringLiteral("FDBSWEEP_SQL"));
  setWindowTitle(QStringLiteral("SQL表示"));
  setModal(true);
  m_txtSql->setObjectName(QStringLiteral("txtSql"));
  m_cmdCopy->setObjectName(QStringLiteral("cmdCopy"));
  m_cmdEnd->setObjectName(QStringLiteral("cmdEnd"));

  // Statements are read column by column, so a fixed pitch; long lines wrap rather than hide.
  m_txtSql->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  m_txtSql->setLineWrapMode(QPlainTextEdit::WidgetWidth);
  m_txtSql->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  m_txtSql->setPlainText(sql);

  // Enter belongs to the text box, where it starts a new line, not to a default button.
  for (QPushButton* button : {m_cmdCopy, m_cmdEnd}) {
    button->setAutoDefault(false);
    button->setDefault(false);
  }
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(m_cmdCopy);
  buttons->addWidget(m_cmdEnd);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_txtSql, 1);
  layout->addLayout(buttons);
  resize(480, 260);

  connect(m_cmdCopy, &QPushButton::clicked, this, &FDBSWEEP_SQL::cmdCopy_Click);
  connect(m_cmdEnd, &QPushButton::clicked, this, &QDialog::accept);
}

void FDBSWEEP_SQL::cmdCopy_Click() {
  // What the box shows now, edits included: the user may have adjusted the statement to run it.
  CopyTextToClipboard(m_txtSql->toPlainText());
}
