#include "viewers/RefreshFrame.h"

#include "common/JVK_Cmn.h"
#include "widgets/Twips.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTimer>

#include <cmath>

namespace {

constexpr double LongestInterval = 65; // seconds: the timer's interval tops out at 65,535 ms

// The leading number of a text, as a user reads "12秒" as 12; 0 when it starts with none.
double leadingNumber(const QString& text) {
  static const QRegularExpression number(QStringLiteral("^\\s*[-+]?(\\d+\\.?\\d*|\\.\\d+)"));
  const QRegularExpressionMatch m = number.match(text);
  return m.hasMatch() ? m.captured(0).trimmed().toDouble() : 0.0;
}

} // namespace

RefreshFrame::RefreshFrame(int seconds, QWidget* parent)
    : QGroupBox(parent), m_chkTimer(new QCheckBox(QStringLiteral("定期更新"), this)), m_txtTimer(new QLineEdit(this)),
      m_UDTimer(new QSpinBox(this)), m_cmdRefresh(new QPushButton(QStringLiteral("最新"), this)),
      m_timTimer(new QTimer(this)) {
  setObjectName(QStringLiteral("frmUpd"));
  m_chkTimer->setObjectName(QStringLiteral("chkTimer"));
  m_txtTimer->setObjectName(QStringLiteral("txtTimer"));
  m_UDTimer->setObjectName(QStringLiteral("UDTimer"));
  m_cmdRefresh->setObjectName(QStringLiteral("cmdRefresh"));
  m_timTimer->setObjectName(QStringLiteral("timTimer"));

  // The arrows step the interval by a second, over the range the box accepts.
  m_UDTimer->setRange(0, int(LongestInterval));
  m_UDTimer->setValue(seconds);
  m_UDTimer->setButtonSymbols(QAbstractSpinBox::UpDownArrows);
  m_UDTimer->setFixedWidth(18);
  m_txtTimer->setMaxLength(2);
  m_txtTimer->setText(QString::number(seconds));
  m_txtTimer->setAlignment(Qt::AlignRight);
  m_timTimer->setInterval(seconds * 1000);
  auto* label = new QLabel(QStringLiteral("Sec間隔"), this);
  label->setObjectName(QStringLiteral("Label1"));
  const auto px = [this](int twips) { return twipsToPixelsX(this, twips); };
  m_chkTimer->setGeometry(px(120), px(60), px(1100), px(330));
  m_txtTimer->setGeometry(px(1260), px(60), px(500), px(330));
  m_UDTimer->setGeometry(px(1760), px(60), 18, px(330));
  label->setGeometry(px(1760) + 22, px(60), px(800), px(330));
  m_cmdRefresh->setGeometry(px(2960), px(30), px(900), px(390));
  resize(px(3980), px(480));

  connect(m_cmdRefresh, &QPushButton::clicked, this, &RefreshFrame::refreshRequested);
  connect(m_timTimer, &QTimer::timeout, this, [this] {
    if (!held())
      Q_EMIT refreshRequested();
  });
  connect(m_chkTimer, &QCheckBox::clicked, this, &RefreshFrame::chkTimer_Click);
  connect(m_txtTimer, &QLineEdit::textChanged, this, &RefreshFrame::txtTimer_Change);
  connect(m_UDTimer, &QSpinBox::valueChanged, this, [this](int value) {
    if (!m_rewriting)
      m_txtTimer->setText(QString::number(value));
  });
}

void RefreshFrame::chkTimer_Click() {
  if (m_chkTimer->isChecked()) {
    m_timTimer->setInterval(int(leadingNumber(m_txtTimer->text())) * 1000);
    // An interval of nothing would refresh without pause.
    if (m_timTimer->interval() > 0)
      m_timTimer->start();
  } else {
    m_timTimer->stop();
  }
}

void RefreshFrame::txtTimer_Change() {
  if (m_rewriting)
    return;
  m_rewriting = true;
  const double seconds = MinDouble(LongestInterval, leadingNumber(m_txtTimer->text()));
  const QString text = QString::number(seconds);
  if (m_txtTimer->text() != text)
    m_txtTimer->setText(text);
  m_UDTimer->setValue(int(seconds));
  m_rewriting = false;
  m_timTimer->setInterval(int(std::lround(seconds * 1000)));
  // Refreshes run whenever the box is ticked and there is an interval, so an interval that passes
  // through 0 while the user types does not end them for good.
  if (m_timTimer->interval() <= 0)
    m_timTimer->stop();
  else if (m_chkTimer->isChecked() && !m_timTimer->isActive())
    m_timTimer->start();
}
