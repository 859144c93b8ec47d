#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The applications that people have installed, and what each of them opens. Texts are UTF-8 and may be hostile. What
// opens something starts no shell. Nothing of this throws; any thread.
namespace tessaro::platform {

struct Application {
  std::string identifier;  // of its bundle; on Linux the desktop file's, without its extension
  std::string path;        // of its bundle; on Linux of the desktop file
  std::string name;        // as people know it, in no language in particular
};

// Nothing when it isn't installed, or can't be started.
[[nodiscard]] std::optional<Application> FindApplication(std::string_view identifier) noexcept;

// The system's name for what files of an extension contain; empty when it knows none.
[[nodiscard]] std::string ContentTypeOfExtension(std::string_view extension) noexcept;

// The same of a file or folder that is there.
[[nodiscard]] std::string ContentTypeOfFile(const std::string& path) noexcept;

// The identifiers of those that open a content type, or a URL scheme, the default one first.
[[nodiscard]] std::vector<std::string> HandlersOfContentType(const std::string& type) noexcept;
[[nodiscard]] std::vector<std::string> HandlersOfScheme(std::string_view scheme) noexcept;

// The identifier of the default one; empty when there is none.
[[nodiscard]] std::string DefaultHandlerOfContentType(const std::string& type) noexcept;
[[nodiscard]] std::string DefaultHandlerOfScheme(std::string_view scheme) noexcept;

// Makes an application the user's default for a scheme, and changes nothing else. False when it isn't installed, there
// can be no such scheme, or the user's settings can't be written.
[[nodiscard]] bool SetDefaultHandlerOfScheme(std::string_view scheme, std::string_view identifier) noexcept;

// Icons as PNG data, `size` pixels wide and high; empty when there is none, or the size isn't between 1 and 1024.
[[nodiscard]] std::vector<std::uint8_t> IconOfApplication(std::string_view identifier, int size) noexcept;
[[nodiscard]] std::vector<std::uint8_t> IconOfContentType(const std::string& type, int size) noexcept;

// Opens a file or folder with the application at `applicationPath`, or with its default one when that is empty. The
// application may be given by its identifier too.
[[nodiscard]] bool OpenFile(const std::string& path, const std::string& applicationPath) noexcept;

// Opens several at once with the application of an identifier, which is started once for all if it can be.
[[nodiscard]] bool OpenFiles(const std::vector<std::string>& paths, std::string_view identifier) noexcept;

// Opens a URL with an application, or with the default one of its scheme when there is no identifier.
[[nodiscard]] bool OpenURL(const std::string& url, std::string_view identifier) noexcept;

// Starts an application without anything to open.
[[nodiscard]] bool LaunchApplication(std::string_view identifier) noexcept;

// Shows the file manager's information about a file. False when there is no file manager to ask, or it doesn't answer
// in time. Main thread only.
[[nodiscard]] bool ShowFileInformation(const std::string& path) noexcept;

}  // namespace tessaro::platform
