#include "Platform/Linux/Clipboard/ForeignContents.h"

#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/Selections.h"

namespace tessaro::platform {

Result<Ref<NSArray>> ForeignTypes(const std::string& selection, SelectionLimits limits) {
  const auto targets = Selections::Shared().Targets(selection, limits);
  if (!targets) return tl::unexpected(targets.error());
  return Retain(TypesOfTargets(*targets));
}

Result<Ref<NSData>> ForeignData(const std::string& selection, NSString* type, SelectionLimits limits) {
  for (const std::string& target : TargetsOfType(type)) {
    const auto bytes = Selections::Shared().Read(selection, target, limits);
    if (!bytes && bytes.error().code == kNoAnswer) return tl::unexpected(bytes.error());
    if (!bytes) continue;
    if (NSData* data = DataOfTarget(type, target, *bytes)) return Retain(data);
  }
  return Ref<NSData>();
}

}  // namespace tessaro::platform
