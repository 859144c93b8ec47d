#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "Base/Ref.h"
#include "Base/TextPieces.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/Linux/Base/KeyFiles.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Desktop/DesktopEntries.h"
#include "Platform/MainQueue.h"
#include "Platform/Sharing.h"

using namespace tessaro::platform;

namespace {

constexpr std::array kBluetoothSenders = {"bluetooth-sendto", "blueman-sendto"};
// These ignore attachments in mailto links.
constexpr std::array kThunderbirds = {"thunderbird", "betterbird", "icedove"};

// A program that files can be handed to.
struct ShareTarget {
  enum class Kind { Mail, Bluetooth, Application };

  Kind kind = Kind::Application;
  std::string identifier;  // of the application; for Bluetooth, the path of the program that sends
  std::string name;        // of the application
};

using Kind = ShareTarget::Kind;

// ---- Targets

ShareTarget TargetOf(Kind kind, const std::string& identifier) {
  const auto application = FindApplication(identifier);
  return {kind, identifier, application ? application->name : identifier};
}

void AddBluetooth(std::vector<ShareTarget>& targets) {
  for (const char* program : kBluetoothSenders) {
    const GTextPtr path(g_find_program_in_path(program));
    if (path == nullptr) continue;
    targets.push_back({Kind::Bluetooth, path.get(), ""});
    return;
  }
}

bool TakesFiles(const std::string& identifier) {
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
  return application != nullptr && (g_app_info_supports_files(G_APP_INFO(application.get())) ||
                                    g_app_info_supports_uris(G_APP_INFO(application.get())));
}

// The applications that open every one of the files.
std::vector<std::string> HandlersOfAll(const std::vector<std::string>& paths) {
  std::vector<std::string> types;
  for (const std::string& path : paths) types.push_back(ContentTypeOfFile(path));
  std::sort(types.begin(), types.end());
  types.erase(std::unique(types.begin(), types.end()), types.end());
  std::vector<std::string> handlers = HandlersOfContentType(types.front());
  for (const std::string& type : types) {
    const auto others = HandlersOfContentType(type);
    std::erase_if(handlers, [&](const std::string& handler) {
      return std::find(others.begin(), others.end(), handler) == others.end();
    });
  }
  return handlers;
}

// ---- Mail

bool IsThunderbird(const std::string& identifier) {
  return std::any_of(kThunderbirds.begin(), kThunderbirds.end(), [lower = LowerCase(identifier)](const char* name) {
    return lower.find(name) != std::string::npos;
  });
}

// The command line of the application, without the placeholders for files.
std::vector<std::string> WordsOf(const std::string& identifier) {
  const DesktopEntryPtr application = FindDesktopEntry(identifier);
  const char* line = application != nullptr ? g_app_info_get_commandline(G_APP_INFO(application.get())) : nullptr;
  char** parsed = nullptr;
  if (line == nullptr || !g_shell_parse_argv(line, nullptr, &parsed, nullptr)) return {};
  std::vector<std::string> words = TextsOf(GStringListPtr(parsed));
  std::erase_if(words, [](const std::string& word) { return word.starts_with('%') || word.starts_with("@@"); });
  return words;
}

// Thunderbird's list syntax: commas separate, an apostrophe ends the list.
std::string ThunderbirdAttachments(const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) {
    const std::string uri = FileURIOf(path);
    if (!list.empty() && !uri.empty()) list += ',';
    for (const char c : uri) {
      if (c == ',')
        list += "%2C";
      else if (c == '\'')
        list += "%27";
      else
        list += c;
    }
  }
  return "attachment='" + list + '\'';
}

std::string MailtoLink(const std::vector<std::string>& paths) {
  std::string link = "mailto:";
  for (const std::string& path : paths) {
    const GTextPtr escaped(g_uri_escape_string(AbsolutePath(path).c_str(), "/", FALSE));
    link += (link.ends_with(':') ? "?attach=" : "&attach=") + std::string(escaped.get());
  }
  return link;
}

Result<void> ShareByMail(const std::string& identifier, const std::vector<std::string>& paths) {
  if (!IsThunderbird(identifier)) return OpenURL(MailtoLink(paths), identifier);
  auto words = WordsOf(identifier);
  if (words.empty()) return Fail("the command line of " + identifier + " is malformed");
  words.insert(words.end(), {"-compose", ThunderbirdAttachments(paths)});
  return Spawn(words);
}

Result<void> ShareByBluetooth(const std::string& program, const std::vector<std::string>& paths) {
  std::vector<std::string> words = {program};
  for (const std::string& path : paths) words.push_back(AbsolutePath(path));
  return Spawn(words);
}

