# Each test has a label that says in which pass of ./test it runs: "plain" is built as the preset dev
# says, "sanitized" with sanitizers and run in a locale with a decimal comma, "both" runs in both. A
# test is sanitized unless sanitizers would make something else of what it looks at. Whatever the
# labels, ./test --long runs all tests in both passes.
#
# status_pass(plain|sanitized|both TARGETS target... [TESTS test...]) labels these tests, and adds
# what has to be built for them to the target plain_pass, sanitized_pass or both.
add_custom_target(plain_pass)
add_custom_target(sanitized_pass)
function(status_pass pass)
  cmake_parse_arguments(arg "" "" "TARGETS;TESTS" ${ARGN})
  foreach(each plain sanitized)
    if(pass STREQUAL each OR pass STREQUAL both)
      add_dependencies(${each}_pass ${arg_TARGETS})
    endif()
  endforeach()
  if(arg_TESTS)
    set_tests_properties(${arg_TESTS} PROPERTIES LABELS ${pass})
  endif()
endfunction()

# status_test(NAME SOURCES file... LIBRARIES target... [SANDBOX] [PASS plain|sanitized|both])
# makes one GoogleTest program; every test of it is a ctest case of its own, so each runs in a
# fresh process. With SANDBOX the program runs inside a controller in a box. Every program is in the
# locale of its environment.
find_package(GTest REQUIRED)
include(CheckLinkerFlag)
include(GoogleTest)

# What is tested with sanitizers is compiled as it ships, by GCC. The tests themselves, and nothing but
# them, are compiled by clang with the same sanitizers, where it is installed: it takes less than half the
# time, and both compilers' sanitizers share a runtime. What is made from here on are tests.
if(STATUS_SANITIZE MATCHES address AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  find_program(STATUS_CLANG clang++)
  if(STATUS_CLANG)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${PROJECT_SOURCE_DIR}/cmake/with-clang ${CMAKE_CXX_COMPILER_LAUNCHER})
  endif()
endif()

# What every test program shares: its locale, and the headers that nearly all of its sources include,
# compiled once for all programs. The position-independence is that of programs, so that they can use
# the precompiled headers. A source includes what it needs all the same: the preset coverage
# precompiles nothing.
add_library(test_base OBJECT
  ${PROJECT_SOURCE_DIR}/tests/support/program_locale.cpp
  ${PROJECT_SOURCE_DIR}/tests/support/sanitizer_options.cpp)
set_target_properties(test_base PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(test_base PRIVATE -fPIE -O0 -g1)
target_link_libraries(test_base PRIVATE status_options GTest::gmock)
target_precompile_headers(test_base PRIVATE
  <gmock/gmock.h>
  <gtest/gtest.h>
  <algorithm>
  <array>
  <cerrno>
  <chrono>
  <cstdio>
  <cstdlib>
  <cstring>
  <filesystem>
  <fstream>
  <functional>
  <limits>
  <map>
  <memory>
  <random>
  <regex>
  <set>
  <sstream>
  <stdexcept>
  <string>
  <string_view>
  <thread>
  <utility>
  <vector>)

# A hundred programs are linked: with gold in half the time.
check_linker_flag(CXX -fuse-ld=gold STATUS_HAS_GOLD)

function(status_test name)
  cmake_parse_arguments(arg "SANDBOX" "PASS" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_precompile_headers(${name} REUSE_FROM test_base)
  target_link_libraries(${name} PRIVATE status_options test_base ${arg_LIBRARIES} GTest::gmock)
  target_link_options(${name} PRIVATE $<$<BOOL:${STATUS_HAS_GOLD}>:-fuse-ld=gold>)
  # What is tested is built as the preset says; the tests themselves are to compile quickly.
  target_compile_options(${name} PRIVATE -O0 -g1)
  if(arg_SANDBOX)
    target_link_libraries(${name} PRIVATE sandbox_main)
  else()
    target_link_libraries(${name} PRIVATE GTest::gmock_main)
  endif()
  if(NOT arg_PASS)
    set(arg_PASS sanitized)
  endif()
  status_pass(${arg_PASS} TARGETS ${name})
  gtest_discover_tests(${name} TEST_PREFIX "${name}." PROPERTIES TIMEOUT 300 SKIP_RETURN_CODE 77
                       LABELS ${arg_PASS}
                       ENVIRONMENT "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
                       DISCOVERY_TIMEOUT 60)
endfunction()
