#pragma once

class MessageBoxes;
class OraError;

// Tells the user what the database refused, in Oracle's own words ("ORA-00028: your session has
// been killed"), where a handler has no message of its own for it.
void ShowOraError(MessageBoxes& boxes, const OraError& error);
