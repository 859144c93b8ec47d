#include "Network/TsNetwork.h"

#include <string>
#include <utility>

namespace platform = tessaro::platform;

TsNetworkRequest::TsNetworkRequest(platform::HTTPRequest request, TsNetworkRequestListener& listener)
    : request_(std::move(request)), listener_(listener) {}

void TsNetworkRequest::Start() {
  if (!request_) return;
  connection_.reset();
  body_ = {};
  connection_ = platform::HTTPTransfer::Start(*request_, *this);
}

bool TsNetworkRequest::Keep(std::span<const char> piece) noexcept { return body_.Append(piece); }

void TsNetworkRequest::RefusedRedirect(int statusCode, std::string_view location) noexcept {
  listener_.Response(statusCode, location);
}

void TsNetworkRequest::ReceivedResponse(int statusCode) noexcept { listener_.Response(statusCode, std::nullopt); }

// Listeners are handed the first bytes of the body, whichever bytes have just come: only the end carries them all.
void TsNetworkRequest::ReceivedData(std::size_t length) noexcept { listener_.Data(body_.First(length)); }

void TsNetworkRequest::Finished() noexcept {
  TsBody body = std::move(body_);
  Clear();
  listener_.End(std::move(body));
}

void TsNetworkRequest::Failed(std::string_view description) noexcept {
  // The text belongs to the connection.
  const std::string text(description);
  Clear();
  listener_.Error(text);
}

void TsNetworkRequest::Clear() {
  connection_.reset();
  request_.reset();
  body_ = {};
}
