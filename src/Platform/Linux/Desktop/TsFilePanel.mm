#import "Platform/Linux/Desktop/TsFilePanel.h"

#include <unistd.h>

#include <utility>

#include "Platform/Applications.h"
#include "Platform/BackgroundQueue.h"
#include "Platform/Linux/Base/Text.h"
#include "Platform/MainQueue.h"

namespace platform = tessaro::platform;
namespace fs = std::filesystem;
using platform::Text;
using platform::Utf8;

namespace {

// Where GNUstep's own panels keep it too.
NSString* const kLastFolder = @"NSDefaultOpenDirectory";
constexpr int kIconSize = 16;
constexpr int kMostNewFolders = 1000;

bool IsFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

bool IsThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

fs::path Home() { return Utf8(NSHomeDirectory()); }

// Where to begin: at `wish`, else where something was chosen last, else at home.
fs::path FirstFolder(const fs::path& wish) {
  const fs::path last = Utf8([[NSUserDefaults standardUserDefaults] stringForKey:kLastFolder]);
  for (const fs::path& folder : {wish, last}) {
    if (folder.is_absolute() && IsFolder(folder)) return folder.lexically_normal();
  }
  return Home();
}

// The folder and those it is in, itself first.
std::vector<fs::path> PlacesOf(fs::path folder) {
  std::vector<fs::path> places = {folder};
  for (; folder.has_relative_path(); folder = folder.parent_path()) places.push_back(folder.parent_path());
  return places;
}

NSString* NameOf(const fs::path& path) { return Text((path.has_filename() ? path.filename() : path).native()); }

NSString* Sentence(NSString* format, const fs::path& path) { return [NSString stringWithFormat:format, NameOf(path)]; }

}  // namespace

@implementation TsFilePanel

+ (TsFilePanel*)panelOfWindow:(NSWindow*)window {
  for (NSWindow* each in [NSApp windows]) {
    if (![each isKindOfClass:self]) continue;
    auto* panel = static_cast<TsFilePanel*>(each);
    if (panel->_owner == window && panel->_answer) return panel;
  }
  return nil;
}

- (instancetype)initWithRequest:(platform::FileRequest)request answer:(platform::FileAnswer)answer {
  const NSUInteger style = NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask;
  self = [super initWithContentRect:NSMakeRect(0, 0, platform::kFilePanelSize.width, platform::kFilePanelSize.height)
                          styleMask:style
                            backing:NSBackingStoreBuffered
                              defer:YES];
  if (!self) return nil;
  _request = std::move(request);
  _answer = std::move(answer);
  _folder = FirstFolder(_request.folder);
  [self setReleasedWhenClosed:NO];
  [self setHidesOnDeactivate:NO];
  [self setMinSize:[self frame].size];
  _views = platform::AddFilePanelViews([self contentView], _request, self);
  [self setTitle:_request.title.empty() ? [_views.accept title] : Text(_request.title)];
  [_views.name setStringValue:Text(platform::HarmlessName(_request.name))];
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(controlTextDidChange:)
                                               name:NSControlTextDidChangeNotification
                                             object:_views.name];
  return self;
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  for (id view : {static_cast<id>(_views.table.get()), static_cast<id>(_views.name.get())}) [view setDelegate:nil];
  [_views.table setDataSource:nil];
  [super dealloc];
}

- (void)showOver:(NSWindow*)window {
  _living = Retain(self);
  _owner = window;
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(ownerWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:window];
  const NSRect over = [window frame];
  const NSSize size = [self frame].size;
  [self setFrameOrigin:NSMakePoint(NSMidX(over) - size.width / 2, NSMidY(over) - size.height / 2)];
  [self setParentWindow:window];
  [self showFolder:_folder];
  [self makeKeyAndOrderFront:nil];
  if (_views.name) [self makeFirstResponder:_views.name];
}

// ---- The end

- (void)answer:(std::vector<std::string>)paths {
  if (!_answer) return;
  platform::MainQueue::Shared().Post([answer = std::exchange(_answer, nullptr), paths = std::move(paths),
                                      panel = std::exchange(_living, nullptr)] { answer(paths); });
  if (_reader) *_reader = nil;
  _owner = nil;
  [self setParentWindow:nil];
}

- (void)choose:(std::vector<std::string>)paths {
  [[NSUserDefaults standardUserDefaults] setObject:Text(fs::path(paths.front()).parent_path().native())
                                            forKey:kLastFolder];
  [self answer:std::move(paths)];
  [self close];
}

- (void)close {
  [self answer:{}];
  [super close];
}

- (void)ownerWillClose:(NSNotification*)notification {
  [self close];
}

- (IBAction)cancel:(id)sender {
  [self close];
}

// ---- Folders

- (platform::FolderView)folderView {
  platform::FolderView view;
  view.showsFiles = _request.kind == platform::FileRequest::Kind::Save || _request.choosesFiles;
  view.showsHidden = [_views.hidden state] == NSOnState;
  view.extensions = [self extensions];
  return view;
}

