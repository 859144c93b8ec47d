#include "Images/TsImageFiles.h"

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"

NSImage* TsImageOfFile(const std::string& path) {
  NSBitmapImageRep* pixels = [NSBitmapImageRep imageRepWithData:[NSData dataWithContentsOfFile:TsNSString(path)]];
  if (pixels == nil) return nil;
  auto image = Adopt([[NSImage alloc]
      initWithSize:NSMakeSize(static_cast<CGFloat>([pixels pixelsWide]), static_cast<CGFloat>([pixels pixelsHigh]))]);
  [pixels setSize:[image size]];
  [image addRepresentation:pixels];
  return image.Autoreleased();
}

bool TsMakeFolder(NSString* folder) {
  NSError* error = nil;
  NSFileManager* files = [NSFileManager defaultManager];
  BOOL isFolder = NO;
  if ([files fileExistsAtPath:folder isDirectory:&isFolder]) {
    if (!isFolder) TsLogWarning(@"%@ is not a folder", folder);
    return isFolder;
  }
  if ([files createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:&error]) return true;
  TsLogWarning(@"Couldn't create directory at path %@ because of %@", folder, error);
  return false;
}
