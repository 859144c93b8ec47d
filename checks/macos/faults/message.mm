// '-setTitel:' not found
#import <AppKit/AppKit.h>

void Misspelt(NSWindow* window) { [window setTitel:@""]; }
