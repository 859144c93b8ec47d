#import "Support/TsSupportWindow.h"

#include <algorithm>
#include <string>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#include "Platform/FilePanel.h"
#include "Utilities/Controls.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

namespace {

NSString* const kMessageNotification = @"TsSupportAndFeedbackMessageNotification";

constexpr NSSize kWindowSize = {540, 500};
constexpr CGFloat kAttachmentsHeight = 84;
constexpr CGFloat kListRowHeight = 22;
constexpr CGFloat kScrollerWidth = 24;
constexpr CGFloat kNoLimit = 1e7;

bool IsBlank(NSString* text) {
  NSCharacterSet* blanks = [NSCharacterSet whitespaceAndNewlineCharacterSet];
  return [[text stringByTrimmingCharactersInSet:blanks] length] == 0;
}

// As wide as the widest of them.
CGFloat LabelWidth() {
  CGFloat width = 0;
  for (NSString* text in @[ @"Name:", @"E-mail:", @"Subject:", @"Message:", @"Attachments:" ]) {
    width = std::max(width, NSWidth([TsNewLabel(NSLocalizedString(text, nil)) frame]));
  }
  return width;
}

void AddLabel(TsRow& row, NSString* text) {
  const auto label = TsNewLabel(text, LabelWidth());
  row.AddLeft(label);
}

NSTextField* AddField(TsRows& rows, NSString* label) {
  TsRow row = rows.FromTop();
  AddLabel(row, label);
  auto field = Adopt([[NSTextField alloc] initWithFrame:NSZeroRect]);
  row.Fill(field);
  return field.Autoreleased();
}

Ref<NSTableView> NewAttachmentList(id source, NSSize size) {
  auto list = Adopt([[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)]);
  const auto column = Adopt([[NSTableColumn alloc] initWithIdentifier:@"path"]);
  [column setEditable:NO];
  [column setWidth:size.width];
  [list addTableColumn:column];
  [list setHeaderView:nil];
  [list setCornerView:nil];
  [list setAllowsMultipleSelection:YES];
  [list setRowHeight:kListRowHeight];
  [list setDataSource:source];
  [list setDelegate:source];
  return list;
}

Ref<NSTextView> NewMessageView(NSSize size) {
  auto text = Adopt([[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)]);
  [text setRichText:NO];
  [text setAllowsUndo:YES];
  [text setVerticallyResizable:YES];
  [text setAutoresizingMask:NSViewWidthSizable];
  [text setMaxSize:NSMakeSize(kNoLimit, kNoLimit)];
  [[text textContainer] setWidthTracksTextView:YES];
  return text;
}

bool IsAttachable(NSString* path) {
  BOOL isFolder = NO;
  return [path isKindOfClass:[NSString class]] &&
         [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder] && !isFolder;
}

}  // namespace

@implementation TsSupportWindow

+ (instancetype)sharedInstance {
  static Forever<Ref<TsSupportWindow>> instance(Adopt([[self alloc] init]));
  return *instance;
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
  [window setFrameAutosaveName:@"TsSupportWindow"];
  [window setDelegate:static_cast<id>(self)];
  [_message setDelegate:static_cast<id>(self)];
  return self;
}

- (void)addViewsTo:(NSView*)content {
  TsRows rows(content);
  _name = AddField(rows, NSLocalizedString(@"Name:", nil));
  _email = AddField(rows, NSLocalizedString(@"E-mail:", nil));
  _subject = AddField(rows, NSLocalizedString(@"Subject:", nil));
  [self addButtonsTo:rows.FromBottom()];
  [self addAttachmentButtonsTo:rows.FromBottom()];
  [self addAttachmentListTo:rows.FromBottom(kAttachmentsHeight)];
  [self addMessageTo:rows.Rest()];
  [self connectKeyViews:@[
    _name, _email, _subject, _message, _attachmentList, _attach, _remove, _attachLog, _cancel, _send
  ]];
}

- (void)connectKeyViews:(NSArray*)views {
  for (NSUInteger i = 0; i < [views count]; ++i) {
    [[views objectAtIndex:i] setNextKeyView:[views objectAtIndex:(i + 1) % [views count]]];
  }
  [[self window] setInitialFirstResponder:_subject];
}

- (void)addButtonsTo:(TsRow)row {
  const auto send = TsNewButton(NSLocalizedString(@"Send", nil), self, @selector(send:), @"\r");
  const auto cancel = TsNewButton(NSLocalizedString(@"Cancel", nil), self, @selector(cancel:), @"\e");
  const auto attachLog = TsNewCheckbox(NSLocalizedString(@"Attach the log file", nil));
  row.AddRight(send);
  row.AddRight(cancel);
  row.AddLeft(attachLog);
  _send = send;
  _cancel = cancel;
  _attachLog = attachLog;
}

- (void)addAttachmentButtonsTo:(TsRow)row {
  const auto attach = TsNewButton(NSLocalizedString(@"Attach Files...", nil), self, @selector(chooseAttachments:));
  const auto remove = TsNewButton(NSLocalizedString(@"Remove", nil), self, @selector(removeAttachments:));
  row.Indent(LabelWidth());
  row.AddLeft(attach);
  row.AddLeft(remove);
  _attach = attach;
  _remove = remove;
}