// Those of the filter that counts.
- (std::vector<std::string>)extensions {
  if (_request.filters.empty()) return {};
  const NSInteger chosen = [_views.filter indexOfSelectedItem];
  return _request.filters[chosen > 0 ? static_cast<std::size_t>(chosen) : 0].extensions;
}

- (void)showFolder:(const fs::path&)folder {
  _folder = folder;
  _newFolder.clear();
  [_views.places removeAllItems];
  for (const fs::path& place : PlacesOf(_folder)) {
    [[_views.places menu] addItemWithTitle:NameOf(place) action:nullptr keyEquivalent:@""];
  }
  [_views.places selectItemAtIndex:0];
  [self reload:@""];
}

// Reads the folder again, and selects what is named so.
- (void)reload:(NSString*)name {
  [self tell:@""];
  if (_reader) *_reader = nil;
  _reader = std::make_shared<TsFilePanel*>(self);
  platform::BackgroundQueue::Shared().Post(
      [reader = _reader, folder = _folder, view = [self folderView], name = Utf8(name)] {
        auto listing = std::make_shared<platform::FolderListing>(platform::ListFolder(folder, view));
        platform::MainQueue::Shared().Post([=] { [*reader show:std::move(*listing) selecting:name]; });
      });
}

- (void)show:(platform::FolderListing)listing selecting:(const std::string&)name {
  _entries = std::move(listing.entries);
  [_views.table deselectAll:nil];
  [_views.table reloadData];
  [_views.table scrollRowToVisible:0];
  if (listing.error) [self tell:Text(listing.error.message())];
  for (std::size_t row = 0; !name.empty() && row < _entries.size(); ++row) {
    if (_entries[row].name == name) [self selectRow:static_cast<NSInteger>(row)];
  }
  [self reconsider];
  if (name.empty() || name != _newFolder || [_views.table selectedRow] < 0) return;
  const NSInteger column = [_views.table columnWithIdentifier:platform::kNameColumn];
  [_views.table editColumn:column row:[_views.table selectedRow] withEvent:nil select:YES];
}

- (void)selectRow:(NSInteger)row {
  [_views.table selectRowIndexes:[NSIndexSet indexSetWithIndex:static_cast<NSUInteger>(row)] byExtendingSelection:NO];
  [_views.table scrollRowToVisible:row];
}

- (IBAction)placeChosen:(id)sender {
  const auto chosen = static_cast<std::size_t>([_views.places indexOfSelectedItem]);
  const auto places = PlacesOf(_folder);
  if (chosen > 0 && chosen < places.size()) [self showFolder:places[chosen]];
}

- (IBAction)goUp:(id)sender {
  if (_folder.has_relative_path()) [self showFolder:_folder.parent_path()];
}

- (IBAction)goHome:(id)sender {
  [self showFolder:Home()];
}

- (IBAction)filterChosen:(id)sender {
  [self reload:@""];
}

- (IBAction)hiddenSwitched:(id)sender {
  [self reload:@""];
}

- (IBAction)newFolder:(id)sender {
  const std::string name = Utf8(NSLocalizedString(@"New Folder", nil));
  std::error_code error;
  for (int number = 1; number <= kMostNewFolders; ++number) {
    const std::string numbered = number == 1 ? name : name + ' ' + std::to_string(number);
    if (fs::create_directory(_folder / numbered, error)) {
      _newFolder = numbered;
      return [self reload:Text(numbered)];
    }
    if (error) return [self tell:Text(error.message())];
  }
}

// ---- The table

- (NSInteger)numberOfRowsInTableView:(NSTableView*)table {
  return static_cast<NSInteger>(_entries.size());
}

- (id)tableView:(NSTableView*)table objectValueForTableColumn:(NSTableColumn*)column row:(NSInteger)row {
  if (row < 0 || static_cast<std::size_t>(row) >= _entries.size()) return nil;
  const platform::FolderEntry& entry = _entries[static_cast<std::size_t>(row)];
  NSString* identifier = [column identifier];
  if ([identifier isEqual:platform::kIconColumn]) return [self iconOf:entry];
  if ([identifier isEqual:platform::kNameColumn]) return Text(entry.name);
  if ([identifier isEqual:platform::kTimeColumn]) return Text(platform::TimeText(entry.changed));
  return entry.isFolder ? @"" : Text(platform::SizeText(entry.size));
}

// A new folder gets its name where it stands, and nothing else does.
- (BOOL)tableView:(NSTableView*)table shouldEditTableColumn:(NSTableColumn*)column row:(NSInteger)row {
  return static_cast<std::size_t>(row) < _entries.size() && _entries[static_cast<std::size_t>(row)].name == _newFolder;
}