// The targets that take all of these files, in the order of their kinds, the default application first within each.
std::vector<ShareTarget> ShareTargets(const std::vector<std::string>& paths) {
  if (paths.empty()) return {};
  std::vector<ShareTarget> targets;
  for (const std::string& identifier : HandlersOfScheme("mailto")) {
    targets.push_back(TargetOf(Kind::Mail, identifier));
  }
  AddBluetooth(targets);
  for (const std::string& identifier : HandlersOfAll(paths)) {
    if (TakesFiles(identifier)) targets.push_back(TargetOf(Kind::Application, identifier));
  }
  return targets;
}

// Starts the target: a new mail with the files, or the application with the files open.
Result<void> ShareWith(const ShareTarget& target, const std::vector<std::string>& paths) {
  switch (target.kind) {
    case Kind::Mail:
      return ShareByMail(target.identifier, paths);
    case Kind::Bluetooth:
      return ShareByBluetooth(target.identifier, paths);
    case Kind::Application:
      return OpenFiles(paths, target.identifier);
  }
  return Fail("unknown kind of target");
}

// ---- The menu

// Sharing with this application itself is pointless.
bool IsOurs(const ShareTarget& target) {
  NSString* ours = [[NSBundle mainBundle] bundleIdentifier];
  return ours != nil && [TsNSString(target.identifier) caseInsensitiveCompare:ours] == NSOrderedSame;
}

NSString* TitleOf(const ShareTarget& target) {
  NSString* name = TsNSString(target.name);
  switch (target.kind) {
    case Kind::Mail:
      return [NSString stringWithFormat:NSLocalizedString(@"Mail with %@", nil), name];
    case Kind::Bluetooth:
      return NSLocalizedString(@"Send by Bluetooth", nil);
    case Kind::Application:
      return [NSString stringWithFormat:NSLocalizedString(@"Open with %@", nil), name];
  }
  return name;
}

}  // namespace

// The menu's target while the menu is open.
@interface TsSharingMenu : NSObject {
  std::vector<std::string> _paths;
  std::vector<ShareTarget> _targets;
}

- (instancetype)initWithPaths:(std::vector<std::string>)paths;
- (void)popUpBelow:(const ContentRectangle&)rectangle of:(NSWindow*)window;

@end

@implementation TsSharingMenu

- (instancetype)initWithPaths:(std::vector<std::string>)paths {
  self = [super init];
  if (!self) return nil;
  _paths = std::move(paths);
  _targets = ShareTargets(_paths);
  std::erase_if(_targets, IsOurs);
  return self;
}

- (Ref<NSMenu>)menu {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:@""]);
  for (std::size_t i = 0; i < _targets.size(); ++i) {
    if (i > 0 && _targets[i].kind == Kind::Application && _targets[i - 1].kind != Kind::Application) {
      [menu addItem:[NSMenuItem separatorItem]];
    }
    const auto item = Adopt([[NSMenuItem alloc] initWithTitle:TitleOf(_targets[i])
                                                       action:@selector(share:)
                                                keyEquivalent:@""]);
    [item setTarget:self];
    [item setTag:static_cast<NSInteger>(i)];
    [menu addItem:item];
  }
  if (_targets.empty()) {
    // An item without an action is disabled.
    [menu addItemWithTitle:NSLocalizedString(@"No Applications", nil) action:nullptr keyEquivalent:@""];
  }
  return menu;
}

- (void)popUpBelow:(const ContentRectangle&)rectangle of:(NSWindow*)window {
  NSView* content = [window contentView];
  const CGFloat below = rectangle.y + rectangle.height;
  const NSPoint corner = NSMakePoint(rectangle.x, [content isFlipped] ? below : [content bounds].size.height - below);
  const auto menu = [self menu];
  [menu popUpMenuPositioningItem:nil atLocation:corner inView:content];
}

- (void)share:(NSMenuItem*)item {
  const ShareTarget& target = _targets[static_cast<std::size_t>([item tag])];
  if (const auto shared = ShareWith(target, _paths); !shared) {
    TsLogError(@"Couldn't share files with %s: %s", target.identifier.c_str(), shared.error().message.c_str());
  }
}

@end

namespace tessaro::platform {

void ShowSharingPicker(NSWindow* window, const ContentRectangle& rectangle, std::vector<std::string> paths) {
  const auto menu = Adopt([[TsSharingMenu alloc] initWithPaths:std::move(paths)]);
  MainQueue::Shared().Post([menu, window = Retain(window), rectangle] {
    if ([window isVisible]) [menu popUpBelow:rectangle of:window];
  });
}

}  // namespace tessaro::platform
