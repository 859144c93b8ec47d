#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <utility>

#include "Base/UvHandle.h"
#include "Platform/Linux/Network/Transfers/CurlHandles.h"
#include "Platform/Linux/Network/Transfers/SocketWatches.h"
#include "Platform/Linux/Network/Transfers/TransferLibrary.h"

namespace tessaro::platform {

class Transfer;

// Drives all transfers on the event loop, without a thread: libcurl says which sockets and which time it waits for.
//
// libcurl's callbacks only queue transfers. The clients get their events when libcurl has returned, because script that
// handles an event may start or cancel other transfers.
class TransferEngine final : public TransferLibrary {
 public:
  TransferEngine();
  ~TransferEngine() override;

  [[nodiscard]] std::unique_ptr<HTTPTransfer> Start(const HTTPRequest& request,
                                                    HTTPTransferClient& client) noexcept override;
  void ShutDown() noexcept override;

  // For transfers.
  [[nodiscard]] CurlEasy MakeEasy();
  void Add(CURL* easy);
  void Remove(Transfer& transfer, CURL* easy);
  void Queue(Transfer& transfer);         // has events to deliver
  void Withdraw(Transfer& transfer);      // is about to be destroyed
  void WatchTimeout(Transfer& transfer);  // from now on

 private:
  using Deadline = std::pair<std::uint64_t, Transfer*>;

  void Configure();
  void SetTimer(long milliseconds);
  void ActSoon();
  void Act(curl_socket_t socket, int events);
  void Perform(curl_socket_t socket, int events);
  void DeliverAll();
  void CheckTimeouts();

  CurlMulti multi_;
  CurlShare share_;
  SocketWatches watches_;
  UvHandle<uv_timer_t> timer_;
  UvHandle<uv_idle_t> soon_;  // in the next turn
  UvHandle<uv_timer_t> timeoutTimer_;
  std::deque<Transfer*> queue_;
  std::set<Deadline> deadlines_;
  bool isActing_ = false;
  bool isDue_ = false;
};

}  // namespace tessaro::platform
