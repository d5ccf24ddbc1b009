#include "launcher/clsFDia.h"

#include "services/FileDialogs.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

QString clsFDia::QtFilter(const QString& filter) {
  const QStringList parts = filter.split(u'|');
  QStringList entries;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString description = parts[i].trimmed();
    // Qt reads the patterns from the brackets of the description; one without them gets its own.
    entries << (description.contains(u'(') ? description : description + QStringLiteral(" (") + parts[i + 1] + u')');
  }
  return entries.join(QStringLiteral(";;"));
}

void clsFDia::Show(bool open, bool& ok) {
  QString start = InitialDir;
  if (!FileName.isEmpty())
    start = start.isEmpty() ? FileName : QDir(start).filePath(FileName);
  const QString filter = QtFilter(Filter);
  const QString chosen =
      open ? m_dialogs.openFileName(DialogTitle, start, filter,
                                    (Flags & ProgramsOnly) ? FileDialogs::Show::Programs : FileDialogs::Show::Files)
           : m_dialogs.saveFileName(DialogTitle, start, filter);
  ok = !chosen.isEmpty();
  if (!ok)
    return;
  // A new file named without its kind gets the default one.
  FileName = !open && !DefaultExt.isEmpty() && QFileInfo(chosen).suffix().isEmpty()
                 ? chosen + u'.' + DefaultExt
                 : chosen;
  FileTitle = QFileInfo(FileName).fileName();
}
