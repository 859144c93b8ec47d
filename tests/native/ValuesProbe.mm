#include "ValuesProbe.h"

#import <Foundation/Foundation.h>

#include <chrono>

#include "Platform/FoundationValues.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace platform = tessaro::platform;

namespace {

void Return(ProbeArguments args, NSString* text) {
  v8::Local<v8::String> string;
  if (ToScriptString(args.GetIsolate(), text).ToLocal(&string)) args.GetReturnValue().Set(string);
}

// The way in and out again; undefined when the text is refused.
void roundTrip(ProbeArguments args) {
  id object = TsConvertFromJSONString(convertToNSString(args[0]), nullptr);
  if (object != nil) Return(args, TsConvertToJSONString(object));
}

void readError(ProbeArguments args) {
  NSError* error = nil;
  if (TsConvertFromJSONString(convertToNSString(args[0]), &error) != nil) return;
  Return(args, [NSString stringWithFormat:@"%@ %d %@", [error domain], static_cast<int>([error code]),
                                          [error localizedDescription]]);
}

// Objects that JSON can't hold, by name.
void writeUnfit(ProbeArguments args) {
  NSMutableArray* cycle = [NSMutableArray array];
  [static_cast<id>(cycle) addObject:cycle];
  NSMutableArray* deep = [NSMutableArray array];
  for (int level = 1; level < 513; ++level) deep = [NSMutableArray arrayWithObject:deep];
  NSDictionary* unfit = [NSDictionary
      dictionaryWithObjectsAndKeys:[NSArray arrayWithObject:[NSDate date]], @"date",
                                   [NSArray arrayWithObject:[NSData data]], @"data",
                                   [NSDictionary dictionaryWithObject:@"x" forKey:[NSNumber numberWithInt:1]], @"key",
                                   [NSArray arrayWithObject:[NSNumber numberWithDouble:NAN]], @"nan",
                                   [NSArray arrayWithObject:[NSNumber numberWithDouble:-INFINITY]], @"infinity", cycle,
                                   @"cycle", deep, @"deep", @"text", @"text", nil];
  NSString* json = TsConvertToJSONString([unfit objectForKey:convertToNSString(args[0])]);
  if ([cycle count] > 0) [cycle removeAllObjects];
  Return(args, json);
}

// Numbers as Foundation makes them, which scripts never do.
void writeNumbers(ProbeArguments args) {
  NSArray* numbers = [NSArray arrayWithObjects:[NSNumber numberWithBool:YES], [NSNumber numberWithBool:NO],
                                               [NSNumber numberWithChar:-1], [NSNumber numberWithUnsignedChar:255],
                                               [NSNumber numberWithInt:1], [NSNumber numberWithLongLong:INT64_MIN],
                                               [NSNumber numberWithUnsignedLongLong:UINT64_MAX],
                                               [NSNumber numberWithFloat:0.5F], [NSNumber numberWithDouble:0.1], nil];
  Return(args, TsConvertToJSONString(numbers));
}

// Everything that comes out of the reader can be changed.
void mutate(ProbeArguments args) {
  NSMutableDictionary* root = TsConvertFromJSONString(convertToNSString(args[0]), nullptr);
  NSMutableDictionary* inner = [root objectForKey:@"inner"];
  [[inner objectForKey:@"list"] addObject:@"added"];
  [inner setObject:@"changed" forKey:@"name"];
  [inner removeObjectForKey:@"gone"];
  for (int i = 0; i < 40; ++i)
    [inner setObject:[NSNumber numberWithInt:i] forKey:[NSString stringWithFormat:@"k%d", i]];
  for (int i = 1; i < 40; ++i) [inner removeObjectForKey:[NSString stringWithFormat:@"k%d", i]];
  [root setObject:[[inner mutableCopy] autorelease] forKey:@"copy"];
  [root setObject:[NSNumber numberWithBool:[[root objectForKey:@"copy"] isEqual:inner]] forKey:@"equal?"];
  Return(args, TsConvertToJSONString(root));
}

NSString* Compact(const char* utf8) {
  NSString* foreign = [NSString stringWithUTF8String:utf8];
  auto made = platform::NewUtf16String([foreign length]);
  [foreign getCharacters:reinterpret_cast<unichar*>(made.characters)];
  return made.string.Autoreleased();
}

NSString* CompactLatin1(const char* text) {
  auto made = platform::NewLatin1String(strlen(text));
  std::copy_n(text, strlen(text), made.characters);
  return made.string.Autoreleased();
}

id PropertyListRoundTrip(id object) {
  NSData* data = [NSPropertyListSerialization dataFromPropertyList:object
                                                            format:NSPropertyListXMLFormat_v1_0
                                                  errorDescription:nullptr];
  return [NSPropertyListSerialization propertyListWithData:data options:0 format:nullptr error:nullptr];
}

// Compact objects must be told apart from Foundation's by nobody. Gives the names of the checks that fail.
class Conformance {
 public:
  NSArray* Run() {
    const char* const texts[] = {"", "a", "subject", "a longer text that is not tiny", "Grüße", "你好 😀", "e\xcc\x81"};
    for (const char* text : texts) {
      Strings([NSString stringWithUTF8String:text], Compact(text));
      if (strlen(text) == [[NSString stringWithUTF8String:text] length]) {
        Strings([NSString stringWithUTF8String:text], CompactLatin1(text));
      }
    }
    Dictionaries();
    Numbers();
    Raising();
    return failed_;
  }

