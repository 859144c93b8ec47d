#import "native/WebContentsViewCocoa.h"

#import <AppKit/AppKit.h>

#import "native/HostApplicationDelegate.h"

static const CGFloat kMargin = 24;
static const CGFloat kLineHeight = 26;

static const NSUInteger kModifiers = NSCommandKeyMask | NSAlternateKeyMask | NSControlKeyMask;

// Shortcuts that the page consumes: moving the insertion point, its preferences, input methods, bookmarks.
static BOOL PageUses(NSEvent* event) {
  NSString* characters = [event charactersIgnoringModifiers];
  return ([event modifierFlags] & NSFunctionKeyMask) || [@[ @",", @" ", @"D" ] containsObject:characters];
}

@implementation WebContentsViewCocoa

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  _typedText = Adopt([[NSMutableString alloc] init]);
  _droppedFiles = Adopt([[NSMutableArray alloc] init]);
  [self registerForDraggedTypes:@[ NSFilenamesPboardType, NSStringPboardType ]];
  return self;
}

- (NSString*)typedText {
  return [NSString stringWithString:_typedText];
}

- (NSArray*)droppedFiles {
  return [NSArray arrayWithArray:_droppedFiles];
}

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (BOOL)isFlipped {
  return YES;
}

- (BOOL)isOpaque {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  // Some X keys produce no characters at all.
  if ([event characters] != nil) [_typedText appendString:[event characters]];
  [self setNeedsDisplay:YES];
}

// A web page gets every shortcut before the menu does. Unused ones come back a little later, from another process, as
// synthetic events without location and key code.
- (BOOL)performKeyEquivalent:(NSEvent*)event {
  const BOOL isShortcut = ([event modifierFlags] & kModifiers) != 0;
  if (!isShortcut || [[self window] firstResponder] != self) return NO;
  const BOOL isUsed = PageUses(event);
  [static_cast<HostApplicationDelegate*>([NSApp delegate]) webContentsReceivedKeyEquivalent:event use:isUsed];
  if (!isUsed) [self performSelector:@selector(sendBack:) withObject:event afterDelay:0];
  return YES;
}

- (void)sendBack:(NSEvent*)event {
  NSEvent* returned = [NSEvent keyEventWithType:[event type]
                                       location:NSZeroPoint
                                  modifierFlags:[event modifierFlags]
                                      timestamp:[event timestamp]
                                   windowNumber:[event windowNumber]
                                        context:nil
                                     characters:[event characters]
                    charactersIgnoringModifiers:[event charactersIgnoringModifiers]
                                      isARepeat:[event isARepeat]
                                        keyCode:0];
  if (![[NSApp mainMenu] performKeyEquivalent:returned]) [self keyDown:event];
}

- (void)mouseDown:(NSEvent*)event {
  [[self window] makeFirstResponder:self];
}

- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)info {
  return NSDragOperationCopy;
}

- (NSDragOperation)draggingUpdated:(id<NSDraggingInfo>)info {
  return NSDragOperationCopy;
}

- (void)draggingExited:(id<NSDraggingInfo>)info {
}

- (BOOL)prepareForDragOperation:(id<NSDraggingInfo>)info {
  return YES;
}

- (BOOL)performDragOperation:(id<NSDraggingInfo>)info {
  NSArray* paths = [[info draggingPasteboard] propertyListForType:NSFilenamesPboardType];
  if ([paths count] == 0) return NO;
  [_droppedFiles addObjectsFromArray:paths];
  [self setNeedsDisplay:YES];
  return YES;
}

- (void)drawRect:(NSRect)dirty {
  [[NSColor whiteColor] set];
  NSRectFill([self bounds]);

  NSColor* quiet = [NSColor colorWithCalibratedWhite:0.45 alpha:1];
  NSPoint position = NSMakePoint(kMargin, kMargin);
  [self drawLine:[[self window] title] at:&position font:[NSFont boldSystemFontOfSize:18] color:[NSColor blackColor]];
  [self drawTitle:NSLocalizedString(@"Keys received", @"") lines:@[ _typedText.get() ] at:&position color:quiet];
  [self drawTitle:NSLocalizedString(@"Files dropped", @"") lines:_droppedFiles at:&position color:quiet];
}

- (void)drawTitle:(NSString*)title lines:(NSArray*)lines at:(NSPoint*)position color:(NSColor*)color {
  position->y += kLineHeight / 2;
  [self drawLine:title at:position font:[NSFont systemFontOfSize:12] color:color];
  for (NSString* line in lines) {
    [self drawLine:line at:position font:[NSFont systemFontOfSize:15] color:[NSColor blackColor]];
  }
}

- (void)drawLine:(NSString*)line at:(NSPoint*)position font:(NSFont*)font color:(NSColor*)color {
  [line drawAtPoint:*position withAttributes:@{NSFontAttributeName : font, NSForegroundColorAttributeName : color}];
  position->y += kLineHeight;
}

@end
