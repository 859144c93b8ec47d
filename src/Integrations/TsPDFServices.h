#pragma once

#import <Foundation/NSObject.h>

// The application's entry among the services for PDF documents of the print panel.
@interface TsPDFServices : NSObject

+ (instancetype)sharedInstance;

- (void)install;

@end
