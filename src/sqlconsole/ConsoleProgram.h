#pragma once

#include <QProcessEnvironment>
#include <QStringList>
#include <QTextStream>

// dbsweep-sql as a whole: reads its command line, logs on and runs the statements, or creates
// an embedded instance.
namespace ConsoleProgram {

// arguments without the program name; programFolder is the executable's folder. Returns the
// exit status.
int run(const QStringList& arguments, const QProcessEnvironment& environment, const QString& programFolder,
        QTextStream& out, QTextStream& err);

} // namespace ConsoleProgram
