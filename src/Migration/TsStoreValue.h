#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "Base/Ref.h"
#include "Migration/TsStoreModel.h"

// Values and the texts by which a store keeps them: dates as seconds since 2001, data as Base64.

// NSNumber, NSString, NSDate or NSData, after the model's type; nil when `text` is no such value. A number is a boolean
// when the store or, where that says nothing, the model calls it one and it is 0 or 1.
[[nodiscard]] Ref<NSObject> TsNewStoreValue(TsAttributeType type, std::string_view storedType, std::string_view text);

// `value` is not nil.
[[nodiscard]] std::string TsStoreValueText(TsAttributeType type, id value);
