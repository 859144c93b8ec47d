#pragma once

#import <Foundation/NSBundle.h>

// Makes `bundle` the main bundle of this process, whose executable is Node's. For the life of the process.
void SetMainBundle(NSBundle* bundle);

// Makes localisation follow the languages of the environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), unless the user
// has chosen others in the defaults. GNUstep does so only for locales whose data are installed.
void FollowEnvironmentLanguages();
