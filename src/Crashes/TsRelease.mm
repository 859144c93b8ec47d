#include "Crashes/TsRelease.h"

#include "Base/Ref.h"
#include "Extensions/NSApplication+TsBundle.h"

NSString* TsGetRelease() {
  static const auto& release = *new Ref<NSString>(Adopt([[NSString alloc]
      initWithFormat:@"%@ (%@)", [NSApplication ts_shortVersionString], [NSApplication ts_bundleVersion]]));
  return release;
}
