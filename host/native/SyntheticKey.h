#pragma once

#include <cstdint>
#include <span>

// Sends the X window `window` a press and a release of the key `keycode` through the X server, over a connection of
// its own, while the keys `held` are held. Gives the monotonic clock's nanoseconds right before, or 0 when there is no
// server to send through.
std::uint64_t SendSyntheticKey(unsigned long window, unsigned keycode, std::span<const unsigned> held = {});
