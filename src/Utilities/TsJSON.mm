#include "Utilities/TsJSON.h"

#include "Base/TsLog.h"
#include "Utilities/TsJSONError.h"
#include "Utilities/TsJSONReader.h"
#include "Utilities/TsJSONWriter.h"

namespace {

// A container within itself has no end, and its description neither.
id Describable(id object, NSError* error) {
  if ([error code] != kTsJSONNestedTooDeeply) return object;
  return [NSString stringWithFormat:@"<%@ %p>", [object class], object];
}

}  // namespace

NSString* TsConvertToJSONString(id object) {
  NSError* error = nil;
  if (NSString* json = TsWriteJSON(object, &error)) return json;
  TsLogError(@"Couldn't convert %@ to JSON because of %@", Describable(object, error), error);
  return nil;
}

id TsConvertFromJSONString(NSString* string, NSError** error) { return TsReadJSON(string, error); }
