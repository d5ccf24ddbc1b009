#pragma once

#include "FakeServices.h"
#include "ScriptedMessageBoxes.h"
#include "app/FDBSWEEP.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "db/local/LocalEngine.h"
#include "platform/PlatformRegistry.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "settings/RegSetting.h"
#include "widgets/StatusPanel.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// One machine: its settings store and folders survive from one start of the program to the next.
struct Machine {
  QTemporaryDir dir;
  PlatformRegistry registry{{dir.path() + "/config", dir.path() + "/autostart"}, {}};
  FakeServiceSet fakes{AppEnvironment{QString(), DbEnvironment{.dataFolder = dir.path() + "/data",
                                                               .programFolder = dir.path() + "/bin",
                                                               .settingsFolder = dir.path() + "/config"}}};
  ScriptedMessageBoxes& boxes = fakes.boxes;
  ManualClock& clock = fakes.clock;
  RecordingLauncher& launcher = fakes.launcher;
  AppEnvironment& env = fakes.env;
  Services& services = fakes.services;

  QString setting(const QString& key) {
    clsREG reg(registry, boxes);
    return RegSetting(reg, "R", "JVK", key, QString("<none>"));
  }
  void setSetting(const QString& key, const QString& value) {
    clsREG reg(registry, boxes);
    RegSetting(reg, "W", "JVK", key, value);
  }
  // An embedded instance whose SYSTEM password is "manager".
  QString instance() {
    const QString folder = dir.path() + "/inst";
    if (!QFileInfo::exists(folder))
      LocalEngine::createInstance(folder, "manager");
    return "local:" + folder;
  }
};

// One start of the program on a machine.
struct Start {
  explicit Start(Machine& m, const QString& commandLine = QString()) {
    state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes);
    state.gCommandArgs = SplitCommandLine(commandLine);
    window = std::make_unique<FDBSWEEP>(state, m.services);
  }
  void load() {
    window->load();
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
  }
  template <typename T> T* find(const QString& name) { return window->findChild<T*>(name); }
  QString panel(int i) { return find<StatusPanel>(QString("stsBar_%1").arg(i))->text(); }

  BDBSWEEP state;
  std::unique_ptr<FDBSWEEP> window;
};

// The name of the modal window a click on widget opens, which is closed again at once; "" when
// none opens.
inline QString ModalOpenedBy(QWidget* widget) {
  QString opened;
  QTimer::singleShot(0, widget, [&opened] {
    if (QWidget* window = QApplication::activeModalWidget()) {
      opened = window->objectName();
      window->close();
    }
  });
  QTest::mouseClick(widget, Qt::LeftButton);
  return opened;
}
