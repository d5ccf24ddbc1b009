#pragma once

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

// Runs the built dbsweep-sql as a user would, on instances in a temporary folder.
struct ConsoleProcess {
  struct Result {
    int status = -1;
    QString out;
    QString err;
  };

  QTemporaryDir dir;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();

  Result run(const QStringList& arguments, const QByteArray& input = {}, const QString& folder = {}) const {
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(folder.isEmpty() ? dir.path() : folder);
    process.start(QStringLiteral(DBSWEEP_SQL), arguments);
    if (!process.waitForStarted())
      return {};
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000))
      process.kill();
    process.waitForFinished();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
  }

  // Writes a script into the temporary folder; returns "@path", or nothing when it could not.
  QString script(const QString& name, const QByteArray& text) const {
    const QString path = dir.filePath(name);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? QLatin1Char('@') + path : QString();
  }

  // A fresh embedded instance whose SYSTEM password is "x"; returns its logon, or nothing.
  QString createInstance(const QString& name) const {
    const QString host = QStringLiteral("local:") + dir.filePath(name);
    return run({"--create-instance", host, "--system-password", "x"}).status == 0 ? QStringLiteral("SYSTEM/x@") + host
                                                                                  : QString();
  }
};
