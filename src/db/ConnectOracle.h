#pragma once

struct BDBSWEEP;
struct DbEnvironment;
class MessageBoxes;

// Opens a new session and database for state.gHost / gUser / gPassword. On failure nothing is
// shown and the previous gDatabase stays in place.
bool OpenOraDatabase(BDBSWEEP& state, const DbEnvironment& env);

// The one logon routine: shows the attempted user and host first, then opens; on success
// refreshes gWindowsUser, on failure tells the user the session could not be established.
bool ConnectOracle(BDBSWEEP& state, MessageBoxes& boxes, const DbEnvironment& env);
