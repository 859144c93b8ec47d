#pragma once

#include <curl/curl.h>

#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "Base/Owned.h"
#include "Base/UvHandle.h"
#include "Platform/Linux/Network/Transfers/TransferLibrary.h"

namespace tessaro::platform {

using CurlMulti = Owned<CURLM, curl_multi_cleanup>;
using CurlShare = Owned<CURLSH, curl_share_cleanup>;
using CurlEasy = Owned<CURL, curl_easy_cleanup>;
using CurlList = Owned<curl_slist, curl_slist_free_all>;
using CurlUrl = Owned<CURLU, curl_url_cleanup>;
using CurlString = Owned<char, curl_free>;

class Transfer;

// Watches libcurl's sockets on the event loop.
//
// libcurl releases a socket between two requests on the same connection. The watch of a connection stays until the
// socket is closed, which saves each further request the system calls for a new watch.
class SocketWatches {
 public:
  using Handler = std::function<void(curl_socket_t socket, int curlEvents)>;

  explicit SocketWatches(Handler handler) : handler_(std::move(handler)) {}

  // The events that libcurl waits for, one of CURL_POLL_….
  void Want(curl_socket_t socket, int curlPoll);

  // Closes the socket of a connection. libcurl closes others itself: its socket pairs, and connections that it abandons
  // before they are established.
  void Close(curl_socket_t socket);

  void Clear() { watches_.clear(); }

 private:
  struct Watch {
    SocketWatches* owner;
    curl_socket_t socket;
    UvHandle<uv_poll_t> poll;
    bool isConnection = false;
    int wanted = 0;   // UV_READABLE, UV_WRITABLE
    int watched = 0;  // the same; stays while the connection is idle

    void Start(int events);
    void Happened(int status, int events);
  };

  [[nodiscard]] Watch& Find(curl_socket_t socket);
  void Release(curl_socket_t socket);

  Handler handler_;
  std::unordered_map<curl_socket_t, Watch> watches_;
};

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
  void Remove(CURL* easy);
  void Queue(Transfer& transfer);     // has events to deliver
  void Withdraw(Transfer& transfer);  // is about to be destroyed

 private:
  void Configure();
  void SetTimer(long milliseconds);
  void ActSoon();
  void Act(curl_socket_t socket, int events);
  void Perform(curl_socket_t socket, int events);
  void DeliverAll();

  CurlMulti multi_;
  CurlShare share_;
  SocketWatches watches_;
  UvHandle<uv_timer_t> timer_;
  UvHandle<uv_idle_t> soon_;  // in the next turn
  std::deque<Transfer*> queue_;
  bool isActing_ = false;
  bool isDue_ = false;
};

}  // namespace tessaro::platform
