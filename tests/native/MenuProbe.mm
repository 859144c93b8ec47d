#include "MenuProbe.h"

#import <AppKit/AppKit.h>

#include "Application/AtomApplication.h"
#include "Application/KeyCombinations.h"
#include "Base/Ref.h"
#include "Base/TsReplaceMethod.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Menu/TsMainMenu.h"
#include "PasteboardProbe.h"
#include "Platform/Cocoa.h"
#include "Platform/KeyboardLayout.h"
#include "Platform/Linux/Keyboard/ShortcutText.h"
#include "Probe.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

// A class and one that only inherits from it.
@interface TsProbeBase : NSObject
- (int)answer;
@end

@implementation TsProbeBase
- (int)answer {
  return 1;
}
@end

@interface TsProbeHeir : TsProbeBase
@end

@implementation TsProbeHeir
@end

// An item that says it leads to a menu.
@interface TsProbeItemInto : NSMenuItem {
  NSMenu* _destination;
}
- (instancetype)initWithMenu:(NSMenu*)menu;
@end

@implementation TsProbeItemInto

- (instancetype)initWithMenu:(NSMenu*)menu {
  self = [super initWithTitle:@"Back" action:nullptr keyEquivalent:@""];
  if (self) _destination = menu;
  return self;
}

- (NSMenu*)submenu {
  return _destination;
}

@end

@interface NSObject (TsProbe)
- (int)ts_previousAnswer;
- (NSEvent*)tsHandleKeyboardEvent:(NSEvent*)event;
- (bool)tsPasteIfPossible;
@end

namespace {

NSNumber* Number(NSInteger value) { return [NSNumber numberWithInteger:value]; }

Ref<NSMenu> MakeMenu(NSString* title, NSArray* items) {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:title]);
  [menu setMenuChangedMessagesEnabled:NO];
  for (NSDictionary* description in items) {
    NSString* key = [description objectForKey:@"key"];
    auto item = Adopt([[NSMenuItem alloc] initWithTitle:[description objectForKey:@"title"]
                                                 action:@selector(performCommand:)
                                          keyEquivalent:key != nil ? key : @""]);
    [item setKeyEquivalentModifierMask:[[description objectForKey:@"modifiers"] unsignedIntegerValue]];
    if (id commandId = [description objectForKey:@"commandId"]) [item setRepresentedObject:@{@"commandId" : commandId}];
    [menu addItem:item];
    if (id nested = [description objectForKey:@"items"]) {
      [menu setSubmenu:MakeMenu([description objectForKey:@"title"], nested) forItem:item];
    }
  }
  [menu setMenuChangedMessagesEnabled:YES];
  return menu;
}

NSArray* Describe(NSMenu* menu) {
  NSMutableArray* items = [NSMutableArray array];
  for (NSMenuItem* item in [menu itemArray]) {
    NSMutableDictionary* description = [NSMutableDictionary dictionary];
    [description setObject:[item title] forKey:@"title"];
    [description setObject:[item keyEquivalent] forKey:@"key"];
    [description setObject:Number(static_cast<NSInteger>([item keyEquivalentModifierMask])) forKey:@"modifiers"];
    [description setObject:Truth([item isHidden]) forKey:@"hidden"];
    if ([item hasSubmenu]) {
      [description setObject:[[item submenu] title] forKey:@"submenuTitle"];
      [description setObject:Describe([item submenu]) forKey:@"items"];
    }
    [items addObject:description];
  }
  return items;
}

id setMainMenu(id items) {
  [NSApp setMainMenu:MakeMenu(@"TessaroHost", items)];
  return nil;
}

id shortcutTexts(id) {
  NSMutableArray* texts = [NSMutableArray array];
  for (NSMenuItem* item in [[[[[NSApp mainMenu] itemArray] objectAtIndex:0] submenu] itemArray]) {
    [texts addObject:tessaro::platform::ShortcutText(item)];
  }
  return texts;
}

id setUserDefaults(id values) {
  for (NSString* key in static_cast<NSDictionary*>(values)) {
    [[NSUserDefaults standardUserDefaults] setObject:[values objectForKey:key] forKey:key];
  }
  return nil;
}

id mainMenu(id) { return Describe([NSApp mainMenu]); }

id delegateClasses(id) {
  id shared = [[NSApp mainMenu] delegate];
  NSMutableArray* names = [NSMutableArray arrayWithObject:shared == nil ? @"none" : NSStringFromClass([shared class])];
  for (NSMenuItem* item in [[NSApp mainMenu] itemArray]) {
    id delegate = [[item submenu] delegate];
    [names addObject:delegate == nil ? @"none" : delegate == shared ? @"shared" : @"other"];
  }
  return names;
}

