#include "Platform/Applications.h"

#import <AppKit/AppKit.h>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <algorithm>
#include <filesystem>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Drawing.h"
#include "Platform/macOS/AppleScriptText.h"
#include "Platform/macOS/CFRef.h"
#include "Platform/macOS/Guarded.h"
#include "Platform/macOS/SharedFileList.h"

// NSWorkspace and Launch Services. What opens something returns at once; the system reports a failure later, on a queue
// of its own. A new default for a scheme of the web or of mail is confirmed by the user. The information window needs
// the user's consent to scripting the Finder, and NSAppleEventsUsageDescription in the host's Info.plist. Any thread.
namespace tessaro::platform {

namespace {

constexpr int kLargestIcon = 1024;

NSWorkspace* Workspace() { return [NSWorkspace sharedWorkspace]; }

NSURL* URLOfApplication(std::string_view identifierOrPath) {
  if (identifierOrPath.starts_with('/')) return [NSURL fileURLWithPath:TsNSString(identifierOrPath)];
  return [Workspace() URLForApplicationWithBundleIdentifier:TsNSString(identifierOrPath)];
}

std::vector<std::string> TextsIn(CFArrayRef array) {
  std::vector<std::string> texts;
  for (CFIndex i = 0; array != nullptr && i < CFArrayGetCount(array); ++i) {
    if (auto text = TextOf(CFArrayGetValueAtIndex(array, i))) texts.push_back(std::move(*text));
  }
  return texts;
}

std::vector<std::string> DefaultFirst(std::vector<std::string> all, const std::string& first) {
  const auto found = std::find(all.begin(), all.end(), first);
  if (found != all.end()) std::rotate(all.begin(), found, found + 1);
  return all;
}

std::vector<std::uint8_t> PNGOf(NSImage* icon, int size) {
  if (icon == nil || size < 1 || size > kLargestIcon) return {};
  const auto pixels =
      DrawPixels(NSMakeSize(size, size), [icon, size] { [icon drawInRect:NSMakeRect(0, 0, size, size)]; });
  NSData* png = [pixels representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
  const auto* bytes = static_cast<const std::uint8_t*>([png bytes]);
  return {bytes, bytes + [png length]};
}

// For every handler that the system calls with what became of a request.
void (^LogFailureOf(std::string what))(NSRunningApplication*, NSError*) {
  return [[^(NSRunningApplication*, NSError* error) {
    if (error != nil) TsLogTextError(what + ": " + ReasonOf(error));
  } copy] autorelease];
}

NSWorkspaceOpenConfiguration* Configuration() { return [NSWorkspaceOpenConfiguration configuration]; }

Result<void> ResultOf(const std::string& failure, const std::string& reason) {
  if (!failure.empty()) return Fail(failure);
  if (!reason.empty()) return Fail(reason);
  return {};
}

std::string Open(NSArray* urls, std::string_view application, const std::string& what) {
  NSURL* program = URLOfApplication(application);
  if (program == nil) return "there is no application " + std::string(application);
  [Workspace() openURLs:urls
      withApplicationAtURL:program
             configuration:Configuration()
         completionHandler:LogFailureOf("Can't open " + what)];
  return {};
}

std::string OpenWithDefault(NSURL* url, const std::string& what) {
  if ([Workspace() URLForApplicationToOpenURL:url] == nil) return "no application opens " + what;
  [Workspace() openURL:url configuration:Configuration() completionHandler:LogFailureOf("Can't open " + what)];
  return {};
}

}  // namespace

std::optional<Application> FindApplication(std::string_view identifier) noexcept {
  std::optional<Application> application;
  const std::string failure = Guarded([&] {
    NSURL* url = [Workspace() URLForApplicationWithBundleIdentifier:TsNSString(identifier)];
    if (url == nil) return;
    const std::filesystem::path path = TsStdString([url path]);
    application = Application{std::string(identifier), path, path.stem()};
  });
  return failure.empty() ? application : std::nullopt;
}

std::string ContentTypeOfExtension(std::string_view extension) noexcept {
  std::string type;
  const std::string failure =
      Guarded([&] { type = TsStdString([[UTType typeWithFilenameExtension:TsNSString(extension)] identifier]); });
  return failure.empty() ? type : std::string();
}

std::string ContentTypeOfFile(const std::string& path) noexcept {
  std::string type;
  const std::string failure = Guarded([&] {
    NSString* found = nil;
    NSURL* url = [NSURL fileURLWithPath:TsNSString(path)];
    if ([url getResourceValue:&found forKey:NSURLTypeIdentifierKey error:nullptr]) type = TsStdString(found);
  });
  return failure.empty() ? type : std::string();
}

std::vector<std::string> HandlersOfContentType(const std::string& type) noexcept {
  const CFRef<CFArrayRef> all(LSCopyAllRoleHandlersForContentType(NewCFString(type).get(), kLSRolesAll));
  return DefaultFirst(TextsIn(all.get()), DefaultHandlerOfContentType(type));
}

std::vector<std::string> HandlersOfScheme(std::string_view scheme) noexcept {
  const CFRef<CFArrayRef> all(LSCopyAllHandlersForURLScheme(NewCFString(scheme).get()));
  return DefaultFirst(TextsIn(all.get()), DefaultHandlerOfScheme(scheme));
}

std::string DefaultHandlerOfContentType(const std::string& type) noexcept {
  const CFRef<CFStringRef> handler(LSCopyDefaultRoleHandlerForContentType(NewCFString(type).get(), kLSRolesAll));
  return TextOf(handler.get()).value_or("");
}

std::string DefaultHandlerOfScheme(std::string_view scheme) noexcept {
  const CFRef<CFStringRef> handler(LSCopyDefaultHandlerForURLScheme(NewCFString(scheme).get()));
  return TextOf(handler.get()).value_or("");
}

Result<void> SetDefaultHandlerOfScheme(std::string_view scheme, std::string_view identifier) noexcept {
  const OSStatus status = LSSetDefaultHandlerForURLScheme(NewCFString(scheme).get(), NewCFString(identifier).get());
  if (status != noErr) return Fail(status, "Launch Services refuses the handler with " + std::to_string(status));
  return {};
}

std::vector<std::uint8_t> IconOfApplication(std::string_view identifier, int size) noexcept {
  std::vector<std::uint8_t> icon;
  const std::string failure = Guarded([&] {
    NSURL* url = [Workspace() URLForApplicationWithBundleIdentifier:TsNSString(identifier)];
    if (url != nil) icon = PNGOf([Workspace() iconForFile:[url path]], size);
  });
  return failure.empty() ? icon : std::vector<std::uint8_t>();
}

std::vector<std::uint8_t> IconOfContentType(const std::string& type, int size) noexcept {
  std::vector<std::uint8_t> icon;
  const std::string failure = Guarded([&] {
    UTType* known = [UTType typeWithIdentifier:TsNSString(type)];
    if (known != nil) icon = PNGOf([Workspace() iconForContentType:known], size);
  });
  return failure.empty() ? icon : std::vector<std::uint8_t>();
}

Result<void> OpenFile(const std::string& path, const std::string& application) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    NSURL* url = [NSURL fileURLWithPath:TsNSString(path)];
    reason = application.empty() ? OpenWithDefault(url, path) : Open(@[ url ], application, path);
  });
  return ResultOf(failure, reason);
}

