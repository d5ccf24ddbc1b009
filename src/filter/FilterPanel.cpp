#include "filter/FilterPanel.h"

#include "filter/RowFilter.h"

#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>

FilterPanel::FilterPanel(QWidget* parent) : QGroupBox(QStringLiteral("絞り込み条件"), parent) {
  setObjectName(QStringLiteral("frmWhere"));
  const QString valueTip = QStringLiteral("ﾀﾞﾌﾞﾙｸﾘｯｸでﾃﾞｰﾀを表示できます");
  for (size_t i = 0; i < RowCount; ++i) {
    m_txt1[i] = new QLineEdit(this);
    m_txt1[i]->setObjectName(QStringLiteral("txt1_%1").arg(i));
    m_lblX[i] = new QLabel(RowFilter::All, this);
    m_lblX[i]->setObjectName(QStringLiteral("lblX_%1").arg(i));
    m_lblX[i]->setAlignment(Qt::AlignCenter);
    m_lblX[i]->setFrameShape(QFrame::Panel);
    m_lblX[i]->setFrameShadow(QFrame::Raised);
    m_lblX[i]->setCursor(Qt::PointingHandCursor);
    m_lblX[i]->setToolTip(QStringLiteral("ｸﾘｯｸで絞り込み方法を切替ます"));
    m_txt2[i] = new QLineEdit(this);
    m_txt2[i]->setObjectName(QStringLiteral("txt2_%1").arg(i));
    for (QLineEdit* box : {m_txt1[i], m_txt2[i]}) {
      box->setToolTip(valueTip);
      box->installEventFilter(this);
    }
    m_lblX[i]->installEventFilter(this);
  }
  // A filter row appears with the key column it belongs to.
  hideAll();
}

QString FilterPanel::mode(int row) const { return m_lblX[size_t(row)]->text(); }
QString FilterPanel::value1(int row) const { return m_txt1[size_t(row)]->text(); }
QString FilterPanel::value2(int row) const { return m_txt2[size_t(row)]->text(); }

void FilterPanel::startRow(int row, int maxLength) {
  const auto i = size_t(row);
  m_lblX[i]->setText(RowFilter::All);
  m_lblX[i]->show();
  // QLineEdit knows no "unlimited"; its own largest length is the same thing.
  const int length = maxLength > 0 ? maxLength : QLineEdit().maxLength();
  for (QLineEdit* box : {m_txt1[i], m_txt2[i]}) {
    box->clear();
    box->setMaxLength(length);
    box->hide();
  }
}

void FilterPanel::hideRow(int row) {
  const auto i = size_t(row);
  m_txt1[i]->hide();
  m_lblX[i]->hide();
  m_txt2[i]->hide();
}

void FilterPanel::hideAll() {
  for (int i = 0; i < RowCount; ++i)
    hideRow(i);
}

void FilterPanel::moveRowUp(int from) {
  const auto src = size_t(from);
  const auto dst = src - 1;
  m_lblX[dst]->setText(m_lblX[src]->text());
  m_lblX[dst]->setVisible(!m_lblX[src]->isHidden());
  const std::array<std::pair<QLineEdit*, QLineEdit*>, 2> boxes = {
      std::pair{m_txt1[src], m_txt1[dst]}, std::pair{m_txt2[src], m_txt2[dst]}};
  for (const auto& [source, target] : boxes) {
    // The length first: a shorter limit would cut the text being moved in.
    target->setMaxLength(source->maxLength());
    target->setText(source->text());
    target->setVisible(!source->isHidden());
  }
}

void FilterPanel::placeRows(int left, int top, int pitch, int boxWidth, int labelWidth, int gap) {
  for (size_t i = 0; i < RowCount; ++i) {
    const int y = top + int(i) * pitch;
    m_txt1[i]->setGeometry(left, y, boxWidth, pitch - 1);
    m_lblX[i]->setGeometry(left + boxWidth + gap, y, labelWidth, pitch - 1);
    m_txt2[i]->setGeometry(left + boxWidth + gap + labelWidth + gap, y, boxWidth, pitch - 1);
  }
}

void FilterPanel::setMode(int row, const QString& mode) {
  const auto i = size_t(row);
  m_lblX[i]->setText(mode);
  // Hiding a box keeps its text: cycling back to a mode brings the value back.
  m_txt1[i]->setVisible(RowFilter::ShowsValue1(mode));
  m_txt2[i]->setVisible(RowFilter::ShowsValue2(mode));
}

bool FilterPanel::eventFilter(QObject* watched, QEvent* event) {
  for (int i = 0; i < RowCount; ++i) {
    const auto r = size_t(i);
    if (watched == m_lblX[r] && event->type() == QEvent::MouseButtonPress &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
      setMode(i, RowFilter::NextMode(m_lblX[r]->text()));
      return true;
    }
    if ((watched == m_txt1[r] || watched == m_txt2[r]) && event->type() == QEvent::MouseButtonDblClick) {
      Q_EMIT pickValue(i, static_cast<QLineEdit*>(watched));
      return true;
    }
  }
  return QGroupBox::eventFilter(watched, event);
}
