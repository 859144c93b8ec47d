#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"

namespace tessaro::platform {

struct HTTPHeader {
  std::string name;
  std::string value;
};

// All texts are UTF-8 and may hold anything: a request that can't be sent fails. Headers that say where the request
// ends (Content-Length, Transfer-Encoding) are the system's and not sent.
struct HTTPRequest {
  std::string url;
  std::string method = "GET";
  std::vector<HTTPHeader> headers;
  // How long the connection may stay silent; by default, and unless positive, as long as the system's default.
  std::optional<std::chrono::duration<double>> timeout;
  bool followRedirects = true;
};

// Receives the events of a transfer, on the main thread.
//
// Keep() is called while the system reads, and must neither call script nor start or cancel a transfer. The others are
// called from the event loop, never inside HTTPTransfer::Start(), and may do both, even destroy the transfer: redirect
// refused or response first, then data any number of times, then the end as the last call.
class HTTPTransferClient {
 public:
  virtual ~HTTPTransferClient() = default;

  // A piece of the decoded body, valid only during the call. False when it can't be kept, which fails the transfer.
  [[nodiscard]] virtual bool Keep(std::span<const char> piece) noexcept = 0;

  // A redirect that is not followed, because the request says so; `location` is its absolute target. Its own response
  // comes next.
  virtual void RefusedRedirect(int statusCode, std::string_view location) noexcept = 0;

  virtual void ReceivedResponse(int statusCode) noexcept = 0;

  // `length` bytes have been kept since the last call.
  virtual void ReceivedData(std::size_t length) noexcept = 0;

  // A failure has a code of Cocoa's URL loading, and as its message the error's full description for the log and
  // script.
  virtual void Ended(Result<void> result) noexcept = 0;
};

// One exchange with an HTTP server. http and https only, without cookies and without a cache; certificates are tested
// against the system's, proxies are those of the environment. Connections are reused.
//
// Redirects keep the method, but a 303 leads to a GET (or HEAD), and POST becomes GET at 301 and 302; other statuses
// are no redirects. Compressed bodies (gzip, deflate, br) arrive decompressed; one that expands more than a hundredfold
// fails when it is larger than 64 MB. A body that ends too early fails. Bodies are read and decompressed in pieces of
// about a megabyte a turn of the event loop, so nothing piles up that the client doesn't keep.
//
// Main thread only. A running transfer doesn't keep the process alive.
class HTTPTransfer {
 public:
  // `client` must outlive the transfer.
  [[nodiscard]] static std::unique_ptr<HTTPTransfer> Start(const HTTPRequest& request,
                                                           HTTPTransferClient& client) noexcept;

  // Cancels a running transfer without another call to the client.
  virtual ~HTTPTransfer() = default;
};

}  // namespace tessaro::platform