- (void)tableView:(NSTableView*)table
    setObjectValue:(id)value
    forTableColumn:(NSTableColumn*)column
               row:(NSInteger)row {
  const std::string folder = std::exchange(_newFolder, {});
  const std::string name = platform::HarmlessName(Utf8(value));
  if (folder.empty() || name.empty() || name == folder) return;
  // Of two folders with one name the system would make one.
  if (IsThere(_folder / name)) return [self tell:Sentence(NSLocalizedString(@"\"%@\" is there already.", nil), name)];
  std::error_code error;
  fs::rename(_folder / folder, _folder / name, error);
  if (error) return [self tell:Text(error.message())];
  [self reload:Text(name)];
}

- (NSImage*)iconOf:(const platform::FolderEntry&)entry {
  std::string extension = fs::path(entry.name).extension();
  if (!extension.empty()) extension.erase(0, 1);
  const std::string type = entry.isFolder ? "inode/directory" : platform::ContentTypeOfExtension(extension);
  auto [known, isNew] = _icons.try_emplace(type);
  if (isNew) {
    const std::vector<std::uint8_t> png = platform::IconOfContentType(type, kIconSize);
    NSData* data = [NSData dataWithBytes:png.data() length:png.size()];
    if (!png.empty()) known->second = Adopt([[NSImage alloc] initWithData:data]);
  }
  return known->second;
}

- (std::vector<platform::FolderEntry>)selectedEntries {
  std::vector<platform::FolderEntry> entries;
  NSIndexSet* selected = [_views.table selectedRowIndexes];
  for (NSUInteger row = [selected firstIndex]; row < _entries.size(); row = [selected indexGreaterThanIndex:row]) {
    entries.push_back(_entries[row]);
  }
  return entries;
}

- (void)tableViewSelectionDidChange:(NSNotification*)notification {
  const auto selected = [self selectedEntries];
  if (_views.name && selected.size() == 1 && !selected.front().isFolder) {
    [_views.name setStringValue:Text(selected.front().name)];
  }
  [self reconsider];
}

- (IBAction)rowDoubleClicked:(id)sender {
  const NSInteger row = [_views.table clickedRow];
  if (row < 0 || static_cast<std::size_t>(row) >= _entries.size()) return;
  const platform::FolderEntry& entry = _entries[static_cast<std::size_t>(row)];
  if (entry.isFolder) return [self showFolder:_folder / entry.name];
  [self accept:sender];
}

- (void)controlTextDidChange:(NSNotification*)notification {
  [self reconsider];
}

// ---- What is chosen

- (BOOL)canAccept {
  if (_views.name) return [[_views.name stringValue] length] > 0 || [_views.table selectedRow] >= 0;
  return _request.choosesFolders || [_views.table selectedRow] >= 0;
}

- (void)reconsider {
  [self tell:@""];
  [_views.accept setEnabled:[self canAccept]];
}

// An empty text takes back what was told, and asked.
- (void)tell:(NSString*)text {
  _doubtful.clear();
  [_views.notice setStringValue:text];
}

- (IBAction)accept:(id)sender {
  // Return ends the naming of a folder, and comes here first.
  if ([_views.table editedRow] >= 0) return static_cast<void>([self makeFirstResponder:_views.table]);
  if (![self canAccept]) return;
  const auto selected = [self selectedEntries];
  const bool isFolder = selected.size() == 1 && selected.front().isFolder;
  if (isFolder && (_views.name || !_request.choosesFolders)) return [self showFolder:_folder / selected.front().name];
  if (_views.name) return [self acceptName:Utf8([_views.name stringValue])];
  [self acceptEntries:selected];
}

- (void)acceptEntries:(const std::vector<platform::FolderEntry>&)entries {
  if (entries.empty()) return [self choose:{_folder.native()}];
  std::vector<std::string> paths;
  for (const platform::FolderEntry& entry : entries) {
    const fs::path path = _folder / entry.name;
    if (!IsThere(path)) return [self tell:Sentence(NSLocalizedString(@"\"%@\" is no longer there.", nil), path)];
    if (entry.isFolder ? _request.choosesFolders : _request.choosesFiles) paths.push_back(path.native());
  }
  if (!paths.empty()) [self choose:std::move(paths)];
}

// What the person types may lead elsewhere.
- (void)acceptName:(const std::string&)name {
  fs::path path = (_folder / name).lexically_normal();
  if (IsFolder(path)) {
    [_views.name setStringValue:@""];
    return [self showFolder:path];
  }
  const auto extensions = [self extensions];
  if (!platform::HasExtension(path.filename(), extensions)) path += '.' + extensions.front();
  const fs::path folder = path.parent_path();
  if (!IsFolder(folder)) return [self tell:Sentence(NSLocalizedString(@"There is no folder \"%@\".", nil), folder)];
  if (access(folder.c_str(), W_OK) != 0) {
    return [self tell:Sentence(NSLocalizedString(@"You can't save in \"%@\".", nil), folder)];
  }
  if (IsThere(path) && path != _doubtful) {
    [self tell:Sentence(NSLocalizedString(@"\"%@\" is there already. Save again to replace it.", nil), path)];
    _doubtful = path;
    return;
  }
  [self choose:{path.native()}];
}

@end
