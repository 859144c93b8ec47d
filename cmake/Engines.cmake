# The engines that the module is built for. It talks to V8 directly, so whatever includes V8's or Node's headers is
# compiled once for each of them; everything else is compiled once.
#
#   own      the Node.js of this machine; its add-ons are in the build folder itself
#   18 …     Node.js of that version, from build/engines: `scripts/build release 18 22`
#   given    the owner of the headers in TESSARO_NODE_HEADERS, such as an Electron version
#
# Add-ons of the others are in <build folder>/engines/<name>, and are built on request only: target engine-<name>.

set(TESSARO_ENGINES "" CACHE STRING "Further Node.js versions to build for, from build/engines")
set(TESSARO_NODE_HEADERS "" CACHE PATH "Headers of a further engine")

# V8's inline code must be compiled as the engine was: each setting of config.gypi, and its definition.
set(v8_settings
  v8_enable_pointer_compression=V8_COMPRESS_POINTERS
  v8_enable_pointer_compression=V8_31BIT_SMIS_ON_64BIT_ARCH
  v8_enable_31bit_smis_on_64bit_arch=V8_31BIT_SMIS_ON_64BIT_ARCH
  v8_enable_pointer_compression_shared_cage=V8_COMPRESS_POINTERS_IN_SHARED_CAGE
  v8_enable_sandbox=V8_ENABLE_SANDBOX
  v8_enable_external_code_space=V8_EXTERNAL_CODE_SPACE
  v8_enable_map_packing=V8_MAP_PACKING
  v8_enable_conservative_stack_scanning=V8_ENABLE_CONSERVATIVE_STACK_SCANNING
  v8_enable_direct_local=V8_ENABLE_DIRECT_LOCAL)

function(v8_definitions headers result)
  set(found "")
  if(EXISTS ${headers}/config.gypi)
    file(READ ${headers}/config.gypi config)
    foreach(setting IN LISTS v8_settings)
      string(REGEX MATCH "^[^=]+" variable ${setting})
      string(REGEX MATCH "[^=]+$" definition ${setting})
      if(config MATCHES "['\"]${variable}['\"]: *['\"]?(1|true)")
        list(APPEND found ${definition})
      endif()
    endforeach()
    if(V8_COMPRESS_POINTERS IN_LIST found AND NOT V8_COMPRESS_POINTERS_IN_SHARED_CAGE IN_LIST found)
      list(APPEND found V8_COMPRESS_POINTERS_IN_MULTIPLE_CAGES)
    endif()
    list(REMOVE_DUPLICATES found)
  endif()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

