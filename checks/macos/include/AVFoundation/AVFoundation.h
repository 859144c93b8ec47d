#pragma once

#include <Foundation/Foundation.h>

struct CMTime {
  int64_t value;
  int32_t timescale;
  uint32_t flags;
  int64_t epoch;
};
extern "C" CMTime CMTimeMake(int64_t value, int32_t timescale);
extern "C" NSString* const AVErrorRecordingSuccessfullyFinishedKey;

@class AVCaptureFileOutput;
@interface AVCaptureInput : NSObject
@end
@interface AVCaptureScreenInput : AVCaptureInput
- (instancetype)initWithDisplayID:(CGDirectDisplayID)display;
@property CGRect cropRect;
@end
@interface AVCaptureOutput : NSObject
@end
@protocol AVCaptureFileOutputRecordingDelegate <NSObject>
- (void)captureOutput:(AVCaptureFileOutput*)output
    didFinishRecordingToOutputFileAtURL:(NSURL*)url
                        fromConnections:(NSArray*)connections
                                  error:(NSError*)error;
@end
@interface AVCaptureFileOutput : AVCaptureOutput
@property CMTime maxRecordedDuration;
- (void)startRecordingToOutputFileURL:(NSURL*)url recordingDelegate:(id<AVCaptureFileOutputRecordingDelegate>)delegate;
- (void)stopRecording;
@end
@interface AVCaptureMovieFileOutput : AVCaptureFileOutput
@end
@interface AVCaptureSession : NSObject
- (BOOL)canAddInput:(AVCaptureInput*)input;
- (void)addInput:(AVCaptureInput*)input;
- (BOOL)canAddOutput:(AVCaptureOutput*)output;
- (void)addOutput:(AVCaptureOutput*)output;
- (void)startRunning;
- (void)stopRunning;
@end
