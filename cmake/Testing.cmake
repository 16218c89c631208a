# status_test(NAME SOURCES file... LIBRARIES target... [SANDBOX])
# makes one GoogleTest program; every test of it is a ctest case of its own, so each runs in a
# fresh process. With SANDBOX the program runs inside a controller in a box. Every program is in the
# locale of its environment.
find_package(GTest REQUIRED)
include(GoogleTest)

function(status_test name)
  cmake_parse_arguments(arg "SANDBOX" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES} ${PROJECT_SOURCE_DIR}/tests/support/program_locale.cpp)
  target_link_libraries(${name} PRIVATE status_options ${arg_LIBRARIES} GTest::gmock)
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