- (void)addAttachmentListTo:(TsRow)row {
  AddLabel(row, NSLocalizedString(@"Attachments:", nil));
  const auto list = NewAttachmentList(self, NSMakeSize(row.Size().width - kScrollerWidth, row.Size().height));
  const auto scrollView = TsNewScrollView(list);
  row.Fill(scrollView);
  _attachmentList = list;
}

- (void)addMessageTo:(TsRow)row {
  AddLabel(row, NSLocalizedString(@"Message:", nil));
  const auto text = NewMessageView(NSMakeSize(row.Size().width - kScrollerWidth, row.Size().height));
  const auto scrollView = TsNewScrollView(text);
  row.Fill(scrollView);
  [text setFrameSize:[scrollView contentSize]];
  _message = text;
}

// ---- Contents

- (void)openWith:(const TsSupportMessage&)contents {
  if (![[self window] isVisible]) {
    [_name setStringValue:TsOrEmpty(contents.name)];
    [_email setStringValue:TsOrEmpty(contents.email)];
    [_subject setStringValue:TsOrEmpty(contents.subject)];
    [_message setString:TsOrEmpty(contents.message)];
    [_attachments removeAllObjects];
    [_attachLog setState:NSOnState];
    [[self window] center];
    [[self window] makeFirstResponder:IsBlank([_subject stringValue]) ? static_cast<NSView*>(_subject) : _message];
  }
  [self attachFiles:contents.attachments];
}

- (void)attachFiles:(NSArray*)paths {
  for (id path in paths) {
    if (!IsAttachable(path))
      TsLogWarning(@"There is no file %@ to attach", path);
    else if (![_attachments containsObject:path])
      [_attachments addObject:path];
  }
  [_attachmentList reloadData];
  [self updateButtons];
  [[self window] makeKeyAndOrderFront:nil];
}

- (void)updateButtons {
  [_send setEnabled:!IsBlank([_message string])];
  [_remove setEnabled:[_attachmentList numberOfSelectedRows] > 0];
}

- (void)textDidChange:(NSNotification*)notification {
  [self updateButtons];
}

// Tab would be a character of the text otherwise, and the keyboard could not leave it.
- (BOOL)textView:(NSTextView*)view doCommandBySelector:(SEL)command {
  const bool isBackwards = sel_isEqual(command, @selector(insertBacktab:));
  if (!isBackwards && !sel_isEqual(command, @selector(insertTab:))) return NO;
  isBackwards ? [[self window] selectKeyViewPrecedingView:view] : [[self window] selectKeyViewFollowingView:view];
  return YES;
}

- (IBAction)chooseAttachments:(id)sender {
  platform::FileRequest request;
  request.title = TsStdString(NSLocalizedString(@"Attach Files", nil));
  request.button = TsStdString(NSLocalizedString(@"Attach", nil));
  request.allowsSeveral = true;
  platform::AskForFiles([self window], std::move(request), [self](const std::vector<std::string>& paths) {
    if (!paths.empty()) [self attachFiles:TsNSArray(paths)];
  });
}

- (IBAction)removeAttachments:(id)sender {
  [_attachments removeObjectsAtIndexes:[_attachmentList selectedRowIndexes]];
  [_attachmentList deselectAll:sender];
  [_attachmentList reloadData];
  [self updateButtons];
}

// ---- The list

- (NSInteger)numberOfRowsInTableView:(NSTableView*)table {
  return static_cast<NSInteger>([_attachments count]);
}

- (id)tableView:(NSTableView*)table objectValueForTableColumn:(NSTableColumn*)column row:(NSInteger)row {
  return [[_attachments objectAtIndex:static_cast<NSUInteger>(row)] lastPathComponent];
}

- (void)tableViewSelectionDidChange:(NSNotification*)notification {
  [self updateButtons];
}

// ---- Sending

- (NSDictionary*)message {
  NSMutableDictionary* message = [NSMutableDictionary dictionaryWithDictionary:@{
    @"name" : [_name stringValue],
    @"email" : [_email stringValue],
    @"subject" : [_subject stringValue],
    @"message" : [NSString stringWithString:[_message string]],
    @"attachments" : TsConvertToJSONString(_attachments),
  }];
  const std::string log = [_attachLog state] == NSOnState ? TsLogFacility::Shared().File() : "";
  if (!log.empty()) [message setObject:TsNSString(log) forKey:@"log"];
  return message;
}

- (IBAction)send:(id)sender {
  // Ends editing, so that the fields have their final texts.
  [[self window] makeFirstResponder:nil];
  if (IsBlank([_message string])) return;
  NSDictionary* message = [self message];
  [[self window] close];
  TsPost(kMessageNotification, self, message);
}

- (IBAction)cancel:(id)sender {
  [[self window] close];
}

- (void)windowWillClose:(NSNotification*)notification {
  [_message setString:@""];
  [_attachments removeAllObjects];
}

@end
