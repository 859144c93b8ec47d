#include "native/MainBundle.h"

#import <Foundation/Foundation.h>
#import <GNUstepBase/GSLocale.h>
#import <objc/runtime.h>

#include "Base/Ref.h"

namespace {

NSString* const kLanguagesKey = @"NSLanguages";
// The volatile domain in which GNUstep keeps the languages it has worked out.
NSString* const kPrimaryDomain = @"GSPrimaryDomain";

Ref<NSBundle>& TheMainBundle() {
  static auto& bundle = *new Ref<NSBundle>();
  return bundle;
}

id MainBundle(id, SEL) { return TheMainBundle().get(); }

NSString* EnvironmentLocale() {
  NSDictionary* environment = [[NSProcessInfo processInfo] environment];
  for (NSString* name in @[ @"LC_ALL", @"LC_MESSAGES", @"LANG" ]) {
    NSString* value = [environment objectForKey:name];
    if ([value length] > 0) return value;
  }
  return @"C";
}

// "de_AT.UTF-8@euro" is "de_AT".
NSString* WithoutCharacterSet(NSString* locale) {
  NSRange suffix = [locale rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@".@"]];
  return suffix.location == NSNotFound ? locale : [locale substringToIndex:suffix.location];
}

bool IsNeutral(NSString* locale) { return [@[ @"C", @"POSIX" ] containsObject:WithoutCharacterSet(locale)]; }

// As in gettext: LANGUAGE counts only if the locale is not "C".
NSArray* EnvironmentLocales() {
  NSString* locale = EnvironmentLocale();
  if (IsNeutral(locale)) return @[];
  NSString* list = [[[NSProcessInfo processInfo] environment] objectForKey:@"LANGUAGE"];
  return [list length] > 0 ? [list componentsSeparatedByString:@":"] : @[ locale ];
}

// "de_AT", then "de".
NSArray* WithLanguageAlone(NSString* locale) {
  NSString* full = WithoutCharacterSet(locale);
  return @[ full, [[full componentsSeparatedByString:@"_"] objectAtIndex:0] ];
}

// GNUstep's own names ("German"), which localised folders have too.
NSArray* EnvironmentLanguages() {
  NSMutableOrderedSet* languages = [NSMutableOrderedSet orderedSet];
  for (NSString* locale in EnvironmentLocales()) {
    for (NSString* each in WithLanguageAlone(locale)) {
      if (NSString* language = GSLanguageFromLocale(each)) [languages addObject:language];
    }
  }
  [languages addObject:@"English"];
  return [languages array];
}

bool HasUserChosenLanguages(NSUserDefaults* defaults) {
  NSString* application = [[NSProcessInfo processInfo] processName];
  return [[defaults volatileDomainForName:NSArgumentDomain] objectForKey:kLanguagesKey] != nil ||
         [[defaults persistentDomainForName:application] objectForKey:kLanguagesKey] != nil ||
         [[defaults persistentDomainForName:NSGlobalDomain] objectForKey:kLanguagesKey] != nil;
}

}  // namespace

void SetMainBundle(NSBundle* bundle) {
  TheMainBundle() = Retain(bundle);
  const Method method = class_getClassMethod([NSBundle class], @selector(mainBundle));
  method_setImplementation(method, reinterpret_cast<IMP>(MainBundle));
}

void FollowEnvironmentLanguages() {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  if (HasUserChosenLanguages(defaults)) return;
  [defaults removeVolatileDomainForName:kPrimaryDomain];
  [defaults setVolatileDomain:@{kLanguagesKey : EnvironmentLanguages()} forName:kPrimaryDomain];
}
