# What each system's linker is told of add-ons.
if(TESSARO_SYSTEM STREQUAL "macOS")
  # Two-level names keep the host's copies of libraries apart; only the engine's names are looked up in the process.
  function(tessaro_hide_symbols target)
    target_link_options(${target} PRIVATE -undefined dynamic_lookup)
  endfunction()
else()
  # Objective-C metadata is nothing but pointers: packed, their relocations are 6 MB smaller.
  target_link_options(tessaro_options INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed -Wl,-z,pack-relative-relocs)
  # Functions that the linker can drop one by one.
  target_compile_options(tessaro_options INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(tessaro_options INTERFACE -Wl,--gc-sections)

  # Makes the symbols of an add-on its own: see docs/architecture.md, "Symbols". The Objective-C run time keeps pointers
  # into every image that has classes: it must never be unloaded.
  function(tessaro_hide_symbols target)
    target_link_options(${target} PRIVATE -Wl,-z,nodelete -Wl,--version-script=${CMAKE_SOURCE_DIR}/cmake/exports.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${CMAKE_SOURCE_DIR}/cmake/exports.map)
  endfunction()
endif()
