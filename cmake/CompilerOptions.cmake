# Flags every target of the project is built with.
add_library(tessaro_options INTERFACE)
target_include_directories(tessaro_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(tessaro_options INTERFACE
  -Wall -Wextra -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
  -fstack-protector-strong -fno-strict-aliasing -fvisibility=hidden)
# Sources are named relative to the project, so that log lines and assertion texts read the same on every machine.
target_compile_options(tessaro_options INTERFACE -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
include(Linking)

if(TESSARO_SANITIZE OR TESSARO_FUZZ)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize=vptr,function -fno-sanitize-recover=undefined
    -fno-omit-frame-pointer -fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/cmake/SanitizerExceptions.txt)
  # An add-on can't bring a run time of its own.
  if(TESSARO_SANITIZE)
    list(APPEND sanitizers -shared-libsan)
  endif()
  target_compile_options(tessaro_options INTERFACE ${sanitizers})
  target_compile_definitions(tessaro_options INTERFACE TESSARO_SANITIZED)
  target_link_options(tessaro_options INTERFACE ${sanitizers})
elseif(TESSARO_SYSTEM STREQUAL "Linux")
  # glibc's; macOS checks by itself.
  target_compile_definitions(tessaro_options INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
endif()
