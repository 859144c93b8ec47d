#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "Base/Ref.h"
#include "Migration/TsStoreModel.h"

// Values and the texts by which a store keeps them: dates as seconds since 2001, data as Base64.

// NSNumber, NSString, NSDate or NSData, after the type; null when `text` is none of it.
[[nodiscard]] Ref<NSObject> TsNewStoreValue(TsAttributeType type, std::string_view text);

// Nothing for nil.
[[nodiscard]] std::optional<std::string> TsStoreValueText(TsAttributeType type, id value);
