#include "WebView/TsWebContentsView.h"

void TsInstallWebContentsViewPatch() {}
