#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Platform/HTTPTransfer.h"

namespace tessaro::platform {

// Fetches what is behind an address, into memory: what has been verified there can't be exchanged before it is used.
// Redirects are followed as long as they lead to trustworthy addresses. Main thread only; destroying it cancels.
class Download final : private HTTPTransferClient {
 public:
  struct Result {
    std::string bytes;
    std::string failure;  // empty when all has come
  };
  // Called once, from the event loop; may destroy the download.
  using Done = std::function<void(Result result)>;

  // What is longer than `limit` bytes fails.
  Download(std::string url, std::size_t limit, Done done);
  Download(const Download&) = delete;
  Download& operator=(const Download&) = delete;

 private:
  [[nodiscard]] bool Keep(std::span<const char> piece) noexcept override;
  void RefusedRedirect(int statusCode, std::string_view location) noexcept override;
  void ReceivedResponse(int statusCode) noexcept override;
  void ReceivedData(std::size_t) noexcept override {}
  void Finished() noexcept override;
  void Failed(std::string_view description) noexcept override;

  void Start(std::string url);
  void End(std::string failure);

  const std::size_t limit_;
  const Done done_;
  int redirects_ = 0;
  bool isTooLong_ = false;
  std::string bytes_;
  std::unique_ptr<HTTPTransfer> transfer_;
};

}  // namespace tessaro::platform
