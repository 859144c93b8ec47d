#include "Platform/KeyboardLayout.h"

#include <Carbon/Carbon.h>

#include <array>

#include "Platform/macOS/CFRef.h"

// The system's key codes are the virtual ones. Characters come from Text Input Sources and UCKeyTranslate(), which end
// the process when they are called off the main thread. No consent.
namespace tessaro::platform {

namespace {

constexpr std::uint16_t kLastVirtualKey = 0x7f;

char16_t Translate(const UCKeyboardLayout* layout, std::uint16_t virtualKeyCode) {
  UInt32 deadKeys = 0;
  UniCharCount length = 0;
  std::array<UniChar, 4> characters{};
  const OSStatus status =
      UCKeyTranslate(layout, virtualKeyCode, kUCKeyActionDisplay, 0, LMGetKbdType(), kUCKeyTranslateNoDeadKeysMask,
                     &deadKeys, characters.size(), &length, characters.data());
  if (status != noErr || length != 1 || characters[0] < ' ' || characters[0] == 0x7f) return 0;
  return characters[0];
}

}  // namespace

std::uint16_t VirtualKeyCode(std::uint16_t systemKeyCode) {
  return systemKeyCode <= kLastVirtualKey ? systemKeyCode : kNoVirtualKey;
}

char16_t CharacterOnKey(std::uint16_t virtualKeyCode) {
  if (virtualKeyCode > kLastVirtualKey) return 0;
  // The layout in use where it has Latin letters, otherwise the one that had them last.
  const CFRef<TISInputSourceRef> source(TISCopyCurrentASCIICapableKeyboardLayoutInputSource());
  if (!source) return 0;
  const auto data = static_cast<CFDataRef>(TISGetInputSourceProperty(source.get(), kTISPropertyUnicodeKeyLayoutData));
  if (data == nullptr) return 0;
  return Translate(reinterpret_cast<const UCKeyboardLayout*>(CFDataGetBytePtr(data)), virtualKeyCode);
}

}  // namespace tessaro::platform
