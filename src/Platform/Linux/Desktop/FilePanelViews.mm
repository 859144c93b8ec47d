#include "Platform/Linux/Desktop/FilePanelViews.h"

#include <algorithm>

#include "Platform/Linux/Base/Text.h"
#import "Platform/Linux/Desktop/TsFilePanel.h"

namespace tessaro::platform {

NSString* const kIconColumn = @"icon";
NSString* const kNameColumn = @"name";
NSString* const kSizeColumn = @"size";
NSString* const kTimeColumn = @"time";

namespace {

constexpr CGFloat kMargin = 12;
constexpr CGFloat kGap = 8;
constexpr CGFloat kRowHeight = 24;
constexpr CGFloat kTextHeight = 18;
constexpr CGFloat kLabelWidth = 60;
constexpr CGFloat kLeastButtonWidth = 60;
constexpr CGFloat kFilterWidth = 200;
constexpr CGFloat kIconWidth = 20;
constexpr NSUInteger kAtBottom = NSViewMaxYMargin;
constexpr NSUInteger kAtTop = NSViewMinYMargin;

Ref<NSTextField> NewLabel(NSString* text, NSRect frame) {
  auto label = Adopt([[NSTextField alloc] initWithFrame:frame]);
  [label setStringValue:text];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  return label;
}

// Rows are taken away from below and from above, until the table gets the rest.
class Layout {
 public:
  Layout(NSView* content, id target)
      : content_(content),
        target_(target),
        width_([content bounds].size.width),
        bottom_(kMargin),
        top_([content bounds].size.height - kMargin) {}

  [[nodiscard]] NSRect RowAtBottom(CGFloat height) {
    const NSRect row = NSMakeRect(kMargin, bottom_, width_ - 2 * kMargin, height);
    bottom_ += height + kGap;
    return row;
  }

  [[nodiscard]] NSRect RowAtTop(CGFloat height) {
    top_ -= height;
    const NSRect row = NSMakeRect(kMargin, top_, width_ - 2 * kMargin, height);
    top_ -= kGap;
    return row;
  }

  [[nodiscard]] NSRect Rest() const { return NSMakeRect(kMargin, bottom_, width_ - 2 * kMargin, top_ - bottom_); }

  void Add(NSView* view, NSUInteger mask) const {
    [view setAutoresizingMask:mask];
    [content_ addSubview:view];
  }

  // As wide as its title, at the left of `row`, or at the right of it; the row is that much shorter then.
  Ref<NSButton> AddButton(NSString* title, SEL action, NSRect& row, NSRectEdge edge, NSUInteger mask,
                          NSString* key = @"") const {
    auto button = Adopt([[NSButton alloc] initWithFrame:NSZeroRect]);
    [button setTitle:title];
    [button setBezelStyle:NSRoundedBezelStyle];
    [button setTarget:target_];
    [button setAction:action];
    // It may add to the button's size.
    [button setKeyEquivalent:key];
    [button sizeToFit];
    const CGFloat width = std::max([button frame].size.width, kLeastButtonWidth);
    NSRect frame;
    NSDivideRect(row, &frame, &row, width + kGap, edge);
    if (edge == NSMaxXEdge) frame.origin.x += kGap;
    frame.size.width -= kGap;
    [button setFrame:frame];
    Add(button, mask);
    return button;
  }

  Ref<NSPopUpButton> AddPopUp(SEL action, NSRect frame, NSUInteger mask) const {
    auto popUp = Adopt([[NSPopUpButton alloc] initWithFrame:frame pullsDown:NO]);
    [popUp setTarget:target_];
    [popUp setAction:action];
    Add(popUp, mask);
    return popUp;
  }

