#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "Base/Owned.h"
#include "Platform/HTTPTransfer.h"

// The body of a response: a piece of memory that grows with what arrives.
class TsBody {
 public:
  using Bytes = Owned<char, std::free>;

  // False, and nothing appended, beyond 1 GiB and when there is not enough memory.
  [[nodiscard]] bool Append(std::span<const char> piece) noexcept;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::span<const char> First(std::size_t count) const { return {bytes_.get(), count}; }

  // Hands the memory over, shrunk to the body's size; nullptr for an empty body.
  [[nodiscard]] Bytes Release() noexcept;

 private:
  [[nodiscard]] bool Resize(std::size_t capacity) noexcept;

  Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// Receives the events of a request, on the main thread, from the event loop. Each call may start the request again or
// destroy it.
class TsNetworkRequestListener {
 public:
  virtual ~TsNetworkRequestListener() = default;

  // `location` is the absolute target of a redirect that is not followed.
  virtual void Response(int statusCode, std::optional<std::string_view> location) = 0;
  virtual void Data(std::span<const char> bytes) = 0;
  virtual void End(TsBody body) = 0;
  virtual void Error(std::string_view description) = 0;
};

// One HTTP request, outside the browser engine and without cookies, whose response arrives as events: a response for a
// refused redirect and one for the final response, data, then exactly one end or error. After that the request is
// cleared and can't be started again.
class TsNetworkRequest final : tessaro::platform::HTTPTransferClient {
 public:
  // `listener` must outlive the request.
  TsNetworkRequest(tessaro::platform::HTTPRequest request, TsNetworkRequestListener& listener);

  // Returns at once. Starting a running request restarts it with a new connection and an empty body; the earlier
  // connection has no further events.
  void Start();

 private:
  [[nodiscard]] bool Keep(std::span<const char> piece) noexcept override;
  void RefusedRedirect(int statusCode, std::string_view location) noexcept override;
  void ReceivedResponse(int statusCode) noexcept override;
  void ReceivedData(std::size_t length) noexcept override;
  void Ended(Result<void> result) noexcept override;

  void Clear();

  std::optional<tessaro::platform::HTTPRequest> request_;
  TsNetworkRequestListener& listener_;
  TsBody body_;
  std::unique_ptr<tessaro::platform::HTTPTransfer> connection_;
};
