# q7z_add_test(NAME [LOADS_MODULE] SOURCES file... [LIBS target...])
#
# One GoogleTest executable for a folder of tests, every case of it a case of ctest under the prefix that follows `q7z_test_`.
# The tests find what they need through these definitions, all of them folders without a slash at the end:
#   Q7Z_TEST_SOURCE_DIR  the root of the sources (tests/data, samples)
#   Q7Z_TEST_BIN_DIR     where q7z, io_gltf.so and resources/ were built
#   Q7Z_TEST_TEMP_DIR    where a test may write; it makes a folder of its own there
# LOADS_MODULE: the module and the program, which are loaded and run and not linked, are built before.

# A run across: an executable is one case, since each start of the emulator takes a while.

if(CMAKE_CROSSCOMPILING)
  add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

function(q7z_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "LOADS_MODULE" "" "SOURCES;LIBS")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gmock GTest::gtest GTest::gtest_main q7z::test_warnings)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  target_compile_definitions(${name} PRIVATE
    Q7Z_TEST_SOURCE_DIR="${PROJECT_SOURCE_DIR}" Q7Z_TEST_BIN_DIR="${Q7Z_BIN_DIR}"
    Q7Z_TEST_TEMP_DIR="${PROJECT_BINARY_DIR}/tests/temp")
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/tests/temp")
  if(arg_LOADS_MODULE)
    add_dependencies(${name} io_gltf q7z_app)
  endif()
  string(REGEX REPLACE "^q7z_test_" "" prefix "${name}")
  if(CMAKE_CROSSCOMPILING)
    target_compile_options(${name} PRIVATE -O1)  # compiling takes longer than the tests
    add_test(NAME ${prefix} COMMAND ${name} WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
    set_tests_properties(${prefix} PROPERTIES FIXTURES_REQUIRED wine TIMEOUT 300)
    return()
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${prefix}." NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}/tests" PROPERTIES TIMEOUT 120 LABELS "${prefix}")
endfunction()

# q7z_add_fuzzer(NAME SOURCES file... [LIBS target...])
#
# A libFuzzer executable, kept with the others in one folder, from which tests/fuzz/run takes them.
# NAME begins with `q7z_fuzz_`; the rest names its folder of seeds, tests/fuzz/seeds/<rest>.
function(q7z_add_fuzzer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${arg_LIBS} q7z::test_warnings)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
  target_compile_definitions(${name} PRIVATE Q7Z_TEST_BIN_DIR="${Q7Z_BIN_DIR}")
  add_dependencies(${name} io_gltf)
endfunction()
