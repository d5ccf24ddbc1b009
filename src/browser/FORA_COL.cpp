#include "browser/FORA_COL.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

FORA_COL::FORA_COL(QString& columnName, QWidget* parent)
    : QDialog(parent), m_columnName(columnName), m_txtColNm(new QLineEdit(this)),
      m_cmdGo(new QPushButton(QStringLiteral("GO"), this)) {
  setObjectName(QStringLiteral("FORA_COL"));
  setWindowTitle(QStringLiteral("項目ＩＤ検索"));
  m_columnName.clear();
  auto* layout = new QHBoxLayout(this);
  layout->addWidget(new QLabel(QStringLiteral("項目ＩＤ："), this));
  m_txtColNm->setObjectName(QStringLiteral("txtColNm"));
  m_txtColNm->setMinimumWidth(200);
  layout->addWidget(m_txtColNm);
  m_cmdGo->setObjectName(QStringLiteral("cmdGo"));
  layout->addWidget(m_cmdGo);
  m_txtColNm->installEventFilter(this);
  connect(m_cmdGo, &QPushButton::clicked, this, [this] {
    m_columnName = m_txtColNm->text();
    accept();
  });
}

bool FORA_COL::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_txtColNm) {
    if (event->type() == QEvent::FocusIn) {
      // After the focus event itself, which would otherwise place the caret over the selection.
      QTimer::singleShot(0, m_txtColNm, &QLineEdit::selectAll);
    } else if (event->type() == QEvent::KeyPress) {
      const int key = static_cast<QKeyEvent*>(event)->key();
      // Enter moves on to GO, as a Tab would; a second Enter there starts the search.
      if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        m_cmdGo->setFocus(Qt::TabFocusReason);
        return true;
      }
    }
  }
  return QDialog::eventFilter(watched, event);
}
