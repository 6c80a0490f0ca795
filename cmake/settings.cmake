# What holds for every target: language, output folder, warnings, sanitizers, the compiler cache.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

# `q7z` looks for the library beside itself, so all that runs together is built into one folder.
set(Q7Z_BIN_DIR "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${Q7Z_BIN_DIR}")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${Q7Z_BIN_DIR}")

find_program(Q7Z_CCACHE ccache)
mark_as_advanced(Q7Z_CCACHE)
if(Q7Z_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${Q7Z_CCACHE}")
endif()

# A product and a sum stay two roundings everywhere: the same document gives the same bytes on every machine.
add_compile_options(-ffp-contract=off)
add_compile_definitions($<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

if(Q7Z_SANITIZE)
  list(JOIN Q7Z_SANITIZE "," sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${sanitizers})
  if("undefined" IN_LIST Q7Z_SANITIZE)
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

if(Q7Z_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "Q7Z_FUZZ needs clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(Q7Z_COVERAGE)
  add_compile_options(--coverage -O0 -g)
  add_link_options(--coverage)
endif()

# What a source keeps to itself still is its own where several are compiled at once.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-Wno-subobject-linkage)
endif()

# Warnings of everything that ships. GCC 12 sees overlaps in the joining of std::string that are not there, so -Wrestrict is off;
# Clang finds a deprecated helper in that library's std::stable_sort.
add_library(q7z_warnings INTERFACE)
add_library(q7z::warnings ALIAS q7z_warnings)
target_compile_options(q7z_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wsuggest-override -Wextra-semi -Wcast-align -Wformat=2 -Wimplicit-fallthrough -Wno-missing-field-initializers
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op -Wno-restrict>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
  $<$<BOOL:${Q7Z_WERROR}>:-Werror>)

# Tests and benchmarks: tables of literals would drown in casts.
add_library(q7z_test_warnings INTERFACE)
add_library(q7z::test_warnings ALIAS q7z_test_warnings)
target_compile_options(q7z_test_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wsuggest-override -Wno-missing-field-initializers
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>
  $<$<BOOL:${Q7Z_WERROR}>:-Werror>)
