#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"

// The installed applications, and what each of them opens. Texts are UTF-8 and may be hostile: none of them reaches a
// shell. Nothing of this throws; any thread, unless said otherwise.
//
// Opening succeeds when the system has accepted the request. The application starts later; when it then fails to, the
// log says so.
namespace tessaro::platform {

struct Application {
  std::string identifier;
  std::string path;  // of its bundle
  std::string name;  // not localised
};

// Nothing when it isn't installed, or can't be started.
[[nodiscard]] std::optional<Application> FindApplication(std::string_view identifier) noexcept;

// The system's name for the content of files with an extension; empty when it knows none.
[[nodiscard]] std::string ContentTypeOfExtension(std::string_view extension) noexcept;

// The same of a file or folder that exists.
[[nodiscard]] std::string ContentTypeOfFile(const std::string& path) noexcept;

// The identifiers of the applications that open a content type, or a URL scheme, the default one first.
[[nodiscard]] std::vector<std::string> HandlersOfContentType(const std::string& type) noexcept;
[[nodiscard]] std::vector<std::string> HandlersOfScheme(std::string_view scheme) noexcept;

// The identifier of the default one; empty if missing.
[[nodiscard]] std::string DefaultHandlerOfContentType(const std::string& type) noexcept;
[[nodiscard]] std::string DefaultHandlerOfScheme(std::string_view scheme) noexcept;

// Makes an application the user's default for a scheme, and changes nothing else. Succeeds when the system has accepted
// the change, which it may still ask the user to confirm.
[[nodiscard]] Result<void> SetDefaultHandlerOfScheme(std::string_view scheme, std::string_view identifier) noexcept;

// Icons as PNG data, `size` pixels wide and high; empty without an icon, or when the size isn't between 1 and 1024.
// Main thread only.
[[nodiscard]] std::vector<std::uint8_t> IconOfApplication(std::string_view identifier, int size) noexcept;
[[nodiscard]] std::vector<std::uint8_t> IconOfContentType(const std::string& type, int size) noexcept;

// Opens a file or folder with an application, given by its path or its identifier; with the default one when that is
// empty.
[[nodiscard]] Result<void> OpenFile(const std::string& path, const std::string& application) noexcept;

// Opens several at once, in one process of the application if it can.
[[nodiscard]] Result<void> OpenFiles(const std::vector<std::string>& paths, std::string_view identifier) noexcept;

// Opens a URL with an application, or with the default one of its scheme when there is no identifier.
[[nodiscard]] Result<void> OpenURL(const std::string& url, std::string_view identifier) noexcept;

// Starts an application without anything to open.
[[nodiscard]] Result<void> LaunchApplication(std::string_view identifier) noexcept;

// Shows the file manager's information about a file. Waits for the file manager, but not longer than two seconds. Main
// thread only.
[[nodiscard]] Result<void> ShowFileInformation(const std::string& path) noexcept;

// Opens a file in a document viewer from which the user prints; nothing is printed without a dialog. Fails when there
// is no such viewer, or no such file. Any thread.
[[nodiscard]] Result<void> PrintFile(const std::string& path) noexcept;

// Offers to move this application into the applications folder, on systems where the user installs by dragging. Main
// thread only.
void OfferMoveToApplicationsFolder();

}  // namespace tessaro::platform
