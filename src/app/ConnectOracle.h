#pragma once

#include <functional>

class MessageBoxes;
struct BDBSWEEP;
struct DbEnvironment;

// Opens a new session and database for state.gHost / gUser / gPassword. On failure nothing is
// shown and the previous gDatabase stays in place.
bool OpenOraDatabase(BDBSWEEP& state, const DbEnvironment& env);

// What a window does around a logon attempt. showCaption puts gLogonCaption, the attempted
// user and host, on screen before anything can fail, so they are on screen while a failure is reported; beforeOpen runs
// just before the session opens (the main window builds a missing demo instance there, with
// its progress shown).
struct LogonHooks final {
  std::function<void()> showCaption;
  std::function<void()> beforeOpen;
};

// The one logon routine: shows the attempted user and host first, then opens; on success
// refreshes gWindowsUser, on failure tells the user the session could not be established.
bool ConnectOracle(BDBSWEEP& state, MessageBoxes& boxes, const DbEnvironment& env, const LogonHooks& hooks = {});
