#import "Support/TsSupportWindow.h"

#include <algorithm>
#include <string>
#include <vector>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#include "Platform/FilePanel.h"
#include "Utilities/TsJSON.h"

namespace platform = tessaro::platform;

namespace {

NSString* const kMessageNotification = @"TsSupportAndFeedbackMessageNotification";

constexpr NSSize kWindowSize = {540, 500};
constexpr CGFloat kMargin = 14;
constexpr CGFloat kGap = 8;
constexpr CGFloat kRowHeight = 24;
constexpr CGFloat kLabelWidth = 90;
constexpr CGFloat kLeastButtonWidth = 70;
constexpr CGFloat kAttachmentsHeight = 84;

NSString* OrEmpty(NSString* text) { return text != nil ? text : @""; }

bool IsBlank(NSString* text) {
  NSCharacterSet* blanks = [NSCharacterSet whitespaceAndNewlineCharacterSet];
  return [[text stringByTrimmingCharactersInSet:blanks] length] == 0;
}

// Rows are taken from above, and from below, until what is left goes to the message.
struct Room {
  NSView* content;
  CGFloat top;
  CGFloat bottom;

  explicit Room(NSView* view) : content(view), top([view bounds].size.height - kMargin), bottom(kMargin) {}

  NSRect FromTop(CGFloat height) {
    top -= height + kGap;
    return NSMakeRect(kMargin, top + kGap, [content bounds].size.width - 2 * kMargin, height);
  }
  NSRect FromBottom(CGFloat height) {
    bottom += height + kGap;
    return NSMakeRect(kMargin, bottom - height - kGap, [content bounds].size.width - 2 * kMargin, height);
  }
  void Add(NSView* view, NSUInteger mask) const {
    [view setAutoresizingMask:mask];
    [content addSubview:view];
  }
};

// Takes the label's part away from the row.
void AddLabel(const Room& room, NSString* text, NSRect& row, NSUInteger mask) {
  NSRect frame;
  NSDivideRect(row, &frame, &row, kLabelWidth, NSMinXEdge);
  frame = NSMakeRect(frame.origin.x, NSMaxY(frame) - kRowHeight, frame.size.width, kRowHeight - 4);
  const auto label = Adopt([[NSTextField alloc] initWithFrame:frame]);
  [label setStringValue:text];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  room.Add(label, mask);
}

NSTextField* AddField(Room& room, NSString* label) {
  NSRect row = room.FromTop(kRowHeight);
  AddLabel(room, label, row, NSViewMinYMargin | NSViewMaxXMargin);
  auto field = Adopt([[NSTextField alloc] initWithFrame:row]);
  room.Add(field, NSViewMinYMargin | NSViewWidthSizable);
  return field.Autoreleased();
}

NSScrollView* AddScrollView(const Room& room, NSView* document, NSRect frame, NSUInteger mask) {
  auto scrollView = Adopt([[NSScrollView alloc] initWithFrame:frame]);
  [scrollView setHasVerticalScroller:YES];
  [scrollView setBorderType:NSBezelBorder];
  [scrollView setDocumentView:document];
  room.Add(scrollView, mask);
  return scrollView.Autoreleased();
}

// At one end of the row, which is that much shorter then.
NSButton* AddButton(const Room& room, NSString* title, id target, SEL action, NSRect& row, NSRectEdge edge) {
  auto button = Adopt([[NSButton alloc] initWithFrame:NSZeroRect]);
  [button setTitle:title];
  [button setBezelStyle:NSRoundedBezelStyle];
  [button setTarget:target];
  [button setAction:action];
  [button sizeToFit];
  NSRect frame;
  NSDivideRect(row, &frame, &row, std::max([button frame].size.width, kLeastButtonWidth), edge);
  [button setFrame:frame];
  NSRect gap;
  NSDivideRect(row, &gap, &row, kGap, edge);
  room.Add(button, NSViewMaxYMargin | (edge == NSMinXEdge ? NSViewMaxXMargin : NSViewMinXMargin));
  return button.Autoreleased();
}

// A file that can be attached.
bool IsFile(NSString* path) {
  BOOL isFolder = NO;
  return [path isKindOfClass:[NSString class]] &&
         [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder] && !isFolder;
}

}  // namespace

