# What is installed, in four components: libraries (to run a host), development (to build one), tools
# (the command-line host) and server (what its command serve runs).
include(CMakePackageConfigHelpers)

set(status_libraries statusinsight statuscollector status sqlitedb)

# The public headers: what a host or a consumer of documents names, and what those include.
set(status_public_headers
  collector/observer.h
  collector/state/export.h
  collector/state/observer.h
  collector/status_interface.h
  db/cpp_sqlite3.h
  db/export.h
  db/sql_database.h
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
  model/copy.h
  model/dcio.h
  model/dcio_boards.h
  model/document.h
  model/export.h
  model/inputs.h
  model/io_points.h
  model/json.h
  model/json_text.h
  model/list_iterator.h
  model/listed_object.h
  model/listing.h
  model/network.h
  model/onboard_sensors.h
  model/outputs.h
  model/owning_list.h
  model/schema.h
  model/sensors.h
  model/text.h
  model/tree.h
  model/xml.h
  statuscollector/statuscollector.h)

# What a cycle works with: exported, so that tests and tools of the controller may use it, but nothing
# that a host needs. Apart in the tree, and on the include path under the same names.
set(status_internal_headers
  collector/key_table.h
  collector/state/codes.h
  collector/state/scratch.h
  collector/state/scratch_list.h
  handlers/handlers.h
  hardware/rate_limit.h
  model/lookup/verify.h
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

# Headers and what finds them. status_install_headers(FOLDER header...)
function(status_install_headers under)
  foreach(header IN LISTS ARGN)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${under}/${folder}
            COMPONENT development)
  endforeach()
endfunction()
status_install_headers(${status_include_dir} ${status_public_headers})
status_install_headers(${status_include_dir}/internals ${status_internal_headers})
install(FILES ${PROJECT_BINARY_DIR}/include/statuscollector/version.h
        DESTINATION ${status_include_dir}/statuscollector COMPONENT development)
target_include_directories(statuscollector INTERFACE
                           $<INSTALL_INTERFACE:${status_include_dir}/internals>)
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

# Where the program and the libraries find the libraries, wherever the tree stands, so that no loader
# has to be set up. Packages, whose libraries the loader finds, take it out.
file(RELATIVE_PATH status_libraries_from_program
     ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(${status_libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(host PROPERTIES INSTALL_RPATH "$ORIGIN/${status_libraries_from_program}")

# The programs that commands run apart.
file(RELATIVE_PATH status_libraries_from_libexec
     ${CMAKE_INSTALL_FULL_LIBEXECDIR}/statuscollector ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(capture_program serve_program PROPERTIES
                      INSTALL_RPATH "$ORIGIN/${status_libraries_from_libexec}")
install(TARGETS serve_program RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/statuscollector
        COMPONENT server)
install(FILES packaging/prometheus/dashboard.json packaging/prometheus/displays-example.yml
        packaging/prometheus/fleet.yml packaging/prometheus/prometheus.yml
        packaging/prometheus/rules.yml DESTINATION ${status_data_dir}/prometheus COMPONENT server)
install(FILES packaging/nginx/statuscollector.conf DESTINATION ${status_data_dir}/nginx
        COMPONENT server)

# Examples and the schema.
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/libstatuscollector-dev
        COMPONENT development)
install(FILES docs/status.xsd DESTINATION ${status_data_dir} COMPONENT development)

# The command-line host, its completion, and all pages, which refer to one another.
install(TARGETS host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(TARGETS capture_program RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/statuscollector COMPONENT tools)
install(FILES ${PROJECT_BINARY_DIR}/host/statuscollector.bash
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
        RENAME statuscollector COMPONENT tools)
install(FILES ${PROJECT_BINARY_DIR}/host/statuscollector.zsh
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions
        RENAME _statuscollector COMPONENT tools)
set(status_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/statuscollector-tools)
install(FILES docs/document.md docs/fleet.md docs/host.md docs/library.md docs/metrics.md
        docs/reliability.md docs/rows.md docs/service.md docs/support.md DESTINATION ${status_doc_dir} COMPONENT tools)

# status_manual_page(SOURCE NAME SECTION SUMMARY [COMPONENT]): a manual page made from a page of docs/.
find_program(STATUS_LOWDOWN lowdown REQUIRED)
function(status_manual_page source name section summary)
  set(component ${ARGN} tools)
  list(GET component 0 component)
  set(page ${name}.${section}.gz)
  add_custom_command(OUTPUT ${page}
    COMMAND ${PROJECT_SOURCE_DIR}/packaging/make-page ${PROJECT_SOURCE_DIR}/docs/${source} ${name}
            ${section} ${PROJECT_VERSION} ${summary} > ${name}.${section}
    COMMAND gzip -9nf ${name}.${section}
    DEPENDS packaging/make-page docs/${source} packaging/debian/changelog VERBATIM)
  install(FILES ${PROJECT_BINARY_DIR}/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
          COMPONENT ${component})
  set_property(GLOBAL APPEND PROPERTY status_manual_pages ${page})
endfunction()
status_manual_page(host.md statuscollector 1 "show the state of an LED display controller")
status_manual_page(library.md libstatuscollector 3 "status of an LED display controller as one document")
status_manual_page(rows.md statuscollector-rows 5 "rows of the status database")
status_manual_page(document.md statuscollector-document 7 "the status document of an LED display controller")
if(STATUS_TESTS)
  status_manual_page(box.md controller-box 1 "run a program in a controller in a box" box)
  status_manual_page(replay.md statuscollector-replay 1 "run the cycles of a capture again" box)
  install(FILES scenarios/README.md DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/statuscollector-box
          COMPONENT box)
endif()
get_property(pages GLOBAL PROPERTY status_manual_pages)
add_custom_target(manual ALL DEPENDS ${pages})
