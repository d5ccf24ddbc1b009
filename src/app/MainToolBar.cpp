#include "app/MainToolBar.h"

#include <QMenu>
#include <QToolButton>

MainToolBar::MainToolBar(QWidget* parent) : QToolBar(parent) {
  setObjectName(QStringLiteral("tbar"));
  setMovable(false);
  setToolButtonStyle(Qt::ToolButtonTextOnly);

  QMenu* connect = addDropDown(QStringLiteral("tbar_1"), QStringLiteral("接続"));
  m_logon = connect->addAction(QStringLiteral("接続"));
  m_clone = connect->addAction(QStringLiteral("クローン"));
  m_end = connect->addAction(QStringLiteral("終了"));

  QMenu* jobs = addDropDown(QStringLiteral("tbar_2"), QStringLiteral("処理"));
  for (const char16_t* caption : {u"件数", u"削除", u"データ", u"TableDrop", u"ﾌｧｲﾙ出力", u"RollBack", u"Commit"})
    m_jobs << jobs->addAction(QString::fromUtf16(caption));

  QMenu* print = addDropDown(QStringLiteral("tbar_3"), QStringLiteral("印刷"));
  m_printFont = print->addAction(QStringLiteral("印刷ﾌｫﾝﾄ"));
  m_printResult = print->addAction(QStringLiteral("結果印刷"));

  m_launcherMenu = addDropDown(QStringLiteral("tbar_4"), QStringLiteral("ﾗﾝﾁｬｰ"));

  QMenu* options = addDropDown(QStringLiteral("tbar_5"), QStringLiteral("ｵﾌﾟｼｮﾝ"));
  m_options = options->addAction(QStringLiteral("ｵﾌﾟｼｮﾝ設定"));
  m_defaultSize = options->addAction(QStringLiteral("ﾃﾞﾌｫﾙﾄｳｲﾝﾄﾞｳｻｲｽﾞ"));
  m_version = options->addAction(QStringLiteral("ﾊﾞｰｼﾞｮﾝ表示"));
  m_residentOn = options->addAction(QStringLiteral("DBSWEEP常駐"));
  m_residentOff = options->addAction(QStringLiteral("DBSWEEP常駐解除"));
  m_help = options->addAction(QStringLiteral("ヘルプ"));
}

QMenu* MainToolBar::addDropDown(const QString& objectName, const QString& caption) {
  auto* button = new QToolButton(this);
  button->setObjectName(objectName);
  button->setText(caption);
  button->setPopupMode(QToolButton::InstantPopup);
  auto* menu = new QMenu(button);
  menu->setObjectName(objectName + QStringLiteral("_menu"));
  button->setMenu(menu);
  addWidget(button);
  return menu;
}
