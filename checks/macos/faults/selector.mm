// undeclared selector: aplicationDockMenu:
#import <AppKit/AppKit.h>

SEL Misspelt() { return @selector(aplicationDockMenu:); }
