# Headers of the Node.js that will load the add-on: beside its binary, or where the system keeps them. They must
# be of the same ABI as that binary, because the module talks to V8 directly.
execute_process(
  COMMAND node -p "require('path').resolve(process.execPath, '../../include/node')"
  OUTPUT_VARIABLE node_own_headers OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND node -p "process.versions.modules"
  OUTPUT_VARIABLE node_abi OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

find_path(NODE_INCLUDE_DIR node_version.h
  HINTS ${node_own_headers} PATHS /usr/include/node /usr/include/nodejs/src NO_DEFAULT_PATH REQUIRED)

file(STRINGS ${NODE_INCLUDE_DIR}/node_version.h node_abi_line REGEX "define NODE_MODULE_VERSION [0-9]+")
if(NOT node_abi_line MATCHES " ${node_abi}$")
  message(FATAL_ERROR
    "The headers in ${NODE_INCLUDE_DIR} are not those of this Node.js (module version ${node_abi}). "
    "Install the headers that belong to it.")
endif()

add_library(node_headers INTERFACE)
target_include_directories(node_headers SYSTEM INTERFACE ${NODE_INCLUDE_DIR})
