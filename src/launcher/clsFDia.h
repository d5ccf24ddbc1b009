#pragma once

#include <QString>

class FileDialogs;

// The file chooser as the options dialog uses it: what it proposes (folder, file name, filter,
// title) set beforehand, and the choice read back afterwards.
class clsFDia final {
public:
  // Flags: only programs are listed (besides folders).
  static constexpr qint32 ProgramsOnly = 0x10000000;

  explicit clsFDia(FileDialogs& dialogs) : m_dialogs(dialogs) {}

  QString DefaultExt; // added to a file to save that is named without one
  QString DialogTitle;
  QString FileName;  // the full path chosen, or proposed beforehand
  QString FileTitle; // the chosen file's name without its folder
  QString InitialDir;
  QString Filter; // pairs of description and pattern, all separated by "|"
  qint32 FilterIndex = 0; // kept for the caller; the desktop's chooser starts at the first filter
  qint32 Flags = 0;
  qint32 MaxFileSize = 260; // kept for the caller; paths are not limited here

  // Shows the open (open = true) or save chooser. ok tells whether the user chose a file; when
  // not, the properties keep their values.
  void Show(bool open, bool& ok);

  // The filter as Qt writes it: "description (patterns)" entries separated by ";;".
  static QString QtFilter(const QString& filter);

private:
  FileDialogs& m_dialogs;
};
