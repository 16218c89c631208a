# The parsers are plain functions of text, hidden in the shared library. Tests and fuzzers link them
# from this archive.
add_library(hardware_parsers STATIC
  ${PROJECT_SOURCE_DIR}/hardware/parse_hex.cpp
  ${PROJECT_SOURCE_DIR}/hardware/parse_network.cpp
  ${PROJECT_SOURCE_DIR}/hardware/parse_packages.cpp
  ${PROJECT_SOURCE_DIR}/hardware/parse_registers.cpp
  ${PROJECT_SOURCE_DIR}/hardware/parse_resources.cpp)
status_fast_sources(${PROJECT_SOURCE_DIR}/hardware/parse_packages.cpp)
target_link_libraries(hardware_parsers PRIVATE status_options PUBLIC status)

target_sources(statuscollector PRIVATE
  ${PROJECT_SOURCE_DIR}/hardware/files.cpp
  ${PROJECT_SOURCE_DIR}/hardware/identity.cpp
  ${PROJECT_SOURCE_DIR}/hardware/inputs.cpp
  ${PROJECT_SOURCE_DIR}/hardware/network.cpp
  ${PROJECT_SOURCE_DIR}/hardware/output_port.cpp
  ${PROJECT_SOURCE_DIR}/hardware/rate_limit.cpp
  ${PROJECT_SOURCE_DIR}/hardware/resources.cpp
  ${PROJECT_SOURCE_DIR}/hardware/tolmar_hardware.cpp)
target_link_libraries(statuscollector PRIVATE $<BUILD_INTERFACE:hardware_parsers>)
