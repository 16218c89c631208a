target_sources(statuscollector PRIVATE
  ${PROJECT_SOURCE_DIR}/sensors/placements.cpp
  ${PROJECT_SOURCE_DIR}/sensors/points.cpp
  ${PROJECT_SOURCE_DIR}/sensors/record_builder.cpp
  ${PROJECT_SOURCE_DIR}/sensors/sensor_keys.cpp)
status_fast_sources(${PROJECT_SOURCE_DIR}/sensors/sensor_keys.cpp)
