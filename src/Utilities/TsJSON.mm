#include "Utilities/TsJSON.h"

#include "Utilities/TsJSONReader.h"
#include "Utilities/TsJSONWriter.h"
#include "Utilities/TsLog.h"

NSString* TsConvertToJSONString(id object) {
  NSError* error = nil;
  if (NSString* json = TsWriteJSON(object, &error)) return json;
  TsLogError(@"Couldn't convert %@ to JSON because of %@", object, error);
  return nil;
}

id TsConvertFromJSONString(NSString* string, NSError** error) { return TsReadJSON(string, error); }
