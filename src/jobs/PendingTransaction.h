#pragma once

class MessageBoxes;
class OraSession;

// Before a window lets go of the session (closing, logging on again) with work pending: asks
// whether to roll back (Yes) or commit (No). Returns false when the user cancels; the caller
// then stops and nothing has changed.
bool SettlePendingTransaction(MessageBoxes& boxes, OraSession& session);