@implementation TsSupportWindow

+ (instancetype)sharedInstance {
  static TsSupportWindow* const instance = [[self alloc] init];
  return instance;
}

- (instancetype)init {
  const NSUInteger style =
      NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask | NSMiniaturizableWindowMask;
  const auto window =
      Adopt([[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, kWindowSize.width, kWindowSize.height)
                                        styleMask:style
                                          backing:NSBackingStoreBuffered
                                            defer:YES]);
  self = [super initWithWindow:window];
  if (!self) return nil;
  _attachments = Adopt([[NSMutableArray alloc] init]);
  [window setReleasedWhenClosed:NO];
  [window setTitle:NSLocalizedString(@"Support and Feedback", nil)];
  [window setMinSize:[window frame].size];
  [self addViewsTo:[window contentView]];
  for (NSString* change in @[ NSTextDidChangeNotification, NSWindowWillCloseNotification ]) {
    const bool isText = change == NSTextDidChangeNotification;
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:isText ? @selector(textDidChange:) : @selector(windowWillClose:)
                                                 name:change
                                               object:isText ? static_cast<id>(_message) : window.get()];
  }
  return self;
}

- (void)addViewsTo:(NSView*)content {
  Room room(content);
  _name = AddField(room, NSLocalizedString(@"Name:", nil));
  _email = AddField(room, NSLocalizedString(@"E-mail:", nil));
  _subject = AddField(room, NSLocalizedString(@"Subject:", nil));

  NSRect buttons = room.FromBottom(kRowHeight);
  _send = AddButton(room, NSLocalizedString(@"Send", nil), self, @selector(send:), buttons, NSMaxXEdge);
  AddButton(room, NSLocalizedString(@"Cancel", nil), self, @selector(cancel:), buttons, NSMaxXEdge);
  _attachLog = AddButton(room, NSLocalizedString(@"Attach the log file", nil), nil, nullptr, buttons, NSMinXEdge);
  [_attachLog setButtonType:NSSwitchButton];

  NSRect attachmentButtons = room.FromBottom(kRowHeight);
  NSRect none;
  NSDivideRect(attachmentButtons, &none, &attachmentButtons, kLabelWidth, NSMinXEdge);
  AddButton(room, NSLocalizedString(@"Attach Files...", nil), self, @selector(chooseAttachments:), attachmentButtons,
            NSMinXEdge);
  _remove = AddButton(room, NSLocalizedString(@"Remove", nil), self, @selector(removeAttachments:), attachmentButtons,
                      NSMinXEdge);
  [self addAttachmentListTo:room];
  [self addMessageTo:room];

  [_name setNextKeyView:_email];
  [_email setNextKeyView:_subject];
  [_subject setNextKeyView:_message];
}

- (void)addAttachmentListTo:(Room&)room {
  NSRect row = room.FromBottom(kAttachmentsHeight);
  AddLabel(room, NSLocalizedString(@"Attachments:", nil), row, NSViewMaxYMargin | NSViewMaxXMargin);
  const auto list = Adopt([[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, row.size.width - 24, row.size.height)]);
  const auto column = Adopt([[NSTableColumn alloc] initWithIdentifier:@"path"]);
  [column setEditable:NO];
  [column setWidth:row.size.width - 24];
  [list addTableColumn:column];
  [list setHeaderView:nil];
  [list setCornerView:nil];
  [list setAllowsMultipleSelection:YES];
  [list setDataSource:static_cast<id>(self)];
  [list setDelegate:static_cast<id>(self)];
  _attachmentList = list;
  AddScrollView(room, list, row, NSViewMaxYMargin | NSViewWidthSizable);
}

- (void)addMessageTo:(Room&)room {
  NSRect row = room.FromTop(room.top - room.bottom);
  AddLabel(room, NSLocalizedString(@"Message:", nil), row, NSViewMinYMargin | NSViewMaxXMargin);
  const auto text = Adopt([[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, row.size.width - 24, row.size.height)]);
  _message = text;
  [text setRichText:NO];
  [text setAllowsUndo:YES];
  [text setVerticallyResizable:YES];
  [text setAutoresizingMask:NSViewWidthSizable];
  [text setMaxSize:NSMakeSize(1e7, 1e7)];
  [[text textContainer] setWidthTracksTextView:YES];
  NSScrollView* scrollView = AddScrollView(room, text, row, NSViewWidthSizable | NSViewHeightSizable);
  [text setFrameSize:[scrollView contentSize]];
}

