# GNUstep on the GCC Objective-C runtime, as Debian ships it.
execute_process(
  COMMAND gcc -print-file-name=include
  OUTPUT_VARIABLE gcc_headers OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND gcc -print-file-name=libobjc.so
  OUTPUT_VARIABLE objc_library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

add_library(gnustep INTERFACE)
target_compile_definitions(gnustep INTERFACE
  GNUSTEP GNUSTEP_BASE_LIBRARY=1 GNU_GUI_LIBRARY=1 GNU_RUNTIME=1 _NATIVE_OBJC_EXCEPTIONS)
# The runtime's headers lie among GCC's own: after everything else, or they would hide clang's intrinsics.
target_compile_options(gnustep INTERFACE
  $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-runtime=gcc;-fobjc-exceptions;-fconstant-string-class=NSConstantString;-Wno-objc-root-class>
  -isystem /usr/include/GNUstep -idirafter ${gcc_headers})
target_link_libraries(gnustep INTERFACE gnustep-gui gnustep-base ${objc_library})
