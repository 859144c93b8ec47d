#pragma once

// Puts the keyboard routing between the host application and its events.
void TsInstallApplicationPatch();
