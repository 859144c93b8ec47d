#include "Platform/SoundPlayer.h"

#include <canberra.h>

#include <mutex>
#include <optional>
#include <utility>

// Some of ALSA's headers lack extern "C".
extern "C" {
#include <alsa/asoundlib.h>
}

#include "Base/Lifetime.h"
#include "Base/Owned.h"
#include "Platform/TaskQueues.h"

namespace tessaro::platform {

namespace {

constexpr std::uint32_t kSound = 1;

using Context = Owned<ca_context, ca_context_destroy>;
using Properties = Owned<ca_proplist, ca_proplist_destroy>;

// By default ALSA prints errors to the terminal.
void IgnoreAlsaError(const char*, int, const char*, int, const char*, va_list) {}

Context Connect() {
  ca_context* made = nullptr;
  if (ca_context_create(&made) != CA_SUCCESS) return nullptr;
  return Context(made);
}

Properties PropertiesOf(const std::string& file) {
  ca_proplist* made = nullptr;
  if (ca_proplist_create(&made) != CA_SUCCESS) return nullptr;
  Properties properties(made);
  ca_proplist_sets(made, CA_PROP_MEDIA_FILENAME, file.c_str());
  ca_proplist_sets(made, CA_PROP_MEDIA_ROLE, "event");
  // By default the server keeps every sound that was played.
  ca_proplist_sets(made, CA_PROP_CANBERRA_CACHE_CONTROL, "never");
  return properties;
}

// Called once for each started sound, on the library's thread.
void Finished(ca_context*, std::uint32_t, int result, void* data) {
  const std::unique_ptr<SoundFailure> failure(static_cast<SoundFailure*>(data));
  const bool isExpected = result == CA_SUCCESS || result == CA_ERROR_CANCELED || result == CA_ERROR_DESTROYED;
  if (!isExpected && *failure) (*failure)(ca_strerror(result));
}

int Start(const Context& context, const std::string& file, const SoundFailure& failure) {
  const Properties properties = PropertiesOf(file);
  if (!context || !properties) return CA_ERROR_OOM;
  auto handler = std::make_unique<SoundFailure>(failure);
  const int result = ca_context_play_full(context.get(), kSound, properties.get(), Finished, handler.get());
  if (result == CA_SUCCESS) static_cast<void>(handler.release());
  return result;
}

// The audio system may be slow or hang: one task at a time talks to it, and plays only the last of the requests that
// came before.
class Player {
 public:
  struct Request {
    std::string file;  // empty: silence
    SoundFailure failure;
  };

  void Post(Request request) {
    const std::lock_guard lock(mutex_);
    next_ = std::move(request);
    if (std::exchange(isWorking_, true)) return;
    queue_.Post([this] { Work(); });
  }

 private:
  std::optional<Request> Take() {
    const std::lock_guard lock(mutex_);
    auto taken = std::exchange(next_, std::nullopt);
    if (!taken) isWorking_ = false;
    return taken;
  }

  void Work() {
    const auto handler = snd_lib_error_set_local(IgnoreAlsaError);
    while (const auto request = Take()) {
      if (context_) ca_context_cancel(context_.get(), kSound);
      if (!request->file.empty()) Play(*request);
    }
    snd_lib_error_set_local(handler);
  }

  void Play(const Request& request) {
    if (context_ && Start(context_, request.file, request.failure) == CA_SUCCESS) return;
    // The audio server may have been restarted.
    context_ = Connect();
    const int result = Start(context_, request.file, request.failure);
    if (result == CA_SUCCESS) return;
    context_.reset();
    if (request.failure) request.failure(ca_strerror(result));
  }

  std::mutex mutex_;
  std::optional<Request> next_;
  bool isWorking_ = false;
  SerialQueue queue_;
  Context context_;  // used on the queue only
};

}  // namespace

void PlaySound(std::string file, SoundFailure failure) noexcept {
  static Forever<Player> player;
  player->Post({std::move(file), std::move(failure)});
}

}  // namespace tessaro::platform