// Two menus that contain each other. GNUstep never returns from making such a pair, so one is only said to be there.
id identifiersOfCyclicMenus(id) {
  auto first = MakeMenu(@"First", @[ @{@"title" : @"One", @"commandId" : Number(1)} ]);
  auto second = MakeMenu(@"Second", @[ @{@"title" : @"Two", @"commandId" : Number(2)} ]);
  auto back = Adopt([[TsProbeItemInto alloc] initWithMenu:first]);
  [second addItem:back];
  [[first itemAtIndex:0] setSubmenu:second];
  NSMutableDictionary* map = [NSMutableDictionary dictionary];
  TsBuildCommandIdDictionary(map, [first itemArray]);
  return [[map allKeys] sortedArrayUsingSelector:@selector(compare:)];
}

// ---- Keys

NSEvent* EventOf(NSDictionary* description) {
  const auto number = [&](NSString* key) { return [[description objectForKey:key] unsignedIntegerValue]; };
  const NSPoint location = NSMakePoint(static_cast<CGFloat>(number(@"x")), 1);
  const NSEventType type = static_cast<NSEventType>(number(@"type"));
  if (type == NSLeftMouseDown) {
    return [NSEvent mouseEventWithType:type
                              location:location
                         modifierFlags:number(@"modifiers")
                             timestamp:0
                          windowNumber:0
                               context:nil
                           eventNumber:0
                            clickCount:1
                              pressure:0];
  }
  return [NSEvent keyEventWithType:type
                          location:[[description objectForKey:@"isSynthetic"] boolValue] ? NSZeroPoint : location
                     modifierFlags:number(@"modifiers")
                         timestamp:0
                      windowNumber:0
                           context:nil
                        characters:[description objectForKey:@"characters"]
       charactersIgnoringModifiers:[description objectForKey:@"ignoring"]
                         isARepeat:NO
                           keyCode:static_cast<unsigned short>(number(@"keyCode"))];
}

id predicates(id description) {
  NSEvent* event = EventOf(description);
  NSString* characters = [description objectForKey:@"ignoring"];
  const unsigned short key = [event ts_virtualKeyCode];
  return @{
    @"IsCommandKeyPressed" : Truth(IsCommandKeyPressed(event)),
    @"IsCommandOptionKeyPressed" : Truth(IsCommandOptionKeyPressed(event)),
    @"IsCommandControlKeyPressed" : Truth(IsCommandControlKeyPressed(event)),
    @"IsCommandShiftKeyPressed" : Truth(IsCommandShiftKeyPressed(event)),
    @"IsCommandAndStringKey" : Truth(IsCommandAndStringKey(event, characters)),
    @"IsCommandShiftAndStringKey" : Truth(IsCommandShiftAndStringKey(event, characters)),
    @"IsCommandAndKeyCodeKey" : Truth(IsCommandAndKeyCodeKey(event, key)),
    @"IsCommandOptionAndKeyCodeKey" : Truth(IsCommandOptionAndKeyCodeKey(event, key)),
    @"IsCommandControlAndKeyCodeKey" : Truth(IsCommandControlAndKeyCodeKey(event, key)),
    @"IsCommandShiftAndKeyCodeKey" : Truth(IsCommandShiftAndKeyCodeKey(event, key)),
    @"IsCommandAndOtherStringKey" : Truth(IsCommandAndStringKey(event, @"other")),
    @"IsCommandAndOtherKeyCodeKey" : Truth(IsCommandAndKeyCodeKey(event, static_cast<unsigned short>(key + 1))),
    @"IsEventForKeyEquivalent" : Truth(IsEventForKeyEquivalent(event)),
    @"TsIsSpecialEvent" : Truth(TsIsSpecialEvent(event)),
  };
}

id sendEvent(id description) {
  [NSApp sendEvent:EventOf(description)];
  return nil;
}

id performKeyEquivalent(id description) {
  return @[ Truth([[NSApp mainMenu] performKeyEquivalent:EventOf(description)]) ];
}

id processKey(id description) { return @[ Truth(ProcessKeyboardEvent(EventOf(description))) ]; }

id processModifiers(id description) {
  ProcessKeyboardModifierKeysEvent(EventOf(description));
  return nil;
}

id menuEventDescription(id description) {
  return TsMenuEventDescription(description == nil ? nil : EventOf(description));
}

id virtualKeyCodes(id systemKeyCodes) {
  NSMutableArray* codes = [NSMutableArray array];
  for (NSNumber* code in systemKeyCodes) {
    [codes addObject:Number(tessaro::platform::VirtualKeyCode([code unsignedShortValue]))];
  }
  return codes;
}

// ---- The patch

NSString* Encoding(Class owner, SEL selector) {
  Method method = class_getInstanceMethod(owner, selector);
  return method == nullptr ? @"none" : [NSString stringWithUTF8String:method_getTypeEncoding(method)];
}

