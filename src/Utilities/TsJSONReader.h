#pragma once

#import <Foundation/NSString.h>

#include "Base/Ref.h"
#include "Base/Result.h"

// The array or dictionary that `json` describes, with mutable containers at every level.
[[nodiscard]] Result<Ref<NSObject>> TsReadJSON(NSString* json);
