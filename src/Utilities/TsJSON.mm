#include "Utilities/TsJSON.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Utilities/TsJSONReader.h"
#include "Utilities/TsJSONWriter.h"

namespace {

NSError* ErrorOf(const Failure& failure) {
  return [NSError errorWithDomain:NSCocoaErrorDomain
                             code:failure.code
                         userInfo:@{NSLocalizedDescriptionKey : TsNSString(failure.message)}];
}

// A container within itself has no end, and neither has its description.
id Describable(id object, const Failure& failure) {
  if (failure.code != kTsJSONNestedTooDeeply) return object;
  return [NSString stringWithFormat:@"<%@ %p>", [object class], object];
}

}  // namespace

NSString* TsConvertToJSONString(id object) {
  const auto json = TsWriteJSON(object);
  if (json) return TsNSString(*json);
  TsLogError(@"Couldn't convert %@ to JSON because of %@", Describable(object, json.error()), ErrorOf(json.error()));
  return nil;
}

id TsConvertFromJSONString(NSString* string, NSError** error) {
  auto object = TsReadJSON(string);
  if (object) return object->Autoreleased();
  if (error != nullptr) *error = ErrorOf(object.error());
  return nil;
}
