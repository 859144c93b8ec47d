#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <utility>
#include <vector>

#include "Base/UvHandle.h"
#include "Platform/Linux/Network/Transfers/CurlHandles.h"
#include "Platform/Linux/Network/Transfers/SocketWatches.h"
#include "Platform/Linux/Network/Transfers/TransferLibrary.h"

namespace tessaro::platform {

class Transfer;

// Drives all transfers on the event loop, without a thread: libcurl says which sockets and which time it waits for.
//
// libcurl's callbacks only note what has happened. The clients are told when libcurl has returned, because script that
// hears of one transfer may start or cancel others.
class TransferEngine final : public TransferLibrary {
 public:
  TransferEngine();
  ~TransferEngine() override;

  [[nodiscard]] std::unique_ptr<HTTPTransfer> Start(const HTTPRequest& request,
                                                    HTTPTransferClient& client) noexcept override;
  void ShutDown() noexcept override;

  // For transfers.
  [[nodiscard]] CurlEasy TakeEasy();
  void GiveEasy(CurlEasy easy);
  void Add(CURL* easy);
  void Remove(Transfer& transfer, CURL* easy);
  void Tell(Transfer& transfer);          // has something to tell
  void Forget(Transfer& transfer);        // is about to be destroyed
  void LimitSilence(Transfer& transfer);  // from now on

 private:
  using Deadline = std::pair<std::uint64_t, Transfer*>;

  void Configure();
  void SetTimer(long milliseconds);
  void Act(curl_socket_t socket, int events);
  void Perform(curl_socket_t socket, int events);
  void TellAll();
  void EndSilence();

  CurlMulti multi_;
  CurlShare share_;
  SocketWatches watches_;
  UvHandle<uv_timer_t> timer_;
  UvHandle<uv_timer_t> silenceTimer_;
  std::vector<CurlEasy> idle_;
  std::deque<Transfer*> untold_;
  std::set<Deadline> deadlines_;
  bool isActing_ = false;
  bool isDue_ = false;
  bool isClosed_ = false;
};

}  // namespace tessaro::platform