 private:
  void Check(bool holds, NSString* name) {
    if (!holds) [failed_ addObject:name];
  }

  void Strings(NSString* standard, NSString* compact) {
    const auto check = [&](bool holds, const char* name) {
      Check(holds, [NSString stringWithFormat:@"%s of “%@”", name, standard]);
    };
    check([standard isEqual:compact] && [compact isEqual:standard], "isEqual:");
    check([standard isEqualToString:compact] && [compact isEqualToString:standard], "isEqualToString:");
    check([standard hash] == [compact hash], "hash");
    check([standard compare:compact] == NSOrderedSame && [compact compare:standard] == NSOrderedSame, "compare:");
    check([[NSString stringWithFormat:@"%@", compact] isEqual:standard], "format");
    check([[compact description] isEqual:standard], "description");
    check([compact copy] == compact, "copy");
    [compact release];
    check([[[compact mutableCopy] autorelease] isEqual:standard], "mutableCopy");
    check(strcmp([compact UTF8String], [standard UTF8String]) == 0, "UTF8String");
    check([[compact dataUsingEncoding:NSUTF8StringEncoding] isEqual:[standard dataUsingEncoding:NSUTF8StringEncoding]],
          "dataUsingEncoding:");
    check([[NSDictionary dictionaryWithObject:@"v" forKey:standard] objectForKey:compact] != nil, "as a look-up key");
    check([[NSDictionary dictionaryWithObject:@"v" forKey:compact] objectForKey:standard] != nil, "as a stored key");
    check([[NSSet setWithObject:compact] containsObject:standard], "in a set");
    check([[compact stringByAppendingString:@"x"] isEqual:[standard stringByAppendingString:@"x"]], "appending");
    check([[compact uppercaseString] isEqual:[standard uppercaseString]], "uppercaseString");
    check([compact hasPrefix:standard] == [standard hasPrefix:standard], "hasPrefix:");
    check([[compact componentsSeparatedByString:@" "] isEqual:[standard componentsSeparatedByString:@" "]],
          "components");
    check(
        [[compact substringFromIndex:[compact length] / 2] isEqual:[standard substringFromIndex:[compact length] / 2]],
        "substring");
    NSArray* list = [NSArray arrayWithObject:compact];
    // Compared with what becomes of a standard string, as GNUstep loses characters beyond the BMP on this way.
    check([PropertyListRoundTrip(list) isEqual:PropertyListRoundTrip([NSArray arrayWithObject:standard])],
          "property list");
    check([[NSUnarchiver unarchiveObjectWithData:[NSArchiver archivedDataWithRootObject:list]] isEqual:list],
          "archive");
    check([[NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:list]] isEqual:list],
          "keyed archive");
    check([compact isKindOfClass:[NSString class]] && ![compact isKindOfClass:[NSMutableString class]], "class");
    check([[[[compact class] alloc] initWithString:standard] autorelease] != nil, "another of its class");
    check([[compact stringByExpandingTildeInPath] isEqual:[standard stringByExpandingTildeInPath]], "path");
    check([[NSAttributedString alloc] initWithString:compact] != nil, "attributed");
  }

