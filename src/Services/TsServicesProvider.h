#pragma once

@class NSApplication;

// Offers the module's services to other applications in the name of `application`.
void TsRegisterServicesProvider(NSApplication* application);
