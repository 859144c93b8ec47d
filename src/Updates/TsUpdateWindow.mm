#include "Updates/TsUpdateWindow.h"

#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/TsString.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "Platform/HTMLText.h"
#include "Utilities/Controls.h"

namespace platform = tessaro::platform;

using platform::UpdaterInterface;

namespace {

constexpr NSSize kWindowSize = {520, 360};
constexpr CGFloat kProgressHeight = 16;
// Laying out more text would block the main thread.
constexpr std::size_t kLongestText = 20000;

struct Button {
  NSString* title;
  SEL action;
};

// The contents of the window at one moment. A missing text has no row.
struct Page {
  NSString* message = nil;
  NSString* text = nil;
  bool hasProgress = false;
  std::vector<Button> buttons;
};

NSString* VersionOf(const platform::AppcastItem& item) {
  constexpr char kShortVersion[] = "sparkle:shortVersionString";
  const auto* version = FindProperty(item.properties, kShortVersion);
  const auto* enclosure = FindProperty(item.properties, "enclosure");
  if (version == nullptr && enclosure != nullptr) version = FindProperty(enclosure->parts, kShortVersion);
  return TsNSString(version != nullptr && !version->text.empty() ? version->text : item.version);
}

NSString* ReleaseNotesOf(const platform::AppcastItem& item) {
  const auto* description = FindProperty(item.properties, "description");
  if (description == nullptr) description = FindProperty(item.properties, "sparkle:releaseNotesLink");
  if (description == nullptr) return @"";
  return TsNSString(platform::TextFromHTML(description->text).substr(0, kLongestText));
}

Ref<NSTextField> NewMessage(NSString* text) {
  auto message = TsNewLabel(text);
  [message setFont:[NSFont boldSystemFontOfSize:0]];
  return message;
}

Ref<NSScrollView> NewText(NSString* string) {
  const auto text = Adopt([[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, kWindowSize.width - 60, 100)]);
  [text setEditable:NO];
  [text setVerticallyResizable:YES];
  [text setAutoresizingMask:NSViewWidthSizable];
  [[text textContainer] setWidthTracksTextView:YES];
  [text setString:string];
  return TsNewScrollView(text);
}

}  // namespace

@interface TsUpdateWindow ()
- (void)showPage:(const Page&)page;
- (void)showChecking;
- (void)showInstalling;
- (void)showResult:(NSString*)message text:(NSString*)text;
- (void)showUpdate:(const platform::AppcastItem&)item choose:(UpdaterInterface::Choose)choose;
- (void)showReceived:(std::uint64_t)received of:(std::optional<std::uint64_t>)total;
@end

namespace {

class WindowInterface final : public UpdaterInterface {
 public:
  explicit WindowInterface(TsUpdateWindow* window) : window_(window) {}

  void ShowChecking() override { [window_ showChecking]; }
  void ShowInstalling() override { [window_ showInstalling]; }
  void ShowUpToDate() override {
    NSString* version = [NSApplication ts_shortVersionString];
    [window_ showResult:NSLocalizedString(@"You have the newest version.", nil) text:version];
  }
  void ShowUpdate(const platform::AppcastItem& item, Choose choose) override {
    [window_ showUpdate:item choose:std::move(choose)];
  }
  void ShowProgress(std::uint64_t received, std::optional<std::uint64_t> total) override {
    [window_ showReceived:received of:total];
  }
  void ShowInstalled(const platform::AppcastItem& item) override {
    NSString* format = NSLocalizedString(@"Version %@ is installed.", nil);
    [window_ showResult:[NSString stringWithFormat:format, VersionOf(item)]
                   text:NSLocalizedString(@"It starts with the next launch.", nil)];
  }
  void ShowFailure(std::string_view reason) override {
    [window_ showResult:NSLocalizedString(@"The update failed.", nil) text:TsNSString(reason.substr(0, kLongestText))];
  }

 private:
  TsUpdateWindow* window_;
};

}  // namespace

@implementation TsUpdateWindow

+ (instancetype)sharedInstance {
  static Forever<Ref<TsUpdateWindow>> shared(Adopt([[self alloc] init]));
  return shared->get();
}

- (instancetype)init {
  // Escape closes a panel.
  const auto window =
      Adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, kWindowSize.width, kWindowSize.height)
                                       styleMask:NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask
                                         backing:NSBackingStoreBuffered
                                           defer:YES]);
  self = [super initWithWindow:window];
  if (self == nil) return nil;
  _interface = std::make_unique<WindowInterface>(self);
  [window setReleasedWhenClosed:NO];
  [window setHidesOnDeactivate:NO];
  [window setBecomesKeyOnlyIfNeeded:NO];
  [window setTitle:NSLocalizedString(@"Software Update", nil)];
  [window setMinSize:[window frame].size];
  [window center];
  [window setFrameAutosaveName:@"TsUpdateWindow"];
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(windowWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:window];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [super dealloc];
}

