#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/HTTPTransfer.h"
#include "Platform/Linux/Network/Transfers/CurlHandles.h"

namespace tessaro::platform {

class TransferEngine;

// One exchange: what libcurl is asked, what it has answered, and what of that the client has not been told yet.
class Transfer final : public HTTPTransfer {
 public:
  Transfer(TransferEngine& engine, const HTTPRequest& request, HTTPTransferClient& client);
  ~Transfer() override;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // The engine's notes. Times are milliseconds of the event loop's clock.
  std::uint64_t deadline = 0;
  bool isUntold = false;

  // When the transfer has been silent for too long, if it stays silent.
  [[nodiscard]] std::uint64_t SilentAt() const { return lastHeard_ + silence_; }

  // Nothing more comes from libcurl, for the reason that `code` tells.
  void End(CURLcode code);

  // May destroy the transfer.
  void TellClient();

 private:
  [[nodiscard]] CURLcode Ask(const HTTPRequest& request);
  [[nodiscard]] CURLcode Refuse(std::string_view reason);
  void AskFor(const std::string& method);
  void AddHeaders(const HTTPRequest& request);

  static std::size_t OnHeader(char* line, std::size_t, std::size_t length, Transfer* self);
  [[nodiscard]] bool MustPause() const;
  static std::size_t OnBody(char* bytes, std::size_t, std::size_t length, Transfer* self);

  void Header(std::string_view line);
  void HeadersEnded();
  void Heard();
  void Continue();
  [[nodiscard]] std::string AbsoluteLocation() const;
  [[nodiscard]] CURLcode Verdict(CURLcode code) const;

  struct Response {
    int statusCode;
    std::optional<std::string> refusedRedirect;
  };

  TransferEngine& engine_;
  HTTPTransferClient& client_;
  const std::string url_;
  const bool followRedirects_;
  std::uint64_t silence_;
  std::uint64_t lastHeard_;
  CurlEasy easy_;
  CurlList headers_;
  std::array<char, CURL_ERROR_SIZE> detail_{};

  bool isInHeaders_ = false;
  std::string location_;
  bool isEncoded_ = false;
  bool isAnswered_ = false;
  bool isPaused_ = false;

  std::optional<Response> untoldResponse_;
  std::size_t untoldLength_ = 0;
  std::optional<CURLcode> result_;
  bool* isDestroyed_ = nullptr;  // while the client is told
};

}  // namespace tessaro::platform
