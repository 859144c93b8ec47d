#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro::platform {

struct HTTPHeader {
  std::string name;
  std::string value;
};

// What to ask of which server. All texts are UTF-8 and may hold anything: what can't be sent fails the transfer.
struct HTTPRequest {
  std::string url;
  std::string method = "GET";
  std::vector<HTTPHeader> headers;
  // How long the connection may stay silent; the system's default when there is none, or when it isn't positive.
  std::optional<std::chrono::duration<double>> timeout;
  bool followRedirects = true;
};

// Receives what becomes of a transfer. Everything is called on the main thread.
//
// Expect() and Keep() are called while the system reads, and must neither call script nor start or cancel a transfer.
// The others are called from the event loop, never inside HTTPTransfer::Start(), and may do both, even destroy the
// transfer: redirect refused or response first, then data any number of times, then exactly one of finished and failed,
// after which nothing more comes.
class HTTPTransferClient {
 public:
  virtual ~HTTPTransferClient() = default;

  // How many bytes the server says will come; it may say nothing, or lie.
  virtual void Expect(std::uint64_t length) noexcept = 0;

  // A piece of the decoded body, valid only during the call. False when it can't be kept, which fails the transfer.
  [[nodiscard]] virtual bool Keep(std::span<const char> piece) noexcept = 0;

  // A redirect that is not followed; `location` is its absolute target. Its own response comes next.
  virtual void RefusedRedirect(int statusCode, std::string_view location) noexcept = 0;

  virtual void ReceivedResponse(int statusCode) noexcept = 0;

  // `length` bytes have been kept since the last call. What arrives together is told together.
  virtual void ReceivedData(std::size_t length) noexcept = 0;

  virtual void Finished() noexcept = 0;

  // `description` is the full description of the error, for a person and for the log.
  virtual void Failed(std::string_view description) noexcept = 0;
};

// One exchange with an HTTP server. http and https only, without cookies and without a cache; certificates are tested
// against the system's, proxies are those of the environment, compressed bodies arrive decompressed. Connections are
// reused. A body is read only as fast as the event loop turns, so nothing piles up that the client doesn't keep.
//
// Main thread only. A running transfer doesn't keep the process alive.
class HTTPTransfer {
 public:
  // `client` must outlive the transfer.
  [[nodiscard]] static std::unique_ptr<HTTPTransfer> Start(const HTTPRequest& request,
                                                           HTTPTransferClient& client) noexcept;

  // Cancels a transfer that still runs; the client hears no more of it.
  virtual ~HTTPTransfer() = default;
};

}  // namespace tessaro::platform
