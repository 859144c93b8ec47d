#pragma once

// Whether the session starts the application at login. Nothing is cached: each call reads or changes the session's
// list. Main thread only.

[[nodiscard]] bool TsStartsAtLogin();

// Leaves the list as it is when it can't be changed.
void TsSetStartsAtLogin(bool starts);

// Removes the first login item of the application's previous major version.
void TsRemovePreviousVersionsLoginItem();
