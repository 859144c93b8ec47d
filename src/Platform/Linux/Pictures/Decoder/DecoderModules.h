#pragma once

namespace tessaro::platform {

// vips has decoders in modules of their own, with large libraries behind them. Loading all of them at the start would
// take half of it; ImageMagick's and OpenSlide's must never be used. A job loads the one that its file needs, before
// it reads the header.
void KeepDecoderModulesOut();
void LoadDecoderFor(int file);

}  // namespace tessaro::platform
