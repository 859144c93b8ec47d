#include "Base/Ref.h"
#include "Platform/Cocoa.h"
#include "Probe.h"
#import "Shortcuts/MASShortcut.h"
#import "Shortcuts/TsShortcutValidator.h"

namespace {

// Described as [key code, modifier flags].
MASShortcut* ShortcutOf(NSArray* description) {
  return [MASShortcut shortcutWithKeyCode:[[description objectAtIndex:0] unsignedShortValue]
                            modifierFlags:[[description objectAtIndex:1] unsignedIntegerValue]];
}

NSData* Archive(id object, NSPropertyListFormat format) {
  NSMutableData* data = [NSMutableData data];
  const auto archiver = Adopt([[NSKeyedArchiver alloc] initForWritingWithMutableData:data]);
  [archiver setOutputFormat:format];
  [archiver encodeObject:object forKey:@"root"];
  [archiver finishEncoding];
  return data;
}

NSString* Base64(NSData* data) { return [data base64EncodedStringWithOptions:0]; }

NSData* FromBase64(NSString* text) {
  return Adopt([[NSData alloc] initWithBase64EncodedString:text options:0]).Autoreleased();
}

id Unarchived(NSData* data) {
  return [NSKeyedUnarchiver unarchivedObjectOfClass:[MASShortcut class] fromData:data error:nullptr];
}

// ---- Probes

id whyTaken(id description) {
  NSString* explanation = nil;
  const BOOL isTaken = [[TsShortcutValidator sharedValidator] isShortcutAlreadyTakenBySystem:ShortcutOf(description)
                                                                                 explanation:&explanation];
  return isTaken ? explanation : nil;
}

// As it is stored, as a binary property list, and as one in XML.
id archives(id description) {
  MASShortcut* shortcut = ShortcutOf(description);
  return @[
    Base64([NSKeyedArchiver archivedDataWithRootObject:shortcut]),
    Base64(Archive(shortcut, NSPropertyListBinaryFormat_v1_0)), Base64(Archive(shortcut, NSPropertyListXMLFormat_v1_0))
  ];
}

id unarchive(NSString* text) { return [Unarchived(FromBase64(text)) description]; }

// How many of the archives with one byte wrong, or cut short, still give a shortcut.
int unarchiveDamaged(NSString* text) {
  NSData* sound = FromBase64(text);
  int shortcuts = 0;
  for (NSUInteger i = 0; i < [sound length]; ++i) {
    @autoreleasepool {
      if (Unarchived([sound subdataWithRange:NSMakeRange(0, i)]) != nil) ++shortcuts;
      for (const unsigned change : {0x01u, 0x20u, 0x80u, 0xffu}) {
        NSMutableData* damaged = [NSMutableData dataWithData:sound];
        static_cast<unsigned char*>([damaged mutableBytes])[i] ^= change;
        if (Unarchived(damaged) != nil) ++shortcuts;
      }
    }
  }
  return shortcuts;
}

PROBES("shortcuts", whyTaken, archives, unarchive, unarchiveDamaged);

}  // namespace
