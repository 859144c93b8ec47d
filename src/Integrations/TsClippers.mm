#include "Integrations/TsClippers.h"

#include <array>
#include <map>
#include <string>
#include <string_view>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Integrations/TsClipTargets.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/HTMLText.h"
#include "Platform/MainQueue.h"
#include "Platform/TaskQueues.h"
#include "Platform/WindowServer.h"
#include "Platform/ZipArchive.h"

namespace platform = tessaro::platform;

namespace {

platform::SerialQueue& QueueOf(NSString* application) {
  static Forever<std::map<std::string, platform::SerialQueue>> queues;
  return (*queues)[TsStdString(application)];
}

NSString* TsTextFromHTML(NSString* html) { return TsNSString(platform::TextFromHTML(TsStdString(html))); }

void ClipToEvernote(const TsClippedPage& page) {
  NSString* title = page.title ? page.title.get() : @"Tessaro";
  TsEvernoteNote* note = [TsEvernoteNote noteWithTitle:title sourceURL:page.url];
  if (note == nil) {
    TsLogWarning(@"Couldn't create Evernote note because of missing AppleScript support");
    return platform::MainQueue::Shared().Post(showEvernoteError);
  }
  [note appendHtml:page.html];
  for (NSString* path in page.attachments.get()) [note appendAttachment:path];
  [note openNoteWindow];
}

void ClipToDEVONthink(const TsClippedPage& page) {
  NSString* path = page.emlPath ? page.emlPath : page.htmlPath;
  TsDEVONthinkRecord* record = [TsDEVONthinkRecord recordWithTitle:page.title sourceURL:page.url path:path];
  [record setWebURL:page.webURL];
  [record openRecordWindow];
}

void ClipToReceipts(const TsClippedPage& page) { [TsReceiptsApp importEMLWithPath:page.emlPath]; }

void ClipToOmnifocus(const TsClippedPage& page) {
  NSString* comment = [NSString
      stringWithFormat:@"%@\n%@\n\n%@", TsOrEmpty(page.url), TsOrEmpty(page.webURL), TsTextFromHTML(page.html)];
  [TsOmnifocus addActionWithContent:page.title comment:comment];
}

// Pasteboards are for the main thread.
void ClipToClipboard(const TsClippedPage& page) {
  NSString* text =
      [TsTextFromHTML(page.html) stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
  NSString* body =
      [NSString stringWithFormat:@"%@\n\n- <%@>\n- <%@>", text, TsOrEmpty(page.url), TsOrEmpty(page.webURL)];
  auto result =
      Retain([NSString stringWithFormat:@"# %@ [%@]\n\n%@", TsOrEmpty(page.title), TsOrEmpty(page.account), body]);
  platform::MainQueue::Shared().Post([result] { [TsClipboard copy:result]; });
}

NSString* TextWithLinks(const TsClippedPage& page) {
  return [NSString
      stringWithFormat:@"%@\n\n%@\n%@", TsTextFromHTML(page.html), TsOrEmpty(page.url), TsOrEmpty(page.webURL)];
}

void ClipToTodoist(const TsClippedPage& page) {
  NSString* content = [NSString stringWithFormat:@"%@ [Web](%@) | [Tessaro](%@)", TsOrEmpty(page.title),
                                                 TsOrEmpty(page.webURL), TsOrEmpty(page.url)];
  [TsTodoist addActionWithContent:content comment:TextWithLinks(page)];
}

void ClipToThings(const TsClippedPage& page) { [TsThings addActionWithContent:page.title comment:TextWithLinks(page)]; }

struct Clipper {
  NSString* name;
  bool (*isInstalled)();
  void (*clip)(const TsClippedPage& page);
};

// In the order in which script gets the names.
const std::array<Clipper, 7>& Clippers() {
  static const std::array<Clipper, 7> clippers = {{
      {@"evernote", [] { return bool([TsEvernoteNote isInstalled]); }, ClipToEvernote},
      {@"devonthink", [] { return [TsDEVONthinkRecord installedBundleId] != nil; }, ClipToDEVONthink},
      {@"omnifocus", [] { return [TsOmnifocus installedBundleId] != nil; }, ClipToOmnifocus},
      {@"receipts", [] { return [TsReceiptsApp installedBundleId] != nil; }, ClipToReceipts},
      {@"todoist", [] { return bool([TsTodoist isInstalled]); }, ClipToTodoist},
      {@"things", [] { return [TsThings installedBundleId] != nil; }, ClipToThings},
      {@"clipboard", [] { return true; }, ClipToClipboard},
  }};
  return clippers;
}

// ---- Importing

void ImportIntoEvernote(NSString* path, NSString*) {
  TsEvernoteNote* note = [TsEvernoteNote noteWithTitle:@"Tessaro" sourceURL:nil];
  if (note == nil) return platform::MainQueue::Shared().Post(showEvernoteError);
  [note appendAttachment:path];
  [note openNoteWindow];
}

void ImportIntoDEVONthink(NSString* path, NSString*) { [[TsDEVONthinkRecord importFiles:@[ path ]] openRecordWindow]; }

void ImportIntoPhotos(NSString* path, NSString* application) {
  static constexpr std::array<std::string_view, 5> kPhotos = {"*.jpg", "*.jpeg", "*.gif", "*.tif", "*.tiff"};
  if ([path ts_isWebImagePath]) return TsOpenWith(path, application);
  if (![path ts_isZipPath]) return;
  NSString* folder = [path stringByDeletingPathExtension];
  if (const auto unpacked = platform::UnpackZip(TsStdString(path), TsStdString(folder), kPhotos); !unpacked) {
    TsLogWarning(@"Couldn't unzip all of %@: %s", path, unpacked.error().message.c_str());
  }
  TsOpenWith(folder, application);
}

struct Importer {
  NSString* identifier;
  void (*import)(NSString* path, NSString* application);
};

const std::array<Importer, 4>& Importers() {
  static const std::array<Importer, 4> importers = {{
      {@"com.evernote.Evernote", ImportIntoEvernote},
      {@"com.devon-technologies.thinkpro2", ImportIntoDEVONthink},
      {@"com.apple.Photos", ImportIntoPhotos},
      {@"com.apperdeck.mac.Receipts", TsOpenWith},
  }};
  return importers;
}

}  // namespace

NSArray* TsInstalledClippers() {
  NSMutableArray* names = [NSMutableArray array];
  for (const Clipper& clipper : Clippers()) {
    if (clipper.isInstalled()) [names addObject:clipper.name];
  }
  return names;
}

void TsClipPage(NSString* name, const TsClippedPage& page) {
  for (const Clipper& clipper : Clippers()) {
    if (![clipper.name isEqualToString:name]) continue;
    return QueueOf(name).Post([clip = clipper.clip, page] { clip(page); });
  }
  TsLogWarning(@"Unknown application %@", name);
}

void TsImportIntoApplication(NSString* identifier, NSString* path) {
  const auto application = platform::FindApplication(TsStdString(identifier));
  for (const Importer& importer : Importers()) {
    if (![importer.identifier isEqualToString:identifier]) continue;
    const auto bundle = application ? Retain(TsNSString(application->path)) : Ref<NSString>();
    return QueueOf(identifier).Post([import = importer.import, file = Retain(path), bundle] { import(file, bundle); });
  }
  TsLogWarning(@"Don't know how to handle bundleId %@ for %@", identifier, path);
}

void showEvernoteError() {
  NSString* message = NSLocalizedString(@"This version of Evernote doesn't support AppleScript", @"");
  NSString* information = NSLocalizedString(@"Please use Evernote 7.x or contact Evernote for more information.", @"");
  if (!platform::IsWindowServerAvailable()) return TsLogWarning(@"%@. %@", message, information);
  auto alert = Adopt([[NSAlert alloc] init]);
  [alert setAlertStyle:NSInformationalAlertStyle];
  [alert setMessageText:message];
  [alert setInformativeText:information];
  [alert runModal];
}
