// What it costs to explain rows, in processor time, beside a plain cycle of the same rows.
#include <algorithm>
#include <ctime>

#include "tests/insight/row_fixture.h"

namespace {

// Sensors with all their rows.
sandbox::Rows Sensors(int count) {
  sandbox::Rows rows;
  for (int i = 0; i < count; ++i) {
    char prefix[32];
    std::snprintf(prefix, sizeof prefix, "Sensor_%06d_", i);
    for (const auto& [attribute, value] :
         {std::pair("Address", "17"), std::pair("Bus", "0"), std::pair("Celsius", "31.5"),
          std::pair("Connected", "true"), std::pair("Location", "Local_CAN"),
          std::pair("NumAttribute", "9"), std::pair("Rev", "2"), std::pair("Spare", "1"),
          std::pair("SyncLossCounter", "0"), std::pair("Type", "CANTemp")}) {
      rows[std::string(prefix) + attribute] = value;
    }
  }
  return rows;
}

// Lists that are not taken, and elements that all stand behind interfaces of their own.
sandbox::Rows Odd(int count) {
  sandbox::Rows rows;
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(100000 + i);
    rows["Sensor_000000_PsrbVin_" + number + "_Volts"] = "230";
    rows["Sensor_" + number + "_DispInterfaceNumber"] = std::to_string(i % 50);
    rows["Sensor_" + number + "_Location"] = "TXR_CAN";
    rows["Sensor_" + number + "_Type"] = "CANDoor";
    rows["Sensor_" + number + "_Zone" + number] = "1";
    rows["TtableDeviceNode_" + number] = "1";
    rows["Unknown" + number] = "1";
    rows["GUID" + number] = "1";
    rows["DCIO_" + std::to_string(i) + "_Type"] = "RunLed";
    rows["DimmingLevel" + number] = "bright";
  }
  return rows;
}

// Boards with two points each.
sandbox::Rows Points(int count) {
  sandbox::Rows rows;
  for (int i = 0; i < count; ++i) {
    const std::string board = "Sensor_" + std::to_string(100000 + i) + "_";
    for (const char* const point : {"Input_00_", "Input_01_"}) {
      rows[board + point + "Index"] = "1";
      rows[board + point + "Label"] = "door";
      rows[board + point + "State"] = "1";
      rows[board + point + "Type"] = "3";
    }
    rows[board + "Type"] = "CANDcio2in1out";
  }
  return rows;
}

// Voltages that wait for the board that takes them all.
sandbox::Rows Voltages(int count) {
  sandbox::Rows rows;
  for (int i = 0; i < 10 * count; ++i) {
    rows["Sensor_00_PsrbVin_" + std::to_string(100000 + i) + "_Volts"] = "230";
  }
  rows["Sensor_01_Type"] = "CANPowerSupplyRedundancyBoard";
  return rows;
}

class RowCost : public ExplainedRows {
 protected:
  struct Cost {
    double Plain;
    double Explained;
  };

  // The least of several cycles of each.
  Cost Measure(const sandbox::Rows& rows) {
    sandbox::SetRows(rows);
    Cost least = {1e9, 1e9};
    for (int i = 0; i < 5; ++i) {
      least.Plain = std::min(least.Plain, Seconds([this] { collector_.QueryDatabase(); }));
      least.Explained = std::min(least.Explained, Seconds([this] { recorder_.RunCycle(); }));
    }
    return least;
  }

 private:
  template <class Run>
  static double Seconds(const Run& run) {
    const std::clock_t begin = std::clock();
    run();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
  }
};

// A row of a point compares the point that it writes, not all that wait.
TEST_F(RowCost, OfThePointsOfBoardsIsNotFarBeyondThatOfSensors) {
  const Cost sensors = Measure(Sensors(1000));
  const Cost points = Measure(Points(1000));
  EXPECT_LT(points.Explained, 6 * sensors.Explained);
}

// Each voltage has the text of the list that it stands in.
TEST_F(RowCost, OfAListInBytesGrowsWithItsRows) {
  Explain(Voltages(1000));
  std::size_t bytes = 0;
  for (const insight::Row& row : snapshot_->Rows) {
    bytes += row.After.size();
  }
  EXPECT_THAT(RowOf("Sensor_00_PsrbVin_100000_Volts").After, testing::EndsWith("230 ..."));
  EXPECT_LT(bytes, 1100 * snapshot_->Rows.size());
}

// What grew with the square would cost a hundred times as much.
TEST_F(RowCost, GrowsWithTheRowsWhateverTheyAre) {
  for (const auto make : {&Sensors, &Odd, &Voltages}) {
    const Cost few = Measure(make(100));
    const Cost many = Measure(make(1000));
    EXPECT_LT(many.Explained, 30 * few.Explained);
  }
}

}  // namespace
