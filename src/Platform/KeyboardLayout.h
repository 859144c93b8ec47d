#pragma once

#include <cstdint>

// The keyboard's keys by their places, independent of the layout. Main thread only.
namespace tessaro::platform {

// A key without a virtual key code.
inline constexpr std::uint16_t kNoVirtualKey = 0xffff;

// The virtual key code (those of ANSI, ISO and JIS keyboards: 2 is the key right of "A's" neighbour, 43 the first
// right of "M's", 49 the space bar, 123 to 126 the arrows) of a key that the window system's events call
// `systemKeyCode`. kNoVirtualKey when the key has none, or there is no window system to ask.
[[nodiscard]] std::uint16_t VirtualKeyCode(std::uint16_t systemKeyCode);

// The character that a key types alone in the layout in use, or in a layout without Latin letters in
// the first of the user's that has one; without a window system on an American keyboard. 0 for keys that type none.
[[nodiscard]] char16_t CharacterOnKey(std::uint16_t virtualKeyCode);

}  // namespace tessaro::platform
