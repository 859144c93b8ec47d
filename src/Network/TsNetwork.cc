#include "Network/TsNetwork.h"

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

// Every listener gets the first bytes of the body, not the latest: only the end has the whole body.
void TsNetworkRequest::ReceivedData(std::size_t length) noexcept { listener_.Data(body_.First(length)); }

void TsNetworkRequest::Ended(Result<void> result) noexcept {
  TsBody body = std::move(body_);
  Clear();
  if (result) {
    listener_.End(std::move(body));
  } else {
    listener_.Error(result.error().message);
  }
}

void TsNetworkRequest::Clear() {
  connection_.reset();
  request_.reset();
  body_ = {};
}
