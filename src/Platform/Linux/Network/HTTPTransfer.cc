#include "Platform/HTTPTransfer.h"

#include <dlfcn.h>

#include "Base/Lifetime.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Network/Transfers/TransferLibrary.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr char kLibraryFile[] = "TessaroTransfers.so";

#ifdef TESSARO_SANITIZED
// The sanitizers end a process that uses RTLD_DEEPBIND.
constexpr int kOpenMode = RTLD_NOW | RTLD_LOCAL;
#else
constexpr int kOpenMode = RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND;
#endif

class OpenedLibrary {
 public:
  static OpenedLibrary& Shared() {
    static Forever<OpenedLibrary> opened;
    return *opened;
  }

  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept {
    if (library_ != nullptr) library_->ShutDown();
  }

  // nullptr when it can't be opened; error() then says why.
  [[nodiscard]] TransferLibrary* library() const { return library_; }
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  friend class Forever<OpenedLibrary>;
  OpenedLibrary() {
    void* image = dlopen((OwnDirectory() / kLibraryFile).c_str(), kOpenMode);
    void* entrance = image != nullptr ? dlsym(image, "TessaroTransferLibrary") : nullptr;
    if (entrance != nullptr) {
      library_ = reinterpret_cast<decltype(&TessaroTransferLibrary)>(entrance)();
    } else if (const char* reason = dlerror()) {
      error_ = reason;
    }
  }

  TransferLibrary* library_ = nullptr;
  std::string error_;
};

// In the form of all descriptions.
std::string DescribeMissingLibrary(const std::string& reason) {
  const std::string text = "HTTP is unavailable: TessaroTransfers.so could not be loaded.";
  return "Error Domain=NSURLErrorDomain Code=-1 \"" + text + "\" UserInfo={NSLocalizedDescription=" + text +
         ", NSUnderlyingError=" + reason + "}";
}

// Every transfer on a system without libcurl.
class FailedTransfer final : public HTTPTransfer {
 public:
  FailedTransfer(const std::string& reason, HTTPTransferClient& client) {
    MainQueue::Shared().Post([alive = std::weak_ptr(alive_), &client, reason] {
      if (!alive.expired()) client.Ended(Fail(-1, DescribeMissingLibrary(reason)));
    });
  }

 private:
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace

std::unique_ptr<HTTPTransfer> HTTPTransfer::Start(const HTTPRequest& request, HTTPTransferClient& client) noexcept {
  const OpenedLibrary& opened = OpenedLibrary::Shared();
  if (opened.library() != nullptr) return opened.library()->Start(request, client);
  return std::make_unique<FailedTransfer>(opened.error(), client);
}

}  // namespace tessaro::platform
