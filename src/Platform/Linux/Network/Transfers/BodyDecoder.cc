#include "Platform/Linux/Network/Transfers/BodyDecoder.h"

#include <brotli/decode.h>
#include <zlib.h>

#include <cstdint>

#include "Base/Owned.h"

namespace tessaro::platform {

namespace {

constexpr char kGzipMagic = '\x1f';
constexpr int kGzipWindow = 16 + MAX_WBITS;
constexpr int kZlibWindow = MAX_WBITS;
constexpr int kRawWindow = -MAX_WBITS;

// "gzip": members follow each other. Anything else behind a member, mostly padding, is ignored as browsers do.
//
// "deflate": the zlib format, or, from servers that took the name literally, the bare deflate format. The first byte
// tells: the low bits of a zlib header are 8, which no compressor writes as the beginning of a bare block.
class ZlibDecoder final : public BodyDecoder {
 public:
  explicit ZlibDecoder(bool isGzip) : isGzip_(isGzip) {}
  ~ZlibDecoder() override { inflateEnd(&stream_); }
  ZlibDecoder(const ZlibDecoder&) = delete;
  ZlibDecoder& operator=(const ZlibDecoder&) = delete;

  [[nodiscard]] std::optional<std::size_t> Decode(std::span<const char>& input, std::span<char> room) override {
    if (!isBegun_ && input.empty()) return 0;
    if (!isBegun_ && !Begin(input.front())) return std::nullopt;
    if (isMemberOver_ && !input.empty()) BeginNextMember(input.front());
    if (!isPastEnd_) {
      const auto length = Inflate(input, room);
      if (length || !MayBePadding()) return length;
    }
    isPastEnd_ = true;
    input = {};
    return 0;
  }

  [[nodiscard]] bool IsComplete() const override { return isPastEnd_ || isMemberOver_ || MayBePadding(); }

 private:
  [[nodiscard]] bool Begin(char first) {
    const int bare = (first & 0x0f) == Z_DEFLATED ? kZlibWindow : kRawWindow;
    isBegun_ = inflateInit2(&stream_, isGzip_ ? kGzipWindow : bare) == Z_OK;
    return isBegun_;
  }

  void BeginNextMember(char first) {
    isPastEnd_ = isPastEnd_ || !isGzip_ || first != kGzipMagic;
    if (isPastEnd_) return;
    inflateReset(&stream_);
    isMemberOver_ = false;
    isLaterMember_ = true;
  }

  [[nodiscard]] std::optional<std::size_t> Inflate(std::span<const char>& input, std::span<char> room) {
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream_.avail_in = static_cast<uInt>(input.size());
    stream_.next_out = reinterpret_cast<Bytef*>(room.data());
    stream_.avail_out = static_cast<uInt>(room.size());
    const int result = inflate(&stream_, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_BUF_ERROR && result != Z_STREAM_END) return std::nullopt;
    isMemberOver_ = result == Z_STREAM_END;
    input = input.last(stream_.avail_in);
    return room.size() - stream_.avail_out;
  }

  [[nodiscard]] bool MayBePadding() const { return isLaterMember_ && stream_.total_out == 0; }

  const bool isGzip_;
  z_stream stream_{};
  bool isBegun_ = false;
  bool isMemberOver_ = false;
  bool isLaterMember_ = false;
  bool isPastEnd_ = false;
};

class BrotliDecoder final : public BodyDecoder {
 public:
  [[nodiscard]] std::optional<std::size_t> Decode(std::span<const char>& input, std::span<char> room) override {
    if (IsComplete()) {
      input = {};
      return 0;
    }
    const auto* in = reinterpret_cast<const std::uint8_t*>(input.data());
    auto* out = reinterpret_cast<std::uint8_t*>(room.data());
    std::size_t left = input.size();
    std::size_t free = room.size();
    const auto result = BrotliDecoderDecompressStream(state_.get(), &left, &in, &free, &out, nullptr);
    if (result == BROTLI_DECODER_RESULT_ERROR) return std::nullopt;
    input = input.last(left);
    return room.size() - free;
  }

  [[nodiscard]] bool IsComplete() const override { return BrotliDecoderIsFinished(state_.get()) == BROTLI_TRUE; }

 private:
  Owned<BrotliDecoderState, BrotliDecoderDestroyInstance> state_{
      BrotliDecoderCreateInstance(nullptr, nullptr, nullptr)};
};

}  // namespace

std::unique_ptr<BodyDecoder> MakeBodyDecoder(std::string_view coding) {
  if (coding == "gzip" || coding == "x-gzip") return std::make_unique<ZlibDecoder>(true);
  if (coding == "deflate") return std::make_unique<ZlibDecoder>(false);
  if (coding == "br") return std::make_unique<BrotliDecoder>();
  return nullptr;
}

}  // namespace tessaro::platform
