#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <functional>
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

using Paths = std::vector<std::string>;

// A program that files can be handed to.
struct ShareTarget {
  std::string identifier;  // of the application; for Bluetooth, the path of the program that sends
  Ref<NSString> title;
  bool isOpening = false;  // the files, not sending them
  std::function<Result<void>(const Paths&)> share;
};

// ---- Applications

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

// ---- Targets

NSString* TitleWith(NSString* format, const std::string& identifier) {
  const auto application = FindApplication(identifier);
  return [NSString stringWithFormat:format, TsNSString(application ? application->name : identifier)];
}

void AddMail(std::vector<ShareTarget>& targets, const std::string& identifier) {
  NSString* title = TitleWith(NSLocalizedString(@"Mail with %@", nil), identifier);
  targets.push_back(
      {identifier, Retain(title), false, [identifier](const Paths& paths) { return ShareByMail(identifier, paths); }});
}

void AddBluetooth(std::vector<ShareTarget>& targets) {
  for (const char* name : kBluetoothSenders) {
    const GTextPtr path(g_find_program_in_path(name));
    if (path == nullptr) continue;
    const std::string program = path.get();
    targets.push_back({program, Retain(NSLocalizedString(@"Send by Bluetooth", nil)), false,
                       [program](const Paths& paths) { return ShareByBluetooth(program, paths); }});
    return;
  }
}

void AddOpening(std::vector<ShareTarget>& targets, const std::string& identifier) {
  NSString* title = TitleWith(NSLocalizedString(@"Open with %@", nil), identifier);
  targets.push_back(
      {identifier, Retain(title), true, [identifier](const Paths& paths) { return OpenFiles(paths, identifier); }});
}

// Sharing with this application itself is pointless.
bool IsOurs(const ShareTarget& target) {
  NSString* ours = [[NSBundle mainBundle] bundleIdentifier];
  return ours != nil && [TsNSString(target.identifier) caseInsensitiveCompare:ours] == NSOrderedSame;
}

// The targets that take all of these files; within each kind the default application comes first.
std::vector<ShareTarget> ShareTargets(const Paths& paths) {
  if (paths.empty()) return {};
  std::vector<ShareTarget> targets;
  for (const std::string& identifier : HandlersOfScheme("mailto")) AddMail(targets, identifier);
  AddBluetooth(targets);
  for (const std::string& identifier : HandlersOfAll(paths)) {
    if (TakesFiles(identifier)) AddOpening(targets, identifier);
  }
  std::erase_if(targets, IsOurs);
  return targets;
}

}  // namespace

// The menu's target while the menu is open.
@interface TsSharingMenu : NSObject {
  Paths _paths;
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
  return self;
}

- (Ref<NSMenu>)menu {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:@""]);
  for (std::size_t i = 0; i < _targets.size(); ++i) {
    if (i > 0 && _targets[i].isOpening && !_targets[i - 1].isOpening) [menu addItem:[NSMenuItem separatorItem]];
    const auto item = Adopt([[NSMenuItem alloc] initWithTitle:_targets[i].title
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
  if (const auto shared = target.share(_paths); !shared) {
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
