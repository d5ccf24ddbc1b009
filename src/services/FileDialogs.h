#pragma once

#include <QString>

// The desktop's file and folder choosers. Windows ask through this service so that the choice
// can be scripted in tests; an empty result means the user cancelled.
class FileDialogs {
public:
  virtual ~FileDialogs() = default;
  // What the chooser shows besides folders: the files the filter names, or only those of them
  // the user may run.
  enum class Show { Files, Programs };
  // An existing file to open, starting at startPath (a folder, or a file in one); filter as Qt
  // writes it ("実行ﾌｧｲﾙ (*)").
  virtual QString openFileName(const QString& title, const QString& startPath, const QString& filter,
                               Show show) = 0;
  // A file to write, existing or not.
  virtual QString saveFileName(const QString& title, const QString& startPath, const QString& filter) = 0;
  // An existing folder, starting at startFolder.
  virtual QString BrowseForFolder(const QString& title, const QString& startFolder) = 0;
};
