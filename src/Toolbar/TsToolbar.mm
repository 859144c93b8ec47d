#import "Toolbar/TsToolbar.h"

#import "Toolbar/TsToolbarController.h"

// Single precision, as in earlier versions.
static const NSTimeInterval kPaletteCheckInterval = 0.1F;

@implementation TsToolbarItem

@synthesize controller = _controller;

- (void)validate {
  [super validate];
  if (_controller == nil) return;
  const BOOL isEnabled = [_controller realValidateToolbarItem:self];
  [As<NSControl>([self view]) setEnabled:isEnabled];
  [self setEnabled:isEnabled];
}

@end

@implementation TsToolbar

@synthesize needToShowAddTabButton = _needToShowAddTabButton;
@synthesize toolbarController = _toolbarController;

- (void)runCustomizationPalette:(id)sender {
  if ([_toolbarController isAddTabViewShowing]) {
    [_toolbarController hideAddTabButton];
    _needToShowAddTabButton = YES;
  }
  [NSTimer scheduledTimerWithTimeInterval:kPaletteCheckInterval
                                   target:self
                                 selector:@selector(timerFired:)
                                 userInfo:nil
                                  repeats:YES];
  [super runCustomizationPalette:sender];
}

// There is no notification when the palette closes.
- (void)timerFired:(NSTimer*)timer {
  if ([self customizationPaletteIsRunning]) return;
  [timer invalidate];
  if (_needToShowAddTabButton) [_toolbarController showAddTabButton];
}

@end
