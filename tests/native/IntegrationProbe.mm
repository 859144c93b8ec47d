#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/HTMLText.h"
#include "Platform/ZipArchive.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"

// Another application that can be scripted: it writes down every message it gets. One object stands for the application
// and for everything in it.
@interface TsStandIn : NSObject {
  Ref<NSString> _record;
  Ref<NSMutableArray> _messages;
}
@end

@implementation TsStandIn

- (instancetype)initWithRecord:(NSString*)record {
  self = [super init];
  if (self) {
    _record = Retain(record);
    _messages = Adopt([[NSMutableArray alloc] init]);
  }
  return self;
}

- (id)note:(NSString*)message with:(NSArray*)values {
  [_messages addObject:@[ message, values ]];
  [TsConvertToJSONString(_messages) writeToFile:_record atomically:YES encoding:NSUTF8StringEncoding error:nullptr];
  return self;
}

static id Plain(id value) { return value == nil ? [NSNull null] : [NSString stringWithFormat:@"%@", value]; }

- (id)createNoteFromFile:(id)file
                 fromUrl:(NSString*)url
                withText:(NSString*)text
                withHtml:(NSString*)html
                withEnml:(NSString*)enml
                   title:(NSString*)title
                notebook:(id)notebook
                    tags:(id)tags
             attachments:(id)attachments
                 created:(NSDate*)created {
  return [self note:@"create" with:@[ Plain(html), Plain(title), Plain(url) ]];
}

- (void)setSourceURL:(NSString*)url {
  [self note:@"sourceURL" with:@[ Plain(url) ]];
}

- (void)appendText:(NSString*)text html:(NSString*)html attachment:(id)attachment {
  [self note:@"append" with:@[ Plain(html), attachment == nil ? [NSNull null] : Plain([attachment path]) ]];
}

- (void)openNoteWindowWith:(id)note {
  [self note:@"open" with:@[]];
}

- (id)import:(NSString*)path
            from:(NSString*)from
            name:(NSString*)name
    placeholders:(id)placeholders
              to:(id)group
            type:(unsigned int)type {
  return [self note:@"import" with:@[ Plain(path), Plain(name), [NSNumber numberWithUnsignedInt:type] ]];
}

- (id)createThumbnailFor:(id)record {
  return [self note:@"thumbnail" with:@[]];
}

- (id)openWindowForRecord:(id)record {
  return [self note:@"open" with:@[]];
}

- (void)setURL:(NSString*)url {
  [self note:@"URL" with:@[ Plain(url) ]];
}

- (void)setAliases:(NSString*)aliases {
  [self note:@"aliases" with:@[ Plain(aliases) ]];
}

@end

namespace {

void serve(NSString* name, NSString* record) {
  NSConnection* connection = [NSConnection defaultConnection];
  [connection setRootObject:Adopt([[TsStandIn alloc] initWithRecord:record])];
  [connection registerName:name];
  [[NSRunLoop currentRunLoop] run];
}

std::string textFromHTML(std::string html) { return tessaro::platform::TextFromHTML(html); }

bool unpackZip(std::string archive, std::string folder) {
  return tessaro::platform::UnpackZip(archive, folder, {}).has_value();
}

PROBES("integrations", serve, textFromHTML, unpackZip);

}  // namespace
