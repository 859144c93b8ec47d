#pragma once

// Whether the session starts the application at login. Nothing is kept: each call reads the session's list and changes
// that. Main thread only.

[[nodiscard]] bool TsStartsAtLogin();

// Leaves the list as it is when it can't be changed.
void TsSetStartsAtLogin(bool starts);

// The item of the application's previous major version, of which there may be several: the first one goes.
void TsRemovePreviousVersionsLoginItem();
