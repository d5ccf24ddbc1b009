#pragma once

#include <QPointer>
#include <QWidget>

#include <array>

class QAction;
class QMenu;
class QPushButton;
class clsREG;

// The clone button and the ten launcher buttons, one below the other, each with its program's
// icon. Buttons of entries without a caption are hidden.
class LauncherButtons final : public QWidget {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(LauncherButtons)

public:
  explicit LauncherButtons(QWidget* parent = nullptr);

  // Reads the ten entries again: captions, visibility and icons.
  void LoadLauncherButtons(clsREG& registry);
  // Gives menu one entry per launcher button, each starting that entry; mirror() keeps them
  // in line with the buttons. Several windows' menus can mirror the same buttons.
  void attachMenu(QMenu* menu);
  // Copies each button's caption, icon and visibility to its entries in every attached menu.
  void mirror();

Q_SIGNALS:
  void cloneClicked();
  void childClicked(int index);

private:
  QPushButton* m_cmdClone;
  std::array<QPushButton*, 10> m_cmdChild{};
  // Entry i of every attached menu is element i modulo ten; a closed window's entries go null.
  QList<QPointer<QAction>> m_menuEntries;
};