  void Dictionaries() {
    NSMutableDictionary* compact = TsConvertFromJSONString(@"{\"a\":1,\"b\":[\"x\"],\"c\":{\"d\":null}}", nullptr);
    NSDictionary* standard = [NSDictionary dictionaryWithDictionary:compact];
    Check([compact isEqual:standard] && [standard isEqual:compact], @"dictionary isEqual:");
    Check([compact hash] == [standard hash], @"dictionary hash");
    Check([compact count] == 3 && [[compact allKeys] count] == 3 && [[compact allValues] count] == 3, @"count");
    Check([[compact description] length] > 0, @"dictionary description");
    Check([[compact valueForKeyPath:@"b.@count"] intValue] == 1, @"key path");
    Check([compact objectForKey:@"none"] == nil && [compact objectForKey:nil] == nil, @"absent keys");
    Check([[[compact copy] autorelease] isEqual:standard], @"dictionary copy");
    [compact removeObjectForKey:@"c"];
    Check([PropertyListRoundTrip(compact) isEqual:compact], @"dictionary property list");
    Check([[[[compact class] alloc] init] autorelease] != nil, @"another dictionary of its class");
    [compact addEntriesFromDictionary:standard];
    Check([compact isEqual:standard], @"addEntriesFromDictionary:");
    [compact removeAllObjects];
    Check([compact count] == 0, @"removeAllObjects");
  }

  void Numbers() {
    NSArray* read = TsConvertFromJSONString(@"[1,-7,9223372036854775807,18446744073709551615,0.1,true]", nullptr);
    NSArray* standard = [NSArray arrayWithObjects:[NSNumber numberWithInt:1], [NSNumber numberWithInt:-7],
                                                  [NSNumber numberWithLongLong:INT64_MAX],
                                                  [NSNumber numberWithUnsignedLongLong:UINT64_MAX],
                                                  [NSNumber numberWithDouble:0.1], [NSNumber numberWithBool:YES], nil];
    for (NSUInteger i = 0; i < [standard count]; ++i) {
      NSNumber* one = [read objectAtIndex:i];
      NSNumber* other = [standard objectAtIndex:i];
      Check([one isEqual:other] && [other isEqual:one] && [one hash] == [other hash] &&
                [[one stringValue] isEqual:[other stringValue]] && [one compare:other] == NSOrderedSame,
            [NSString stringWithFormat:@"number %@", other]);
    }
    Check([read objectAtIndex:5] == [NSNumber numberWithBool:YES], @"true");
  }

  void Raising() {
    NSMutableDictionary* compact = TsConvertFromJSONString(@"{\"a\":1,\"b\":2}", nullptr);
    NSString* string = CompactLatin1("abc");
    Check(Raises(NSRangeException, [&] { [string characterAtIndex:3]; }), @"characterAtIndex: out of range");
    Check(Raises(NSRangeException, [&] { [string substringFromIndex:4]; }), @"substring out of range");
    Check(Raises(NSInvalidArgumentException, [&] { [compact setObject:nil forKey:@"x"]; }), @"nil value");
    Check(Raises(NSGenericException,
                 [&] {
                   for (id key in compact) [compact removeObjectForKey:key];
                 }),
          @"change while enumerating");
  }

  template <typename Work>
  static bool Raises(NSString* name, Work work) {
    @try {
      work();
    } @catch (NSException* exception) {
      return [[exception name] isEqual:name];
    }
    return false;
  }

  NSMutableArray* failed_ = [NSMutableArray array];
};

void conformance(ProbeArguments args) { Return(args, TsConvertToJSONString(Conformance().Run())); }

// Nanoseconds of each of `rounds` passages through a door, without the script boundary.
template <typename Door>
void TimeDoor(ProbeArguments args, Door door) {
  v8::Isolate* isolate = args.GetIsolate();
  const auto context = isolate->GetCurrentContext();
  const std::uint32_t rounds = args[1]->Uint32Value(context).FromMaybe(1);
  const auto samples = v8::Array::New(isolate);
  for (std::uint32_t round = 0; round < rounds; ++round) {
    const auto start = std::chrono::steady_clock::now();
    @autoreleasepool {
      static_cast<void>(door());
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    samples->Set(context, round, v8::Number::New(isolate, elapsed.count())).Check();
  }
  args.GetReturnValue().Set(samples);
}

void timeRead(ProbeArguments args) {
  NSString* text = convertToNSString(args[0]);
  TimeDoor(args, [&] { return TsConvertFromJSONString(text, nullptr); });
}

void timeWrite(ProbeArguments args) {
  id object = TsConvertFromJSONString(convertToNSString(args[0]), nullptr);
  TimeDoor(args, [&] { return TsConvertToJSONString(object); });
}

// From a script's text to containers, and back to a script's text.
void read(ProbeArguments args) {
  args.GetReturnValue().Set(TsConvertFromJSONString(TsCopyString(args.GetIsolate(), args[0]), nullptr) != nil);
}

}  // namespace

void AttachValuesProbe(v8::Local<v8::Object> exports) {
  PROBE(roundTrip);
  PROBE(readError);
  PROBE(writeUnfit);
  PROBE(writeNumbers);
  PROBE(mutate);
  PROBE(conformance);
  PROBE(timeRead);
  PROBE(timeWrite);
  PROBE(read);
}
