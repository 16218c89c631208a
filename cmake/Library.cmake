# What every target of this project is built with.
add_library(status_options INTERFACE)
target_include_directories(status_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
target_compile_options(status_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(STATUS_WARNINGS_AS_ERRORS)
  target_compile_options(status_options INTERFACE -Werror)
endif()
if(STATUS_SANITIZE)
  target_compile_options(status_options INTERFACE -fsanitize=${STATUS_SANITIZE}
                                                  -fno-sanitize-recover=all)
  target_link_options(status_options INTERFACE -fsanitize=${STATUS_SANITIZE})
  # Each check has a description, with pointers. A program whose address is known has them right from the
  # beginning; else they are megabytes to write at each start, which takes half of its time.
  target_link_options(status_options INTERFACE
                      $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()

# The headers that most sources include, compiled once. A source includes what it needs all the same, which
# tests/includes checks: releases precompile nothing.
#
# status_precompiled(TARGET [QUICK]) has a target use them: QUICK, when it is one of those below.
function(status_standard_headers name)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/no_source.cpp CONTENT "")
  add_library(${name} OBJECT ${PROJECT_BINARY_DIR}/no_source.cpp)
  target_link_libraries(${name} PRIVATE status_options)
  target_precompile_headers(${name} PRIVATE
    <algorithm>
    <array>
    <chrono>
    <cstring>
    <functional>
    <map>
    <memory>
    <optional>
    <span>
    <stdexcept>
    <string>
    <string_view>
    <system_error>
    <unordered_map>
    <utility>
    <vector>)
endfunction()
if(STATUS_PRECOMPILE)
  status_standard_headers(standard_headers)
  set(status_headers_of_quick standard_headers)
  if(STATUS_SANITIZE)
    set(status_headers_of_quick standard_headers_quick)
    status_standard_headers(standard_headers_quick)
    target_compile_options(standard_headers_quick PRIVATE -O0)
  endif()
endif()
function(status_precompiled target)
  if(STATUS_PRECOMPILE)
    set(headers standard_headers)
    if("QUICK" IN_LIST ARGN)
      set(headers ${status_headers_of_quick})
    endif()
    target_precompile_headers(${target} REUSE_FROM ${headers})
    # GCC 12 then takes what std::string does for its caller's, and warns.
    target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
  endif()
endfunction()

# These targets are compiled in less time: with sanitizers without optimisation, since what they do in
# tests takes little; else with debug information of functions and lines alone. Shared libraries keep that
# of their types, which the check of the binary interface reads.
function(status_quick_to_compile)
  foreach(target ${ARGN})
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "EXECUTABLE")
      status_precompiled(${target} QUICK)
    endif()
    if(STATUS_SANITIZE)
      target_compile_options(${target} PRIVATE -O0)
    elseif(NOT type STREQUAL "SHARED_LIBRARY")
      target_compile_options(${target} PRIVATE $<$<CONFIG:Debug>:-g1>)
    endif()
  endforeach()
endfunction()

# Tables of pointers need a relocation for each, of 24 bytes, or of a bit where the linker packs them.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs STATUS_LINKER_PACKS)

# Releases are built for size; these sources of TARGET, which every row or megabytes pass through, for
# speed.
function(status_fast_sources target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target}
                              PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
endfunction()

# Instantiations of the standard library's templates are visible whatever the compiler's options; this
# keeps them in.
set(status_hidden_symbols _ZSt* _ZNSt* _ZNKSt* _ZZNSt* _ZTISt* _ZTSSt* _ZTVSt*)

# status_shared_library(NAME [FEW_THROW] [QUICK] SOURCES file... [HIDE symbol...] [SHARED_DATA symbol...]) makes
# one of the shipped libraries. It exports what its sources export by name, less the mangled symbols
# (globs) under HIDE.
# FEW_THROW: exceptions pass through few of its functions. Only these get a table of how they are left,
# which makes such a library smaller.
# QUICK: it is one of those that are quick to compile.
# SHARED_DATA: the library's own references to what it exports are bound when it is linked, which makes
# it smaller and quicker to load, but for those to these symbols: data of which a program may hold the
# one copy.
function(status_shared_library name)
  cmake_parse_arguments(arg "FEW_THROW;QUICK" "" "SOURCES;HIDE;SHARED_DATA" ${ARGN})
  add_library(${name} SHARED ${arg_SOURCES})
  if(arg_QUICK)
    status_quick_to_compile(${name})
  else()
    status_precompiled(${name})
  endif()
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
  set(hidden ${status_hidden_symbols} ${arg_HIDE})
  list(JOIN hidden "; " hidden)
  file(CONFIGURE OUTPUT ${map} CONTENT "{ local: @hidden@; };\n" @ONLY)
  target_link_options(${name} PRIVATE -Wl,--version-script=${map})
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${map})
  if(arg_SHARED_DATA AND NOT STATUS_SANITIZE)  # which compare type information by its address
    set(list ${CMAKE_CURRENT_BINARY_DIR}/${name}.list)
    list(JOIN arg_SHARED_DATA "; " data)
    file(CONFIGURE OUTPUT ${list} CONTENT "{ @data@; };\n" @ONLY)
    target_link_options(${name} PRIVATE -Wl,--dynamic-list=${list})
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${list})
  endif()
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:status_options>)
  if(arg_FEW_THROW)
    target_compile_options(${name} PRIVATE
      "$<$<CONFIG:Release>:-fno-asynchronous-unwind-tables;-fno-dwarf2-cfi-asm>")
  endif()
  set(installed_headers ${CMAKE_INSTALL_INCLUDEDIR}/statuscollector)
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                               $<INSTALL_INTERFACE:${installed_headers}>)
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION}
                                           SOVERSION ${PROJECT_VERSION_MAJOR})
  if(STATUS_LINKER_PACKS)
    target_link_options(${name} PRIVATE -Wl,-z,pack-relative-relocs)
  endif()
  if(NOT STATUS_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,--no-undefined -Wl,--as-needed)
  endif()
endfunction()
