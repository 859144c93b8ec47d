# Toolchain: clang for all three languages. CMake wants the Objective-C++ compiler by its full path.
find_program(CMAKE_C_COMPILER clang REQUIRED)
find_program(CMAKE_CXX_COMPILER clang++ REQUIRED)
find_program(CMAKE_OBJCXX_COMPILER clang++ REQUIRED)
