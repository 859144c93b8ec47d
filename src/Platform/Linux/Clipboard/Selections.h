#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Clipboard/SelectionExchange.h"

namespace tessaro::platform {

// The X server's selections: the clipboard, and the contents of drags. Serves this process's own and reads those of
// other programs, on one thread with one connection, so that other programs never wait for the application. Any thread.
class Selections {
 public:
  static Selections& Shared();

  // False without a display.
  [[nodiscard]] bool IsAvailable() const { return isAvailable_; }

  // Takes the selection from its owner. False when the X server refuses.
  [[nodiscard]] bool Take(const std::string& selection, SelectionOffer offer);

  [[nodiscard]] bool Owns(const std::string& selection);

  // Waits for another program, within the limits. The failure's code is a SelectionFailure.
  [[nodiscard]] Result<std::string> Read(const std::string& selection, const std::string& target,
                                         SelectionLimits limits);

  // The names of the owner's targets; none without an owner.
  [[nodiscard]] Result<std::vector<std::string>> Targets(const std::string& selection, SelectionLimits limits);

  Selections();

 private:
  using Task = std::function<void()>;

  void Run();
  void Handle(const xcb_generic_event_t& event);
  void RunTasks();
  void WaitForEvents();
  void Post(Task task);

  template <typename Value, typename Begin>
  Value Wait(Begin begin, Value lost);

  [[nodiscard]] std::vector<std::string> NamesOf(const std::string& atoms);

  XConnection connection_;
  FileDescriptor wake_;
  const bool isAvailable_ = static_cast<bool>(connection_) && static_cast<bool>(wake_);
  SelectionServer server_;
  SelectionReader reader_;

  std::mutex mutex_;
  std::deque<Task> tasks_;
  bool hasEnded_ = false;  // the display has gone, and with it the thread
};

}  // namespace tessaro::platform