id patch(id) {
  Class application = [NSApp class];
  NSEvent* event = EventOf(@{@"type" : Number(10), @"characters" : @"a", @"ignoring" : @"a"});
  return @{
    @"tsOrigSendEvent:" : Encoding(application, @selector(tsOrigSendEvent:)),
    @"tsHandleKeyboardEvent:" : Encoding(application, @selector(tsHandleKeyboardEvent:)),
    @"tsPasteIfPossible" : Encoding(application, @selector(tsPasteIfPossible)),
    @"tsOrigPerformKeyEquivalent:" : Encoding([NSMenu class], @selector(tsOrigPerformKeyEquivalent:)),
    @"superclass" : Truth(class_getMethodImplementation([NSApplication class], @selector(sendEvent:)) ==
                          reinterpret_cast<IMP>(TsSendEvent)),
    @"handledEventIsTheSame" : Truth([NSApp tsHandleKeyboardEvent:event] == event),
  };
}

int AnswerTwo(id, SEL) { return 2; }
int AnswerThree(id, SEL) { return 3; }

id replaceInherited(id) {
  const SEL alias = @selector(ts_previousAnswer);
  const auto replace = [alias](IMP implementation) {
    return TsReplaceMethod([TsProbeHeir class], @selector(answer), alias, implementation);
  };
  auto base = Adopt([[TsProbeBase alloc] init]);
  auto heir = Adopt([[TsProbeHeir alloc] init]);
  const IMP inherited = class_getMethodImplementation([TsProbeBase class], @selector(answer));
  const IMP first = replace(reinterpret_cast<IMP>(AnswerTwo));
  NSMutableArray* answers = [NSMutableArray arrayWithArray:@[
    Number([base answer]), Number([heir answer]), Number([heir ts_previousAnswer]), Truth(first == inherited)
  ]];
  const IMP second = replace(reinterpret_cast<IMP>(AnswerThree));
  [answers addObjectsFromArray:@[
    Number([base answer]), Number([heir answer]), Number([heir ts_previousAnswer]),
    Truth(second == reinterpret_cast<IMP>(AnswerTwo))
  ]];
  const IMP missing =
      TsReplaceMethod([TsProbeHeir class], @selector(thereIsNone), alias, reinterpret_cast<IMP>(AnswerTwo));
  [answers addObject:Truth(missing == nullptr)];
  return answers;
}

// ---- Pasting

id putOnPasteboard(id description) {
  NSPasteboard* pasteboard = [NSPasteboard generalPasteboard];
  id files = [description objectForKey:@"files"];
  id text = [description objectForKey:@"text"];
  if (id types = [description objectForKey:@"types"]) {
    PutTypesOnPasteboard(types);
    return nil;
  }
  [pasteboard declareTypes:@[ files != nil ? NSFilenamesPboardType : NSStringPboardType ] owner:nil];
  if (files != nil) [pasteboard setPropertyList:files forType:NSFilenamesPboardType];
  if (text != nil) [pasteboard setString:text forType:NSStringPboardType];
  return nil;
}

id pasteIfPossible(id) {
  return @[
    Truth([NSApp tsPasteIfPossible]), Truth(hasFilesInPasteboard(NSStringPboardType)),
    Truth(hasFilesInPasteboard(@"public.file-url"))
  ];
}

// ---- Costs

void measureSendEvent(ProbeArguments args) {
  NSEvent* event = EventOf(ParsedArgument(args, 0));
  const auto count = args[1].As<v8::Int32>()->Value();
  for (int i = 0; i < count; ++i) TsSendEvent(NSApp, @selector(sendEvent:), event);
}

void measurePreviousSendEvent(ProbeArguments args) {
  NSEvent* event = EventOf(ParsedArgument(args, 0));
  const auto count = args[1].As<v8::Int32>()->Value();
  for (int i = 0; i < count; ++i) [NSApp performSelector:@selector(tsOrigSendEvent:) withObject:event];
}

}  // namespace

void AttachMenuProbe(v8::Local<v8::Object> exports) {
  JSON_PROBE(setMainMenu);
  JSON_PROBE(mainMenu);
  JSON_PROBE(shortcutTexts);
  JSON_PROBE(setUserDefaults);
  JSON_PROBE(delegateClasses);
  JSON_PROBE(identifiersOfCyclicMenus);
  JSON_PROBE(predicates);
  JSON_PROBE(sendEvent);
  JSON_PROBE(performKeyEquivalent);
  JSON_PROBE(processKey);
  JSON_PROBE(processModifiers);
  JSON_PROBE(menuEventDescription);
  JSON_PROBE(virtualKeyCodes);
  JSON_PROBE(patch);
  JSON_PROBE(replaceInherited);
  JSON_PROBE(putOnPasteboard);
  JSON_PROBE(pasteIfPossible);
  JSON_PROBE(pasteboardTypes);
  JSON_PROBE(largeValueSurvives);
  JSON_PROBE(putURLs);
  JSON_PROBE(typesOnPasteboard);
  JSON_PROBE(offerLazily);
  JSON_PROBE(timesProvided);
  PROBE(measureSendEvent);
  PROBE(measurePreviousSendEvent);
}
