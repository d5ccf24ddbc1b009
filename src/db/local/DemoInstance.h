#pragma once

#include "db/DbEnvironment.h"

#include <QString>
#include <QStringList>

#include <functional>

// local:demo, the instance a new user logs on to first: the order system of a small
// office-supply mail-order house, owned by QUIL. It is built on first use from the demo folder
// (demo.sql, run as QUIL, and the two name-master files) plus rows generated here from a fixed
// seed, so every copy holds the same data.
namespace DemoInstance {

inline const QString Name = QStringLiteral("demo");
inline const QString SystemPassword = QStringLiteral("MANAGER");
inline const QString Owner = QStringLiteral("QUIL");
inline const QString OwnerPassword = QStringLiteral("QTJL");
// The previous system's schema: look-alike tables that QUIL's catalogue must not show.
inline const QString OldOwner = QStringLiteral("QUIL_OLD");
inline const QString OldOwnerPassword = QStringLiteral("QUILOLD");

inline const QString ScriptFile = QStringLiteral("demo.sql");
inline const QStringList NameMasterFiles = {QStringLiteral("TBTBLM.dat"), QStringLiteral("TBCLMM.dat")};

// Sizes of the generated data.
constexpr int Customers = 360;
constexpr int Orders = 3600;
constexpr int ContactRecords = 1500;
constexpr int AccessLogRows = 200000;

// How far a build has come, from 0 to 100, and what it is doing, in words for the user.
using Progress = std::function<void(int percent, const QString& step)>;

// env.demoFolder ($DBSWEEP_DEMO_DIR), else the "demo" folder in env.programFolder.
QString sourceFolder(const DbEnvironment& env);

// True while local:demo has yet to be built: logging on to it then takes a few seconds.
bool needsBuild(const DbEnvironment& env);

// Makes sure folder holds the demo instance, building it from the files in source when it does
// not; progress, when given, hears how the build goes, on the thread that called. Safe when
// several processes start at once: each builds in a sibling folder of its own and renames it
// into place; one that loses the race drops its copy and uses the winner's. Raises OraError
// naming what failed; a failed build leaves nothing behind, and the folder of a build whose
// process was killed is removed by the next call.
void ensure(const QString& folder, const QString& source, const Progress& progress = {});

// Moves a freshly built instance into its place: true when it did; false when another instance
// got there first, leaving built for the caller to remove. Raises OraError when the move fails
// for any other reason.
bool install(const QString& built, const QString& folder);

// Copies the name-master files from source into the settings folder where they are missing
// there: the program looks for them in its own folder, then in the settings folder, and never
// writes to its own folder. An empty or unwritable folder is left alone: the names then come
// from the master tables and comments only.
void provideNameMasterFiles(const QString& source, const QString& settingsFolder);

} // namespace DemoInstance