Result<void> OpenFiles(const std::vector<std::string>& paths, std::string_view identifier) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    NSMutableArray* urls = [NSMutableArray array];
    for (const std::string& path : paths) [urls addObject:[NSURL fileURLWithPath:TsNSString(path)]];
    reason = Open(urls, identifier, std::to_string(paths.size()) + " files");
  });
  return ResultOf(failure, reason);
}

Result<void> OpenURL(const std::string& url, std::string_view identifier) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    NSURL* parsed = [NSURL URLWithString:TsNSString(url)];
    if (parsed == nil) return void(reason = "this is no URL");
    reason = identifier.empty() ? OpenWithDefault(parsed, url) : Open(@[ parsed ], identifier, url);
  });
  return ResultOf(failure, reason);
}

Result<void> LaunchApplication(std::string_view identifier) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    NSURL* program = URLOfApplication(identifier);
    if (program == nil) return void(reason = "there is no application " + std::string(identifier));
    [Workspace() openApplicationAtURL:program
                        configuration:Configuration()
                    completionHandler:LogFailureOf("Can't start " + std::string(identifier))];
  });
  return ResultOf(failure, reason);
}

Result<void> ShowFileInformation(const std::string& path) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    const auto script = Adopt([[NSAppleScript alloc] initWithSource:TsNSString(InformationWindowScript(path))]);
    NSDictionary* error = nil;
    if ([script executeAndReturnError:&error] == nil)
      reason = TsStdString([[error objectForKey:NSAppleScriptErrorMessage] description]);
  });
  return ResultOf(failure, reason);
}

}  // namespace tessaro::platform
