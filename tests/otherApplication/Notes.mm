// Another application, which knows nothing of the module: a note (-Text "…"), all of it selected, and a Services menu.

#import <AppKit/AppKit.h>

@interface Notes : NSObject
@end

@implementation Notes

- (void)applicationWillFinishLaunching:(NSNotification*)notification {
  NSMenu* main = [[[NSMenu alloc] initWithTitle:@"Notes"] autorelease];
  NSMenu* services = [[[NSMenu alloc] initWithTitle:@"Services"] autorelease];
  [main setSubmenu:services forItem:[main addItemWithTitle:@"Services" action:nullptr keyEquivalent:@""]];
  [NSApp setMainMenu:main];
  [NSApp setServicesMenu:services];
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  NSRect frame = NSMakeRect(100, 100, 400, 300);
  NSWindow* window = [[NSWindow alloc] initWithContentRect:frame
                                                 styleMask:NSTitledWindowMask
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  [window setTitle:@"Notes"];
  frame.origin = NSZeroPoint;
  NSTextView* text = [[[NSTextView alloc] initWithFrame:frame] autorelease];
  [text setString:[[NSUserDefaults standardUserDefaults] stringForKey:@"Text"]];
  [window setContentView:text];
  [window setMenu:[NSApp mainMenu]];
  [window makeKeyAndOrderFront:nil];
  [window makeFirstResponder:text];
  [text selectAll:nil];
  [NSApp activateIgnoringOtherApps:YES];
}

@end

int main() {
  @autoreleasepool {
    [[NSUserDefaults standardUserDefaults] registerDefaults:@{@"NSMenuInterfaceStyle" : @"NSWindows95InterfaceStyle"}];
    [NSApplication sharedApplication];
    [NSApp setDelegate:static_cast<id>([[Notes alloc] init])];
    [NSApp run];
  }
}
