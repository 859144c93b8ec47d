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

class Inflater : public BodyDecoder {
 public:
  ~Inflater() override { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  [[nodiscard]] bool IsComplete() const override { return isComplete_; }

 protected:
  Inflater() = default;

  [[nodiscard]] bool Begin(int window) { return inflateInit2(&stream_, window) == Z_OK; }
  void BeginAgain() { inflateReset(&stream_); }
  [[nodiscard]] bool HasOutput() const { return stream_.total_out > 0; }

  [[nodiscard]] std::optional<std::size_t> Inflate(std::span<const char>& input, std::span<char> room) {
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
    stream_.avail_in = static_cast<uInt>(input.size());
    stream_.next_out = reinterpret_cast<Bytef*>(room.data());
    stream_.avail_out = static_cast<uInt>(room.size());
    const int result = inflate(&stream_, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_BUF_ERROR && result != Z_STREAM_END) return std::nullopt;
    isComplete_ = result == Z_STREAM_END;
    input = input.last(stream_.avail_in);
    return room.size() - stream_.avail_out;
  }

 private:
  z_stream stream_{};
  bool isComplete_ = false;
};

// Members follow each other. Anything else behind a member, mostly padding, is ignored as browsers do.
class GzipDecoder final : public Inflater {
 public:
  [[nodiscard]] std::optional<std::size_t> Decode(std::span<const char>& input, std::span<char> room) override {
    if (!isBegun_ && !Begin(kGzipWindow)) return std::nullopt;
    isBegun_ = true;
    if (Inflater::IsComplete() && !input.empty() && !isPastEnd_) {
      isPastEnd_ = input.front() != kGzipMagic;
      isInLaterMember_ = true;
      BeginAgain();
    }
    if (isPastEnd_) return Ignore(input);
    const auto length = Inflate(input, room);
    return !length && isInLaterMember_ && !HasOutput() ? Ignore(input) : length;
  }

  [[nodiscard]] bool IsComplete() const override {
    return isPastEnd_ || Inflater::IsComplete() || (isInLaterMember_ && !HasOutput());
  }

 private:
  std::size_t Ignore(std::span<const char>& input) {
    isPastEnd_ = true;
    input = {};
    return 0;
  }

  bool isBegun_ = false;
  bool isInLaterMember_ = false;
  bool isPastEnd_ = false;
};

// The zlib format, or, from servers that took the name literally, the bare deflate format. The first byte tells: the
// low bits of a zlib header are 8, which no compressor writes as the beginning of a bare block.
class DeflateDecoder final : public Inflater {
 public:
  [[nodiscard]] std::optional<std::size_t> Decode(std::span<const char>& input, std::span<char> room) override {
    if (!isBegun_ && !input.empty()) {
      const bool isZlib = (input.front() & 0x0f) == Z_DEFLATED;
      if (!Begin(isZlib ? kZlibWindow : kRawWindow)) return std::nullopt;
      isBegun_ = true;
    }
    if (!IsComplete()) return Inflate(input, room);
    input = {};
    return 0;
  }

 private:
  bool isBegun_ = false;
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
  if (coding == "gzip" || coding == "x-gzip") return std::make_unique<GzipDecoder>();
  if (coding == "deflate") return std::make_unique<DeflateDecoder>();
  if (coding == "br") return std::make_unique<BrotliDecoder>();
  return nullptr;
}

}  // namespace tessaro::platform
