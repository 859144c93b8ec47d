#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Base/Result.h"
#include "Platform/Common/FileDescriptor.h"
#include "Platform/Linux/Clipboard/SelectionReader.h"
#include "Platform/Linux/Clipboard/SelectionServer.h"
#include "Platform/Linux/Clipboard/XConnection.h"

namespace tessaro::platform {

// The selections of the X server: its clipboard, what is being dragged. Serves those that this process offers and reads
// those of other programs, on one thread with one connection, so that other programs never wait for the application.
// Calls are allowed on any thread. It lives until the process ends.
class Selections {
 public:
  static Selections& Shared();

  // False without a display: there is nothing to take and nothing to read.
  [[nodiscard]] bool IsAvailable() const { return isAvailable_; }

  // Takes the selection from its owner. False when the X server refuses.
  [[nodiscard]] bool Take(const std::string& selection, SelectionOffer offer);

  [[nodiscard]] bool Owns(const std::string& selection);

  // Waits for another program, within the limits. The failure's code is a SelectionFailure.
  [[nodiscard]] Result<std::string> Read(const std::string& selection, const std::string& target,
                                         SelectionLimits limits);

  // The targets that the owner offers, by name; none when there is no owner.
  [[nodiscard]] Result<std::vector<std::string>> Targets(const std::string& selection, SelectionLimits limits);

  Selections();

 private:
  using Task = std::function<void()>;

  void Run();
  void Handle(const xcb_generic_event_t& event);
  void RunTasks();
  void Wait();
  void Post(Task task);

  // Runs `function` on the thread and waits for its result.
  template <typename Function>
  auto Call(Function function);

  [[nodiscard]] std::vector<std::string> NamesOf(const std::string& atoms);

  XConnection connection_;
  const bool isAvailable_ = static_cast<bool>(connection_);
  FileDescriptor wake_;
  SelectionServer server_;
  SelectionReader reader_;

  std::mutex mutex_;
  std::deque<Task> tasks_;
  bool hasEnded_ = false;  // the display has gone, and with it the thread
};

}  // namespace tessaro::platform
