#import "Notifications/TsSound.h"

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/SoundPlayer.h"
#include "Platform/StandardDirectories.h"

namespace platform = tessaro::platform;

namespace {

NSArray* SoundFolders() {
  NSMutableArray* folders =
      [NSMutableArray arrayWithObjects:@"/System/Library/Sounds", @"/Network/Library/Sounds", @"/Library/Sounds",
                                       [TsNSString(platform::HomeDirectory().native())
                                           stringByAppendingPathComponent:@"Library/Sounds"],
                                       nil];
  for (const std::string& folder : platform::SystemSoundFolders()) [folders addObject:TsNSString(folder)];
  return folders;
}

Ref<TsSound> NewSound(Class type, NSString* name) { return Adopt<TsSound>([[type alloc] initWithName:name]); }

void AddIfPlayable(NSMutableSet* sounds, TsSound* sound) {
  if ([sound isPlayable]) [sounds addObject:sound];
}

Ref<NSArray> FindSounds() {
  NSMutableSet* sounds = [NSMutableSet set];
  AddIfPlayable(sounds, [TsSound soundNewMail]);
  for (NSString* folder in SoundFolders()) {
    for (NSString* entry in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:nullptr]) {
      AddIfPlayable(sounds, [TsSound soundWithPath:entry]);
    }
  }
  NSSortDescriptor* byName = [NSSortDescriptor sortDescriptorWithKey:@"name"
                                                           ascending:YES
                                                            selector:@selector(compare:)];
  return Retain([[sounds allObjects] sortedArrayUsingDescriptors:@[ byName ]]);
}

}  // namespace

@implementation TsSound

+ (NSArray*)sounds {
  static Forever<Ref<NSArray>> sounds(FindSounds());
  return [NSArray arrayWithArray:*sounds];
}

+ (TsSound*)soundNamed:(NSString*)name {
  TsSound* sound = NewSound(self, name).Autoreleased();
  return [sound isPlayable] ? sound : nil;
}

+ (TsSound*)soundNewMail {
  return NewSound(self, @"New Mail").Autoreleased();
}

+ (TsSound*)soundWithPath:(NSString*)path {
  if (path == nil) return nil;
  return NewSound(self, [[path lastPathComponent] stringByDeletingPathExtension]).Autoreleased();
}

- (instancetype)initWithName:(NSString*)name {
  self = [super init];
  if (self != nil) _name = Copy([name lastPathComponent]);
  return self;
}

- (NSString*)name {
  return _name;
}

- (BOOL)isEqual:(id)other {
  return [other isMemberOfClass:[self class]] && [self isEqualToSound:other];
}

- (BOOL)isEqualToSound:(TsSound*)sound {
  if (sound == nil) return NO;
  return sound == self || [sound name] == _name || [[sound name] isEqualToString:_name];
}

- (NSUInteger)hash {
  return [_name hash];
}

- (NSString*)description {
  return _name;
}

- (BOOL)isPlayable {
  return !platform::SoundFileNamed(TsStdString(_name)).empty();
}

- (void)play {
  @synchronized([TsSound class]) {
    platform::PlaySound(platform::SoundFileNamed(TsStdString(_name)),
                        [](const std::string& reason) { TsLogTextWarning("Couldn't play a sound: " + reason); });
  }
}

@end
