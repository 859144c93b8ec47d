#pragma once

#include <functional>
#include <list>

#include "Base/Lifetime.h"
#include "Base/UvHandle.h"
#include "Platform/Common/FileDescriptor.h"

namespace tessaro::platform {

// Reports changes of links, addresses and routes, from the event loop. Main thread only.
//
// A report doesn't say what has changed: the kernel drops messages when there are many, and removes routes without a
// message when their link goes down. Listeners read the state themselves.
class NetworkChanges {
 public:
  using Listener = std::function<void()>;

  // Unsubscribes when the last copy is destroyed.
  using Subscription = std::shared_ptr<void>;

  static NetworkChanges& Shared();

  // An empty subscription when the kernel sends no messages here.
  [[nodiscard]] Subscription Listen(Listener listener) noexcept;

  // Leaves the event loop for good.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

 private:
  [[nodiscard]] bool Open() noexcept;
  void Receive() noexcept;

  bool isClosed_ = false;
  FileDescriptor socket_;
  UvHandle<uv_poll_t> poll_;
  std::list<Listener> listeners_;
};

}  // namespace tessaro::platform
