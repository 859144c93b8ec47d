#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/UvHandle.h"
#include "Platform/HTTPTransfer.h"
#include "Platform/Linux/Network/Transfers/BodyDecoder.h"
#include "Platform/Linux/Network/Transfers/TransferEngine.h"

namespace tessaro::platform {

// One exchange: the request given to libcurl, and the part of its response that the client has not received yet.
class Transfer final : public HTTPTransfer {
 public:
  Transfer(TransferEngine& engine, const HTTPRequest& request, HTTPTransferClient& client);
  ~Transfer() override;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // The engine's note.
  bool isQueued = false;

  // The server has reset the stream of the current response before it ended the body.
  void NoteReset();

  // Nothing more comes from libcurl, because of `code`.
  void End(CURLcode code);

  // Hands the client the events since the last call, a limited part of the body among them. May destroy the transfer.
  void Deliver();

 private:
  [[nodiscard]] CURLcode Prepare(const HTTPRequest& request);
  [[nodiscard]] CURLcode Refuse(std::string_view reason);
  void SetMethod();
  void AddHeaders(const HTTPRequest& request);

  static std::size_t OnHeader(char* line, std::size_t, std::size_t length, Transfer* self);
  void ReceiveHeader(std::string_view line);
  void BeginHeaders();
  void EndHeaders();
  [[nodiscard]] std::string AbsoluteLocation() const;

  static std::size_t OnBody(char* bytes, std::size_t, std::size_t length, Transfer* self);
  [[nodiscard]] bool IsFull() const;
  [[nodiscard]] bool Receive(std::span<const char> piece);
  [[nodiscard]] bool MakeDecoder();
  [[nodiscard]] bool Decode();
  [[nodiscard]] bool Keep(std::span<const char> piece);
  [[nodiscard]] bool FailDecoding(std::string reason);

  void WatchTimeout();
  void NoteActivity();
  void DeliverResponse();
  void DeliverResult();
  void ContinueReading();
  [[nodiscard]] CURLcode ResultFor(CURLcode code) const;
  [[nodiscard]] bool IsCutShort() const;
  [[nodiscard]] long RedirectCount() const;

  struct Response {
    int statusCode;
    std::optional<std::string> refusedRedirect;
  };

  TransferEngine& engine_;
  HTTPTransferClient& client_;
  const std::string url_;
  const std::string method_;
  const bool followRedirects_;
  const std::uint64_t timeout_;  // milliseconds, as the next
  std::uint64_t lastActivity_;   // by the event loop's clock
  UvHandle<uv_timer_t> timer_;   // while the request is sent
  CurlEasy easy_;
  CurlList headers_;
  std::array<char, CURL_ERROR_SIZE> detail_{};

  bool isInHeaders_ = false;
  bool isAnswered_ = false;
  bool isPaused_ = false;
  std::string location_;
  std::vector<std::string> codings_;

  std::unique_ptr<BodyDecoder> decoder_;
  std::string encoded_;  // received, not all of it decoded
  std::size_t decodedUpTo_ = 0;
  bool isDecoding_ = false;
  std::string decodingFailure_;
  std::uint64_t encodedLength_ = 0;
  std::uint64_t decodedLength_ = 0;

  std::optional<Response> pendingResponse_;
  std::size_t pendingLength_ = 0;
  std::optional<CURLcode> pendingResult_;
  std::optional<long> resetAfter_;  // so many redirects
  bool* isDestroyed_ = nullptr;     // while Deliver() runs
};

}  // namespace tessaro::platform
