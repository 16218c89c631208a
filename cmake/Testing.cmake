# status_test(NAME SOURCES file... LIBRARIES target... [SANDBOX])
# makes one GoogleTest program; every test of it is a ctest case of its own, so each runs in a
# fresh process. With SANDBOX the program runs inside a controller in a box. Every program is in the
# locale of its environment.
find_package(GTest REQUIRED)
include(GoogleTest)

# What every test program shares: its locale, and the headers that nearly all of its sources include,
# compiled once for all programs. The position-independence is that of programs, so that they can use
# the precompiled headers. A source includes what it needs all the same: the preset coverage
# precompiles nothing.
add_library(test_base OBJECT ${PROJECT_SOURCE_DIR}/tests/support/program_locale.cpp)
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

function(status_test name)
  cmake_parse_arguments(arg "SANDBOX" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_precompile_headers(${name} REUSE_FROM test_base)
  target_link_libraries(${name} PRIVATE status_options test_base ${arg_LIBRARIES} GTest::gmock)
  # What is tested is built as the preset says; the tests themselves are to compile quickly.
  target_compile_options(${name} PRIVATE -O0 -g1)
  if(arg_SANDBOX)
    target_link_libraries(${name} PRIVATE sandbox_main)
  else()
    target_link_libraries(${name} PRIVATE GTest::gmock_main)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${name}." PROPERTIES TIMEOUT 120 SKIP_RETURN_CODE 77
                       ENVIRONMENT "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp"
                       DISCOVERY_TIMEOUT 60)
endfunction()
