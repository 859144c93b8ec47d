#include "Application/TsRelease.h"

#include "Extensions/NSApplication+TsBundle.h"
#include "Utilities/Ref.h"

NSString* TsGetRelease() {
  static const auto& release = *new Ref<NSString>(Adopt([[NSString alloc]
      initWithFormat:@"%@ (%@)", [NSApplication ts_shortVersionString], [NSApplication ts_bundleVersion]]));
  return release;
}
