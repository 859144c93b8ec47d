#pragma once

#import "Platform/Cocoa.h"

#include <memory>

#include "Base/Ref.h"
#include "Platform/ScreenRecording.h"
#include "Utilities/TsCallbackSlot.h"

@class TsAreaSelection;

// Lets the user record the screen, or an area of it, as a film in `folder`, which is made when it is missing: a panel
// asks which, and then stops the recording. One film is made at a time.
//
// At the end the notification "TsScreenRecorded" is posted, whose user information has the film's path under "path" if
// there is one, and `completion` is called once, with that path or with nil.
void TsTakeScreenRecording(NSString* folder, const TsCompletion& completion);

// The panel and the recording that it controls.
@interface TsScreenRecorder : NSObject {
  Ref<NSPanel> _panel;
  NSTextField* _label;
  NSButton* _stopButton;
  Ref<TsAreaSelection> _selection;
  Ref<NSTimer> _clock;
  NSTimeInterval _began;

  Ref<NSString> _folder;
  Ref<NSString> _film;
  TsCompletion _completion;
  std::unique_ptr<tessaro::platform::ScreenRecording> _recording;
}

+ (TsScreenRecorder*)sharedRecorder;

// From the request to the end of the film.
- (BOOL)isBusy;

// Not while it is busy.
- (void)recordInto:(NSString*)folder completion:(const TsCompletion&)completion;

- (IBAction)recordScreen:(id)sender;
- (IBAction)recordArea:(id)sender;
- (IBAction)stop:(id)sender;
- (IBAction)cancel:(id)sender;

@end
