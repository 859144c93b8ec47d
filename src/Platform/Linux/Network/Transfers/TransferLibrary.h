#pragma once

#include <memory>

#include "Platform/HTTPTransfer.h"

namespace tessaro::platform {

// The way into the shared object that works with libcurl.
//
// Node.js exports its own OpenSSL, nghttp2 and zlib. A libcurl that the module itself linked to would call those, which
// in one host are merely other versions and in another a different library. The shared object is therefore opened with
// RTLD_DEEPBIND, which looks into its own dependencies first. It may have an allocator of its own for the same reason:
// each side frees only what it has made.
class TransferLibrary {
 public:
  virtual ~TransferLibrary() = default;

  [[nodiscard]] virtual std::unique_ptr<HTTPTransfer> Start(const HTTPRequest& request,
                                                            HTTPTransferClient& client) noexcept = 0;
  virtual void ShutDown() noexcept = 0;
};

}  // namespace tessaro::platform

// The only symbol of the shared object. The library lives as long as the process.
extern "C" __attribute__((visibility("default"))) tessaro::platform::TransferLibrary* TessaroTransferLibrary() noexcept;
