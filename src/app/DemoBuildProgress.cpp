#include "app/DemoBuildProgress.h"

#include "db/DbEnvironment.h"
#include "db/OraError.h"
#include "db/local/DemoInstance.h"
#include "db/local/LocalEngine.h"

#include <QEventLoop>
#include <QProgressDialog>

#include <thread>

void BuildDemoWithProgress(const QString& host, const DbEnvironment& env, QWidget* parent) {
  if (!host.startsWith(QStringLiteral("local:"), Qt::CaseInsensitive) || host.mid(6) != DemoInstance::Name)
    return;
  if (!DemoInstance::needsBuild(env))
    return;
  const QString folder = LocalEngine::folderFor(DemoInstance::Name, env);

  const QString heading = QStringLiteral("デモ用データベース（local:demo）を作成しています。初回だけ数秒かかります。");
  QProgressDialog dialog(heading, QString(), 0, 100, parent);
  dialog.setObjectName(QStringLiteral("DemoBuildProgress"));
  dialog.setWindowTitle(QStringLiteral("DBSWEEP"));
  dialog.setWindowModality(Qt::ApplicationModal);
  dialog.setMinimumDuration(0);
  dialog.setAutoClose(false);
  dialog.setValue(0);

  // The build runs beside the event loop so the dialog paints and moves; its progress reaches
  // the dialog through queued calls, which are dropped if the dialog is already gone.
  QEventLoop loop;
  std::thread builder([&] {
    try {
      DemoInstance::ensure(folder, DemoInstance::sourceFolder(env), [&](int percent, const QString& step) {
        QMetaObject::invokeMethod(
            &dialog,
            [&dialog, &heading, percent, step] {
              dialog.setLabelText(heading + u'\n' + step);
              dialog.setValue(percent);
            },
            Qt::QueuedConnection);
      });
    } catch (const OraError&) {
      // The logon that follows meets the same failure and reports it.
    }
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  dialog.show();
  loop.exec();
  builder.join();
}
