#include "Files/TsFileDialog.h"

#import <Foundation/Foundation.h>

#include <utility>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/FilePanel.h"
#include "Platform/MainQueue.h"
#include "Utilities/TsJSON.h"

namespace platform = tessaro::platform;

namespace {

std::string Text(NSDictionary* options, NSString* key) { return TsStdString(As<NSString>([options objectForKey:key])); }

bool Flag(NSDictionary* options, NSString* key, bool otherwise) {
  NSNumber* flag = As<NSNumber>([options objectForKey:key]);
  return flag != nil ? [flag boolValue] : otherwise;
}

// Empty, for every file, when one of them is "*".
std::vector<std::string> Extensions(NSArray* texts) {
  std::vector<std::string> extensions;
  for (id each in texts) {
    std::string extension = TsStdString(As<NSString>(each));
    if (extension.starts_with('.')) extension.erase(0, 1);
    if (extension == "*") return {};
    if (!extension.empty()) extensions.push_back(std::move(extension));
  }
  return extensions;
}

std::vector<platform::FileFilter> Filters(NSArray* descriptions) {
  std::vector<platform::FileFilter> filters;
  for (id each in descriptions) {
    NSDictionary* description = As<NSDictionary>(each);
    if (description == nil) continue;
    NSArray* extensions = As<NSArray>([description objectForKey:@"extensions"]);
    filters.push_back({Text(description, @"name"), Extensions(extensions)});
  }
  return filters;
}

platform::FileRequest RequestOf(NSDictionary* options) {
  using Kind = platform::FileRequest::Kind;
  return {
      .kind = Text(options, @"type") == "save" ? Kind::Save : Kind::Open,
      .title = Text(options, @"title"),
      .message = Text(options, @"message"),
      .button = Text(options, @"button-label"),
      .folder = Text(options, @"folder"),
      .name = Text(options, @"name"),
      .filters = Filters(As<NSArray>([options objectForKey:@"filters"])),
      .choosesFiles = Flag(options, @"choose-files?", true),
      .choosesFolders = Flag(options, @"choose-folders?", false),
      .allowsSeveral = Flag(options, @"allow-multiple?", false),
      .showsHidden = Flag(options, @"show-hidden?", false),
  };
}

}  // namespace

void TsShowFileDialog(NSWindow* window, NSString* options, std::function<void(NSArray* paths)> answer) {
  NSError* error = nil;
  auto* dictionary = As<NSDictionary>(TsConvertFromJSONString(options, &error));
  if (window == nil || dictionary == nil) {
    if (window == nil) TsLogError(@"Need a window to choose files for");
    if (dictionary == nil) TsLogError(@"Couldn't parse file dialog options %@ because of %@", options, error);
    platform::MainQueue::Shared().Post([answer = std::move(answer)] { answer(nil); });
    return;
  }
  platform::AskForFiles(window, RequestOf(dictionary), [answer = std::move(answer)](const auto& paths) {
    answer(paths.empty() ? nil : TsNSArray(paths));
  });
}
