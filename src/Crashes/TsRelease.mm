#include "Crashes/TsRelease.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Extensions/NSApplication+TsBundle.h"

NSString* TsGetRelease() {
  static Forever<Ref<NSString>> release(Adopt([[NSString alloc]
      initWithFormat:@"%@ (%@)", [NSApplication ts_shortVersionString], [NSApplication ts_bundleVersion]]));
  return *release;
}