- (UpdaterInterface*)interface {
  return _interface.get();
}

// ---- Pages

- (void)showChecking {
  [self showPage:{.message = NSLocalizedString(@"Checking for updates…", nil),
                  .hasProgress = true,
                  .buttons = {{NSLocalizedString(@"Cancel", nil), @selector(dismiss:)}}}];
  _isBusy = YES;
}

- (void)showInstalling {
  if (_isBusy) {
    [self showWindow:nil];
  } else {
    [self showResult:NSLocalizedString(@"An update is being installed.", nil) text:nil];
  }
}

- (void)showUpdate:(const platform::AppcastItem&)item choose:(UpdaterInterface::Choose)choose {
  NSString* format = NSLocalizedString(@"Version %@ is available. You have version %@.", nil);
  [self showPage:{.message = [NSString stringWithFormat:format, VersionOf(item), [NSApplication ts_shortVersionString]],
                  .text = ReleaseNotesOf(item),
                  .buttons = {{NSLocalizedString(@"Install", nil), @selector(install:)},
                              {NSLocalizedString(@"Later", nil), @selector(dismiss:)},
                              {NSLocalizedString(@"Skip This Version", nil), @selector(skip:)}}}];
  _choose = std::move(choose);
}

- (void)showReceived:(std::uint64_t)received of:(std::optional<std::uint64_t>)total {
  if (!total || *total == 0) return;
  [_progress stopAnimation:nil];
  [_progress setIndeterminate:NO];
  [_progress setDoubleValue:100.0 * static_cast<double>(received) / static_cast<double>(*total)];
}

- (void)showResult:(NSString*)message text:(NSString*)text {
  [self showPage:{.message = message, .text = text, .buttons = {{NSLocalizedString(@"OK", nil), @selector(dismiss:)}}}];
}

// The first button is the default one; a third stands apart on the left.
- (void)showPage:(const Page&)page {
  _choose = nullptr;
  _isBusy = NO;
  [_progress stopAnimation:nil];
  _progress = nullptr;
  const auto content = Adopt([[NSView alloc] initWithFrame:[[[self window] contentView] frame]]);
  TsRows rows(content);
  rows.FromTop().Fill(NewMessage(page.message));
  TsRow buttons = rows.FromBottom();
  for (std::size_t i = 0; i < page.buttons.size(); ++i) {
    const auto button = TsNewButton(page.buttons[i].title, self, page.buttons[i].action, i == 0 ? @"\r" : @"");
    i < 2 ? buttons.AddRight(button) : buttons.AddLeft(button);
  }
  if (page.hasProgress) {
    _progress = Adopt([[NSProgressIndicator alloc] initWithFrame:NSZeroRect]);
    [_progress setIndeterminate:YES];
    [_progress startAnimation:nil];
    rows.FromTop(kProgressHeight).Fill(_progress);
  }
  if (page.text != nil) rows.Rest().Fill(NewText(page.text));
  [self replaceContentWith:content];
  [self showWindow:nil];
}

// The old content may hold the button whose action this is.
- (void)replaceContentWith:(NSView*)content {
  static_cast<void>(Retain([[self window] contentView]).Autoreleased());
  [[self window] makeFirstResponder:nil];
  [[self window] setContentView:content];
  [[self window] recalculateKeyViewLoop];
}

// ---- Actions

- (void)install:(id)sender {
  const auto choose = std::exchange(_choose, nullptr);
  if (!choose) return;
  [self showPage:{.message = NSLocalizedString(@"Installing the update…", nil),
                  .hasProgress = true,
                  .buttons = {{NSLocalizedString(@"Cancel", nil), @selector(dismiss:)}}}];
  _isBusy = YES;
  choose(UpdaterInterface::Choice::Install);
}

- (void)skip:(id)sender {
  if (const auto choose = std::exchange(_choose, nullptr)) choose(UpdaterInterface::Choice::Skip);
  [[self window] close];
}

- (void)dismiss:(id)sender {
  [[self window] close];
}

- (void)windowWillClose:(NSNotification*)notification {
  [_progress stopAnimation:nil];
  if (const auto choose = std::exchange(_choose, nullptr)) choose(UpdaterInterface::Choice::Later);
  if (std::exchange(_isBusy, NO)) platform::Updater::Shared().Cancel();
}

@end