// ---- Contents

- (void)openWith:(const TsSupportMessage&)contents {
  if (![[self window] isVisible]) {
    [_name setStringValue:OrEmpty(contents.name)];
    [_email setStringValue:OrEmpty(contents.email)];
    [_subject setStringValue:OrEmpty(contents.subject)];
    [_message setString:OrEmpty(contents.message)];
    [_attachments removeAllObjects];
    [_attachLog setState:NSOnState];
    [[self window] center];
    [[self window] makeFirstResponder:IsBlank([_subject stringValue]) ? static_cast<NSView*>(_subject) : _message];
  }
  [self attachFiles:contents.attachments];
}

- (void)attachFiles:(NSArray*)paths {
  for (id path in paths) {
    if (!IsFile(path))
      TsLogWarning(@"There is no file %@ to attach", path);
    else if (![_attachments containsObject:path])
      [_attachments addObject:path];
  }
  [_attachmentList reloadData];
  [self reconsider];
  [[self window] makeKeyAndOrderFront:nil];
}

- (void)reconsider {
  [_send setEnabled:!IsBlank([_message string])];
  [_remove setEnabled:[_attachmentList numberOfSelectedRows] > 0];
}

- (void)textDidChange:(NSNotification*)notification {
  [self reconsider];
}

- (IBAction)chooseAttachments:(id)sender {
  platform::FileRequest request;
  request.title = TsStdString(NSLocalizedString(@"Attach Files", nil));
  request.button = TsStdString(NSLocalizedString(@"Attach", nil));
  request.allowsSeveral = true;
  platform::AskForFiles([self window], std::move(request), [self](const std::vector<std::string>& paths) {
    // The window may have been closed, which closed the panel.
    if (paths.empty()) return;
    NSMutableArray* chosen = [NSMutableArray array];
    for (const std::string& path : paths) [chosen addObject:TsNSString(path)];
    [self attachFiles:chosen];
  });
}

- (IBAction)removeAttachments:(id)sender {
  [_attachments removeObjectsAtIndexes:[_attachmentList selectedRowIndexes]];
  [_attachmentList deselectAll:sender];
  [_attachmentList reloadData];
  [self reconsider];
}

// ---- The list

- (NSInteger)numberOfRowsInTableView:(NSTableView*)table {
  return static_cast<NSInteger>([_attachments count]);
}

- (id)tableView:(NSTableView*)table objectValueForTableColumn:(NSTableColumn*)column row:(NSInteger)row {
  return [[_attachments objectAtIndex:static_cast<NSUInteger>(row)] lastPathComponent];
}

- (void)tableViewSelectionDidChange:(NSNotification*)notification {
  [self reconsider];
}

// ---- The end

- (NSDictionary*)written {
  NSMutableDictionary* written = [NSMutableDictionary dictionaryWithDictionary:@{
    @"name" : [_name stringValue],
    @"email" : [_email stringValue],
    @"subject" : [_subject stringValue],
    @"message" : [NSString stringWithString:[_message string]],
    @"attachments" : TsConvertToJSONString(_attachments),
  }];
  const std::string log = [_attachLog state] == NSOnState ? TsLogFacility::Shared().File() : "";
  if (!log.empty()) [written setObject:TsNSString(log) forKey:@"log"];
  return written;
}

- (IBAction)send:(id)sender {
  // What is still being edited counts too.
  [[self window] makeFirstResponder:nil];
  if (IsBlank([_message string])) return;
  NSDictionary* written = [self written];
  [[self window] close];
  [[NSNotificationCenter defaultCenter] postNotificationName:kMessageNotification object:self userInfo:written];
}

- (IBAction)cancel:(id)sender {
  [[self window] close];
}

- (void)windowWillClose:(NSNotification*)notification {
  [_message setString:@""];
  [_attachments removeAllObjects];
}

@end
