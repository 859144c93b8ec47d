#pragma once

// Adds the window delegate methods that the host's delegate class lacks.
void TsInstallDelegateMethods();

// Starts to report the windows' notifications to script.
void TsListenForWindowNotifications();
