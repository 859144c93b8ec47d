# Cocoa, and the Objective-C run time: Apple's frameworks on macOS, GNUstep elsewhere.
add_library(cocoa INTERFACE)
if(TESSARO_SYSTEM STREQUAL "macOS")
  # Memory is managed by Ref<T>. Which deprecated names are in use is agreed on in checks/macos/deprecations.txt.
  target_compile_options(cocoa INTERFACE
    $<$<COMPILE_LANGUAGE:OBJCXX>:-fno-objc-arc> -Wno-deprecated-declarations -Wno-missing-designated-field-initializers)
  foreach(framework
      AppKit Foundation CoreFoundation CoreGraphics CoreServices Carbon ScriptingBridge AddressBook AVFoundation CoreMedia
      ImageIO Quartz QuickLookThumbnailing Security ServiceManagement SystemConfiguration UniformTypeIdentifiers
      UserNotifications)
    target_link_libraries(cocoa INTERFACE "-framework ${framework}")
  endforeach()
else()
  include(GNUstep)
  target_link_libraries(cocoa INTERFACE gnustep)
endif()
