#pragma once

class MessageBoxes;
struct BDBSWEEP;

// Fills state.gColumnInfo with the columns of state.gInfoTable for the viewer and the export
// (display names from the master or the file, never from comments) and returns their count. On
// failure it says so and returns 0.
int LoadColumnInfo(BDBSWEEP& state, MessageBoxes& boxes);
