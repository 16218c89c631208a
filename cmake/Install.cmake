# What is installed, in three components: libraries (to run a host), development (to build one) and
# tools (the command-line host).
include(CMakePackageConfigHelpers)

set(status_libraries statusinsight statuscollector status sqlitedb)

# The public headers: what a host or a consumer of documents names, and what those include.
set(status_public_headers
  collector/key_table.h
  collector/observer.h
  collector/state/codes.h
  collector/state/export.h
  collector/state/observer.h
  collector/state/scratch.h
  collector/state/scratch_list.h
  collector/status_interface.h
  db/cpp_sqlite3.h
  db/export.h
  db/sql_database.h
  handlers/handlers.h
  hardware/rate_limit.h
  hardware/tolmar_hardware.h
  insight/export.h
  insight/findings.h
  insight/limits.h
  insight/outcomes.h
  insight/places.h
  insight/readings.h
  insight/snapshot.h
  model/base_status.h
  model/beacons.h
  model/can_sensors.h
  model/codes.h
  model/common.h
  model/compare.h
  model/dcio.h
  model/dcio_boards.h
  model/document.h
  model/export.h
  model/inputs.h
  model/io_points.h
  model/listing.h
  model/lookup/verify.h
  model/network.h
  model/onboard_sensors.h
  model/outputs.h
  model/owning_list.h
  model/schema.h
  model/sensors.h
  model/text.h
  model/tree.h
  model/xml.h
  sensors/placements.h
  sensors/points.h
  sensors/sensor_keys.h)

set(status_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/statuscollector)
set(status_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/statuscollector)
set(status_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(status_data_dir ${CMAKE_INSTALL_DATADIR}/statuscollector)

# Libraries.
target_compile_features(status INTERFACE cxx_std_20)
target_compile_features(sqlitedb INTERFACE cxx_std_20)
install(TARGETS ${status_libraries} EXPORT statuscollector
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT libraries NAMELINK_COMPONENT development)

# Headers and what finds them.
foreach(header IN LISTS status_public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${status_include_dir}/${folder}
          COMPONENT development)
endforeach()
install(EXPORT statuscollector NAMESPACE statuscollector:: FILE statuscollectorConfig.cmake
        DESTINATION ${status_cmake_dir} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/statuscollectorConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/statuscollectorConfigVersion.cmake
        DESTINATION ${status_cmake_dir} COMPONENT development)

# The files say where they stand, so that the tree may be moved.
file(RELATIVE_PATH status_prefix_from_pkgconfig /${status_pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" status_prefix_from_pkgconfig ${status_prefix_from_pkgconfig})
foreach(library IN LISTS status_libraries)
  configure_file(packaging/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${status_pkgconfig_dir}
          COMPONENT development)
endforeach()

# Reference and examples.
set(development_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/libstatuscollector-dev)
install(FILES docs/document.md docs/library.md docs/rows.md CHANGELOG.md
        DESTINATION ${development_doc_dir} COMPONENT development)
install(DIRECTORY examples DESTINATION ${development_doc_dir} COMPONENT development)
install(FILES docs/status.xsd DESTINATION ${status_data_dir} COMPONENT development)

# The command-line host.
install(TARGETS host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
add_custom_command(OUTPUT statuscollector.1.gz
  COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/statuscollector.1 > statuscollector.1.gz
  DEPENDS packaging/statuscollector.1 VERBATIM)
add_custom_target(manual ALL DEPENDS statuscollector.1.gz)
install(FILES ${PROJECT_BINARY_DIR}/statuscollector.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT tools)
install(FILES packaging/statuscollector.bash
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
        RENAME statuscollector COMPONENT tools)
install(FILES docs/host.md DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/statuscollector-tools
        COMPONENT tools)
