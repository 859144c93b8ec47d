#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "Base/Result.h"
#include "Platform/HTTPTransfer.h"

namespace tessaro::platform {

// Fetches the contents of a URL into memory, where they can't be exchanged between verification and use. Follows
// redirects to trustworthy addresses only. Main thread only; destroying it cancels.
class Download final : private HTTPTransferClient {
 public:
  // Called once, from the event loop; may destroy the download.
  using Done = std::function<void(Result<std::string> contents)>;
  using Progress = std::function<void(std::size_t received)>;

  // Fails for contents longer than `limit` bytes.
  Download(std::string url, std::size_t limit, Done done, Progress progress = nullptr);
  Download(const Download&) = delete;
  Download& operator=(const Download&) = delete;

 private:
  [[nodiscard]] bool Keep(std::span<const char> piece) noexcept override;
  void RefusedRedirect(int statusCode, std::string_view location) noexcept override;
  void ReceivedResponse(int statusCode) noexcept override;
  void ReceivedData(std::size_t length) noexcept override;
  void Ended(Result<void> result) noexcept override;

  void Start(std::string url);
  void End(Result<std::string> contents);

  const std::size_t limit_;
  const Done done_;
  const Progress progress_;
  int redirects_ = 0;
  bool isTooLong_ = false;
  std::string bytes_;
  std::unique_ptr<HTTPTransfer> transfer_;
};

}  // namespace tessaro::platform
