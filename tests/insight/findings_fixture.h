// Controllers that are well, and what is added to them to make findings.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "insight/findings.h"
#include "model/can_sensors.h"
#include "model/dcio_boards.h"
#include "model/document.h"
#include "model/onboard_sensors.h"

inline constexpr auto kCritical = insight::Severity::kCritical;
inline constexpr auto kUnknown = insight::Severity::kUnknown;
inline constexpr auto kWarning = insight::Severity::kWarning;
inline constexpr float kInfinite = std::numeric_limits<float>::infinity();

// A row whose one remark is `outcome`.
insight::Row MakeRow(const std::string& key, const std::string& path = "",
                     insight::Outcome outcome = insight::Outcome::kStored);

// A cycle of `status` with two rows, all of whose sources answered.
insight::Snapshot Healthy(const QtSts::CStatus& status);

std::vector<insight::Finding> Findings(const QtSts::CStatus& status);

std::vector<std::string> Ids(const std::vector<insight::Finding>& findings);

template <class T, class List>
T& Add(List& list) {
  auto* const element = new T;
  list.Add(element);
  return *element;
}

template <class T>
T& AddSensor(QtSts::CStatus& status) {
  T& sensor = Add<T>(status.Sensors);
  sensor.SetConnected(true);
  return sensor;
}

template <>
inline QtSts::COnboardTempSensor& AddSensor(QtSts::CStatus& status) {
  auto& sensor = Add<QtSts::COnboardTempSensor>(status.Sensors);
  sensor.Connected = true;
  return sensor;
}

QtSts::COutput& AddOutput(QtSts::CStatus& status);

QtSts::CInput& AddInput(QtSts::CStatus& status, bool selected, bool signal = false);

QtSts::CCANDcioAndFanRpm& AddBoard(QtSts::CStatus& status);

void AddFans(QtSts::CStatus& status, const std::vector<std::uint16_t>& speeds);

template <class Point>
void AddPoint(QtSts::CStatus& status, bool active) {
  auto* const point = new Point;
  point->Index = 1;
  point->Set(active);
  AddBoard(status).Points.Add(point);
}

QtSts::CCANPsrbSensor& AddSupply(QtSts::CStatus& status);

QtSts::CCANIsolationBoardSensor& AddIsolation(QtSts::CStatus& status);

template <class Device>
Device& AddDevice(QtSts::CStatus& status, std::uint32_t state) {
  auto& device = Add<Device>(status.DCIO.Devices);
  device.State = std::make_unique<std::uint32_t>(state);
  return device;
}

QtSts::CNetworkDevice& AddNetworkDevice(QtSts::CStatus& status);

void SetBrightness(QtSts::CStatus& status, float asked_for, float in_force, std::uint32_t mode);

// A row at `path` whose value became something else.
insight::Row WrongRow(const std::string& key, const std::string& path, insight::Outcome outcome);

void AddSource(insight::Snapshot& snapshot, insight::SourceState state, bool required = true);

void AddNamed(insight::Snapshot& snapshot, const char* id, const char* reason);

void AddCarrier(insight::Snapshot& snapshot, insight::SourceState state, const char* reason);

void AddDisplay(insight::Snapshot& snapshot);