 private:
  NSView* content_;
  id target_;
  CGFloat width_;
  CGFloat bottom_;
  CGFloat top_;
};

void AddColumn(NSTableView* table, NSString* identifier, NSString* title, CGFloat width) {
  auto column = Adopt([[NSTableColumn alloc] initWithIdentifier:identifier]);
  [[column headerCell] setStringValue:title];
  [column setEditable:identifier == kNameColumn];
  [column setWidth:width];
  if (identifier == kIconColumn) [column setDataCell:Adopt([[NSImageCell alloc] init])];
  if (identifier == kSizeColumn) [[column dataCell] setAlignment:NSRightTextAlignment];
  [table addTableColumn:column];
}

Ref<NSTableView> AddTable(const Layout& layout, bool allowsSeveral, id target) {
  const NSRect frame = layout.Rest();
  auto table = Adopt([[NSTableView alloc] initWithFrame:NSZeroRect]);
  const CGFloat width = frame.size.width - kIconWidth - 40;
  AddColumn(table, kIconColumn, @"", kIconWidth);
  AddColumn(table, kNameColumn, NSLocalizedString(@"Name", nil), width * 0.6);
  AddColumn(table, kSizeColumn, NSLocalizedString(@"Size", nil), width * 0.15);
  AddColumn(table, kTimeColumn, NSLocalizedString(@"Changed", nil), width * 0.25);
  [table setAllowsMultipleSelection:allowsSeveral];
  [table setAllowsEmptySelection:YES];
  [table setDataSource:target];
  [table setDelegate:target];
  [table setTarget:target];
  [table setDoubleAction:@selector(rowDoubleClicked:)];
  auto scrollView = Adopt([[NSScrollView alloc] initWithFrame:frame]);
  [scrollView setHasVerticalScroller:YES];
  [scrollView setBorderType:NSBezelBorder];
  [scrollView setDocumentView:table];
  layout.Add(scrollView, NSViewWidthSizable | NSViewHeightSizable);
  return table;
}

void FillFilters(NSPopUpButton* popUp, const std::vector<FileFilter>& filters) {
  for (const FileFilter& filter : filters) {
    // Not by the button itself, which has no two items of one title.
    [[popUp menu] addItemWithTitle:Text(filter.name) action:nullptr keyEquivalent:@""];
  }
  [popUp selectItemAtIndex:0];
}

}  // namespace

FilePanelViews AddFilePanelViews(NSView* content, const FileRequest& request, id target) {
  FilePanelViews views;
  Layout layout(content, target);
  const bool isSaving = request.kind == FileRequest::Kind::Save;

  NSRect buttons = layout.RowAtBottom(kRowHeight);
  NSString* title = isSaving ? NSLocalizedString(@"Save", nil) : NSLocalizedString(@"Open", nil);
  if (!request.button.empty()) title = Text(request.button);
  views.accept = layout.AddButton(title, @selector(accept:), buttons, NSMaxXEdge, NSViewMinXMargin | kAtBottom, @"\r");
  layout.AddButton(NSLocalizedString(@"Cancel", nil), @selector(cancel:), buttons, NSMaxXEdge,
                   NSViewMinXMargin | kAtBottom, @"\e");
  if (isSaving || request.choosesFolders) {
    layout.AddButton(NSLocalizedString(@"New Folder", nil), @selector(newFolder:), buttons, NSMinXEdge,
                     NSViewMaxXMargin | kAtBottom);
  }
  views.hidden = layout.AddButton(NSLocalizedString(@"Show Hidden", nil), @selector(hiddenSwitched:), buttons,
                                  NSMinXEdge, NSViewMaxXMargin | kAtBottom);
  [views.hidden setButtonType:NSSwitchButton];
  [views.hidden setState:request.showsHidden ? NSOnState : NSOffState];

  views.notice = NewLabel(@"", layout.RowAtBottom(kTextHeight));
  layout.Add(views.notice, NSViewWidthSizable | kAtBottom);

  if (request.filters.size() > 1) {
    NSRect row = layout.RowAtBottom(kRowHeight);
    row.size.width = kFilterWidth;
    views.filter = layout.AddPopUp(@selector(filterChosen:), row, NSViewMaxXMargin | kAtBottom);
    FillFilters(views.filter, request.filters);
  }
  if (isSaving) {
    NSRect row = layout.RowAtBottom(kRowHeight);
    NSRect label;
    NSDivideRect(row, &label, &row, kLabelWidth, NSMinXEdge);
    layout.Add(NewLabel(NSLocalizedString(@"Name:", nil), label), NSViewMaxXMargin | kAtBottom);
    views.name = Adopt([[NSTextField alloc] initWithFrame:row]);
    [views.name setDelegate:target];
    layout.Add(views.name, NSViewWidthSizable | kAtBottom);
  }
  if (!request.message.empty()) {
    layout.Add(NewLabel(Text(request.message), layout.RowAtTop(kTextHeight)), NSViewWidthSizable | kAtTop);
  }
  NSRect places = layout.RowAtTop(kRowHeight);
  layout.AddButton(NSLocalizedString(@"Home", nil), @selector(goHome:), places, NSMaxXEdge, NSViewMinXMargin | kAtTop);
  layout.AddButton(NSLocalizedString(@"Up", nil), @selector(goUp:), places, NSMaxXEdge, NSViewMinXMargin | kAtTop);
  views.places = layout.AddPopUp(@selector(placeChosen:), places, NSViewWidthSizable | kAtTop);
  views.table = AddTable(layout, request.allowsSeveral, target);
  return views;
}

}  // namespace tessaro::platform
