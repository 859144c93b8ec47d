#pragma once

// Puts the drag-and-drop bridge between the host's web contents view and what is dragged over it.
void TsInstallWebContentsViewPatch();
