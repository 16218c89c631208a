#include "tests/sensors/row_maker.h"

#include <algorithm>
#include <iterator>

#include "db/sql_database.h"
#include "sensors/record_builder.h"

namespace {

// What the status database takes, in bytes.
constexpr std::size_t kLongestKey = CSQLdatabase::kMaxAddressBytes;
constexpr std::size_t kLongestValue = CSQLdatabase::kMaxValueBytes;

// In braces the parts are made from left to right, so that a seed always gives the same rows.
std::string Join(std::initializer_list<std::string> parts) {
  std::string joined;
  for (const std::string& part : parts) {
    joined += part;
  }
  return joined;
}

char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

Rows RowMaker::Make() {
  Rows rows;
  const std::size_t count = 50 + Below(150);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string attribute = AttributeName();
    const std::string value = attribute == "Type" && Below(4) != 0 ? TypeText() : Value();
    const std::string key = Join(
        {"Sensor_", Number(), Pick({"_", "_", "_", "_", "_", "_", "_", "__", "", " "}), attribute});
    rows[key.substr(0, kLongestKey)] = value;
  }
  return rows;
}

std::string RowMaker::Pick(std::initializer_list<const char*> texts) {
  return std::data(texts)[Below(texts.size())];
}

// Any bytes but NUL, which ends a text.
std::string RowMaker::Bytes(std::size_t longest) {
  std::string bytes(Below(longest + 1), ' ');
  for (char& byte : bytes) {
    byte = static_cast<char>(1 + Below(255));
  }
  return bytes;
}

std::string RowMaker::Any(std::span<const rows::Attribute> attributes) {
  return std::string(attributes[Below(attributes.size())].Name);
}

// As it is, in small or capital letters, cut short or with something appended.
std::string RowMaker::Spelt(std::string name) {
  switch (Below(8)) {
    case 0:
      std::ranges::transform(name, name.begin(), ToLower);
      return name;
    case 1:
      std::ranges::transform(name, name.begin(), ToUpper);
      return name;
    case 2:
      return name.substr(0, Below(name.size() + 1));
    case 3:
      return name + Pick({"_", "x", " ", "_1"});
    default:
      return name;
  }
}

// Mostly few sensors, so that their rows meet.
std::string RowMaker::Number() {
  if (Below(4) != 0) {
    return std::to_string(Below(10));
  }
  return Pick({"0", "00", "07", "10", "11", "12", "4294967295", "4294967296", "+5", "-5", "*1", "",
               "x", " 3", "99999999999999999999", "2x"});
}

std::string RowMaker::PointName() {
  return Join({Spelt(Any(sensors::PointFamilies())), Pick({"_", "_", "_", "", "s_"}),
               Below(3) == 0 ? Pick({"-1", "23", "24", "11", "12", "", "4294967297", "x"})
                             : std::to_string(Below(4)),
               Pick({"_", "_", "_", ""}),
               Pick({"Type", "Type", "Index", "Label", "State", "type", ""})});
}

std::string RowMaker::AttributeName() {
  switch (Below(8)) {
    case 0:
    case 1:
      return "Type";
    case 2:
      return Pick({"Location", "DispInterfaceNumber", "DispInterfaceAddress"});
    case 3:
      return PointName();
    case 4:
      return Join(
          {Spelt("Fan_"), std::to_string(Below(300)), Pick({"_Rpm", "_Rpm", "_RPM", "", "_"})});
    case 5:
      return Join({Spelt(Any(sensors::AttributeFamilies())), Pick({"", "", "0_Volts", "_volts"})});
    case 6:
      return Spelt(Any(sensors::ExactAttributes()));
    default:
      return Below(4) == 0 ? Bytes(kLongestKey) : Any(sensors::ExactAttributes());
  }
}

std::string RowMaker::TypeText() {
  const auto kinds = sensors::SensorKinds();
  return kinds[Below(kinds.size())].Text;
}

std::string RowMaker::Value() {
  switch (Below(6)) {
    case 0:
      return TypeText();
    case 1:
      return Pick({"Local_CAN", "TXR_CAN", "SCBII_CAN", "Local_I2C", "local_can", "true", "True",
                   "locked_time", "locked_not_locked", "CANTemp ", "cantemp"});
    case 2:
      return Pick({"-1", "255", "256", "65535", "65536", "16384", "4294967295", "4294967296",
                   "2147483648", "-2147483649", "9223372036854775807", "9223372036854775808",
                   "-9223372036854775809", "18446744073709551616"});
    case 3:
      return Pick({"", "nan", "inf", "-inf", "1e400", "-1e400", "1e-400", "0x1p3", "44.9", "21,5",
                   ".5", "+", "-", "  7"});
    case 4:
      return Bytes(Below(10) == 0 ? kLongestValue : 12);
    default:
      return std::to_string(Below(30));
  }
}