# Fails when `headers` are not those of the running Node.js.
function(check_headers_of_own headers)
  execute_process(
    COMMAND node -p "process.versions.modules"
    OUTPUT_VARIABLE abi OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  abi_of(${headers} headers_abi)
  if(NOT headers_abi STREQUAL abi)
    message(FATAL_ERROR
      "The headers in ${headers} are for module version ${headers_abi}, this Node.js has ${abi}. "
      "Install the headers that belong to it.")
  endif()
endfunction()

function(abi_of headers result)
  file(STRINGS ${headers}/node_version.h line REGEX "define NODE_MODULE_VERSION [0-9]+")
  string(REGEX MATCH "[0-9]+" abi "${line}")
  set(${result} ${abi} PARENT_SCOPE)
endfunction()

set(tessaro_engines "")

macro(tessaro_engine name headers folder)
  v8_definitions(${headers} definitions)
  abi_of(${headers} TESSARO_ABI_${name})
  add_library(engine_${name} INTERFACE)
  target_include_directories(engine_${name} SYSTEM INTERFACE ${headers})
  target_compile_definitions(engine_${name} INTERFACE ${definitions})
  set(TESSARO_FOLDER_${name} ${folder})
  file(WRITE ${folder}/abi ${TESSARO_ABI_${name}})
  list(APPEND tessaro_engines ${name})
  add_custom_target(engine-${name})
  message(STATUS "Engine ${name}: module version ${TESSARO_ABI_${name}}, ${headers} ${definitions}")
endmacro()

execute_process(
  COMMAND node -p "require('path').resolve(process.execPath, '../../include/node')"
  OUTPUT_VARIABLE own_headers OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
find_path(NODE_INCLUDE_DIR node_version.h
  HINTS ${own_headers} PATHS /usr/include/node /usr/include/nodejs/src NO_DEFAULT_PATH REQUIRED)
check_headers_of_own(${NODE_INCLUDE_DIR})
tessaro_engine(own ${NODE_INCLUDE_DIR} ${CMAKE_BINARY_DIR})
foreach(version IN LISTS TESSARO_ENGINES)
  tessaro_engine(${version} ${CMAKE_SOURCE_DIR}/build/engines/${version}/include/node
    ${CMAKE_BINARY_DIR}/engines/${version})
endforeach()
if(TESSARO_NODE_HEADERS)
  tessaro_engine(given ${TESSARO_NODE_HEADERS} ${CMAKE_BINARY_DIR}/engines/given)
endif()

# libuv keeps its binary interface within version 1, so its users need not be compiled again. They find its headers in a
# folder without V8's: a file that includes V8 without being compiled for each engine does not compile at all.
add_library(uv_headers INTERFACE)
target_include_directories(uv_headers SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/uv)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/uv)
foreach(header uv.h uv)
  file(CREATE_LINK ${NODE_INCLUDE_DIR}/${header} ${CMAKE_BINARY_DIR}/uv/${header} SYMBOLIC)
endforeach()

# Most of such a file's compilation is the headers' part. For the further engines several are compiled as one, which
# CMake itself offers for C++ only; a file that throws or catches stays a .cc file.
function(tessaro_joined engine result)
  set(joined "")
  foreach(language cc mm)
    set(files ${ARGN})
    list(FILTER files INCLUDE REGEX "\\.${language}$")
    set(number 0)
    while(files)
      list(SUBLIST files 0 8 some)
      list(REMOVE_ITEM files ${some})
      list(TRANSFORM some PREPEND "#include \"")
      list(TRANSFORM some APPEND "\"\n")
      string(JOIN "" text ${some})
      string(MD5 hash "${text}")
      set(file ${CMAKE_BINARY_DIR}/joined/${engine}-${hash}.${language})
      file(CONFIGURE OUTPUT ${file} CONTENT "${text}" @ONLY)
      list(APPEND joined ${file})
    endwhile()
  endforeach()
  set(${result} ${joined} PARENT_SCOPE)
endfunction()

# tessaro_addon(NAME [ENGINES …] SOURCES … [OBJECTS …] [INCLUDES …] [PRECOMPILED …] LIBRARIES …)
#
# A Node.js add-on for each engine: a loadable module without the "lib" prefix, whose engine symbols come from the host
# process. In OBJECTS and LIBRARIES, @engine@ stands for the engine's name.
function(tessaro_addon name)
  cmake_parse_arguments(PARSE_ARGV 1 addon "" "" "ENGINES;SOURCES;OBJECTS;INCLUDES;PRECOMPILED;LIBRARIES")
  if(NOT addon_ENGINES)
    set(addon_ENGINES ${tessaro_engines})
  endif()
  foreach(engine IN LISTS addon_ENGINES)
    string(REPLACE @engine@ ${engine} objects "${addon_OBJECTS}")
    string(REPLACE @engine@ ${engine} libraries "${addon_LIBRARIES}")
    set(target ${name}_${engine})
    add_library(${target} MODULE ${addon_SOURCES} ${objects})
    set_target_properties(${target} PROPERTIES
      PREFIX "" OUTPUT_NAME ${name} SUFFIX ".node" LIBRARY_OUTPUT_DIRECTORY ${TESSARO_FOLDER_${engine}})
    target_include_directories(${target} PRIVATE ${addon_INCLUDES})
    if(addon_PRECOMPILED)
      target_precompile_headers(${target} PRIVATE ${addon_PRECOMPILED})
    endif()
    target_link_libraries(${target} PRIVATE tessaro_options engine_${engine} ${libraries})
    tessaro_hide_symbols(${target})
    if(NOT engine STREQUAL own)
      set_target_properties(${target} PROPERTIES EXCLUDE_FROM_ALL ON)
      add_dependencies(engine-${engine} ${target})
    endif()
  endforeach()
endfunction()

# A program or library that the add-ons expect beside them.
function(tessaro_companion target)
  set_property(GLOBAL APPEND_STRING PROPERTY TESSARO_COMPANIONS "$<TARGET_FILE_NAME:${target}>\n")
  foreach(engine IN LISTS tessaro_engines)
    if(NOT engine STREQUAL own)
      add_dependencies(engine-${engine} ${target})
      add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory ${TESSARO_FOLDER_${engine}}
        COMMAND ${CMAKE_COMMAND} -E create_symlink ../../$<TARGET_FILE_NAME:${target}>
          ${TESSARO_FOLDER_${engine}}/$<TARGET_FILE_NAME:${target}>)
    endif()
  endforeach()
endfunction()

