#include "model/lookup/verify.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "collector/state/scratch.h"
#include "tests/collector/scratch_variables.h"

namespace {

class Verify : public testing::Test {
 protected:
  Verify() { ClearScratch(); }
  ~Verify() override { ClearScratch(); }

  int DisplayInterface(std::uint32_t attributes, std::uint16_t address, AttachmentType type) {
    u32_DispInterfaceNumAttribute = attributes;
    u16_DispInterfaceAddress = address;
    return Status_VerifyDisplayInterface(&status_, 0, type);
  }

  // The display interfaces of an output 0, which is made when there is none.
  QtSts::CDisplayInterfaceList& DisplayInterfaces() {
    Status_VerifyOutput(&status_, 0);
    return status_.Outputs[0]->DisplayInterfaces;
  }

  QtSts::CStatus status_;
};

TEST_F(Verify, AppendsOneCompositorHoweverFarThePosition) {
  EXPECT_EQ(Status_VerifyCompositor(&status_, 5), 0);
  EXPECT_EQ(status_.Compositors.Count(), 1U);
  EXPECT_NE(status_.Compositors[0], nullptr);
  EXPECT_EQ(Status_VerifyCompositor(&status_, 5), 0);
  EXPECT_EQ(status_.Compositors.Count(), 2U);
}

TEST_F(Verify, LeavesACompositorAloneThatIsThere) {
  Status_VerifyCompositor(&status_, 0);
  status_.Compositors[0]->State = 7;
  EXPECT_EQ(Status_VerifyCompositor(&status_, 0), 0);
  ASSERT_EQ(status_.Compositors.Count(), 1U);
  EXPECT_EQ(status_.Compositors[0]->State, 7);
}

TEST_F(Verify, TakesANegativePositionAsBeyondTheEnd) {
  Status_VerifyCompositor(&status_, 0);
  EXPECT_EQ(Status_VerifyCompositor(&status_, -1), 0);
  EXPECT_EQ(status_.Compositors.Count(), 2U);
}

TEST_F(Verify, AppendsOneOutputWithoutStoringThePosition) {
  EXPECT_EQ(Status_VerifyOutput(&status_, 3), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_NE(dynamic_cast<QtSts::CTravex6Output*>(status_.Outputs[0]), nullptr);
  EXPECT_EQ(status_.Outputs[0]->Index, 0U);
  status_.Outputs[0]->StatusFlags = 4;
  EXPECT_EQ(Status_VerifyOutput(&status_, 0), 0);
  ASSERT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->StatusFlags, 4U);
}

TEST_F(Verify, FindsAnInputByItsType) {
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kDigitalInput), 0);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kDigitalInput), 0);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kPlayerInput), 1);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kAnalogInput), 2);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kDigitalInput), 0);
  ASSERT_EQ(status_.Inputs.Count(), 3U);
  EXPECT_NE(dynamic_cast<QtSts::CDigitalInput*>(status_.Inputs[0]), nullptr);
  EXPECT_NE(dynamic_cast<QtSts::CPlayerInput*>(status_.Inputs[1]), nullptr);
  EXPECT_NE(dynamic_cast<QtSts::CAnalogInput*>(status_.Inputs[2]), nullptr);
  for (unsigned int position = 0; position < 3; ++position) {
    EXPECT_EQ(status_.Inputs[position]->Index, position);
  }
}

TEST_F(Verify, FindsTheFirstInputOfItsType) {
  status_.Inputs.Add(new QtSts::CPlayerInput);
  status_.Inputs.Add(new QtSts::CDigitalInput);
  status_.Inputs.Add(new QtSts::CDigitalInput);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kDigitalInput), 1);
  EXPECT_EQ(status_.Inputs.Count(), 3U);
}

TEST_F(Verify, AppendsNoInputOfAnUnknownTypeAndReturnsTheCount) {
  EXPECT_EQ(Status_VerifyInput(&status_, static_cast<QtSts::InputType>(7)), 0);
  Status_VerifyInput(&status_, QtSts::kPlayerInput);
  EXPECT_EQ(Status_VerifyInput(&status_, static_cast<QtSts::InputType>(7)), 1);
  EXPECT_EQ(Status_VerifyInput(&status_, static_cast<QtSts::InputType>(4294967295U)), 1);
  EXPECT_EQ(status_.Inputs.Count(), 1U);
  EXPECT_EQ(status_.Inputs[1], nullptr);
}

// The search used to go on after a null pointer, which only a host can have put there.
TEST_F(Verify, EndsItsSearchAtAMissingElementAndAppends) {
  status_.Inputs.Add(new QtSts::CDigitalInput);
  status_.Inputs.Add(nullptr);
  status_.Inputs.Add(new QtSts::CPlayerInput);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kDigitalInput), 0);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kPlayerInput), 3);
  EXPECT_EQ(Status_VerifyInput(&status_, QtSts::kPlayerInput), 4);
  ASSERT_EQ(status_.Inputs.Count(), 5U);
  EXPECT_EQ(status_.Inputs[4]->Index, 4U);

  status_.Network.Devices.Add(nullptr);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 1);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 2);
  ASSERT_EQ(status_.Network.Devices.Count(), 3U);
  EXPECT_EQ(status_.Network.Devices[2]->Index, 2U);

  DisplayInterfaces().Add(nullptr);
  EXPECT_EQ(DisplayInterface(7, 1, kRouterCan), 1);
  EXPECT_EQ(DisplayInterface(7, 1, kRouterCan), 2);
  EXPECT_EQ(DisplayInterface(7, 1, kLocalCan), 3) << "nothing is made of this attachment";
  EXPECT_EQ(DisplayInterfaces().Count(), 3U);
}

TEST_F(Verify, MakesANetworkDeviceWithItsDefaults) {
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 0);
  ASSERT_EQ(status_.Network.Devices.Count(), 1U);
  const QtSts::CNetworkDevice& device = *status_.Network.Devices[0];
  EXPECT_EQ(device.Index, 0U);
  EXPECT_EQ(device.Name, "eth0");
  EXPECT_EQ(device.IPv6Address, "::1/128");
  EXPECT_EQ(device.IPv4Address, "0.0.0.0");
  EXPECT_EQ(device.Gateway, "0.0.0.0");
  EXPECT_EQ(device.Netmask, "255.255.255.0");
  EXPECT_EQ(device.SpareText, "");
  EXPECT_EQ(device.MACAddress, "");
  EXPECT_EQ(device.Statistics.Number, 0);
  EXPECT_EQ(device.Statistics.First, 0);
  EXPECT_EQ(device.Statistics.Second, 0);
}

TEST_F(Verify, FindsANetworkDeviceByItsExactName) {
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 0);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 0);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "ETH0"), 1);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth"), 2);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth01"), 3);
  EXPECT_EQ(Status_VerifyNetwork(&status_, "ETH0"), 1);
  ASSERT_EQ(status_.Network.Devices.Count(), 4U);
  EXPECT_EQ(status_.Network.Devices[3]->Index, 3U);
}

TEST_F(Verify, MakesANetworkDeviceWithoutANameForNull) {
  EXPECT_EQ(Status_VerifyNetwork(&status_, nullptr), 0);
  ASSERT_EQ(status_.Network.Devices.Count(), 1U);
  EXPECT_EQ(status_.Network.Devices[0]->Name, "");
  EXPECT_EQ(Status_VerifyNetwork(&status_, "eth0"), 1);
}

TEST_F(Verify, AppendsAStatisticWithItsNumber) {
  Status_VerifyOutput(&status_, 0);
  const QtSts::CStatList& statistics = status_.Outputs[0]->Statistics;
  EXPECT_EQ(Status_VerifyOutputStats(&status_, 0, 5), 0);
  ASSERT_EQ(statistics.Count(), 1U);
  EXPECT_EQ(statistics[0]->Number, 5);
  EXPECT_EQ(statistics[0]->First, 0);
  EXPECT_EQ(statistics[0]->Second, 0);
  statistics[0]->First = 9;
  EXPECT_EQ(Status_VerifyOutputStats(&status_, 0, 0), 0);
  ASSERT_EQ(statistics.Count(), 1U);
  EXPECT_EQ(statistics[0]->Number, 5);
  EXPECT_EQ(statistics[0]->First, 9);
}

TEST_F(Verify, NeverCreatesAnOutputForItsStatisticsOrDisplayInterfaces) {
  EXPECT_EQ(Status_VerifyOutputStats(&status_, 0, 0), 0);
  EXPECT_EQ(Status_VerifyDisplayInterface(&status_, 0, kRouterCan), 0);
  Status_VerifyOutput(&status_, 0);
  EXPECT_EQ(Status_VerifyOutputStats(&status_, 1, 0), 0);
  EXPECT_EQ(Status_VerifyDisplayInterface(&status_, 1, kRouterCan), 0);
  EXPECT_EQ(status_.Outputs.Count(), 1U);
  EXPECT_EQ(status_.Outputs[0]->Statistics.Count(), 0U);
  EXPECT_EQ(DisplayInterfaces().Count(), 0U);
}

TEST_F(Verify, FindsADcioDeviceByItsPosition) {
  u32_DCIO_SensorNumber = 0;
  EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
  EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 1U);
}

TEST_F(Verify, AppendsADcioDeviceTwiceWhosePositionIsBeyondTheEnd) {
  u32_DCIO_SensorNumber = 4;
  EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 1U);
  EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 2U);
}

template <class T>
bool IsExactly(const QtSts::CDCIODevice* device) {
  return typeid(*device) == typeid(T);
}

TEST_F(Verify, MakesTheDcioDeviceThatTheScratchStateDescribes) {
  constexpr struct {
    DcioType Type;
    bool (*IsClass)(const QtSts::CDCIODevice*);
    bool ReportsState;
  } kRows[] = {
      {kDoorSwitch, &IsExactly<QtSts::CDoorSwitch>, true},
      {kPowerMonitor, &IsExactly<QtSts::CPowerMonitor>, true},
      {kRunLed, &IsExactly<QtSts::CRunLED>, false},
      {kGenericInput, &IsExactly<QtSts::CGenericInput>, true},
      {kGenericOutput, &IsExactly<QtSts::CGenericOutput>, false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.Type);
    status_.DCIO.Devices.Clear();
    st_DCIO_Type = row.Type;
    u32_DCIO_NumAttr = 5;
    u32_DCIO_State = 7;
    u32_DCIO_ErrCntr = 9;
    u32_DCIO_Address = 112;
    EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
    ASSERT_EQ(status_.DCIO.Devices.Count(), 1U);
    const QtSts::CDCIODevice* const device = status_.DCIO.Devices[0];
    EXPECT_TRUE(row.IsClass(device));
    EXPECT_EQ(device->NumberOfAttributes, 5U);
    ASSERT_NE(device->Address, nullptr);
    EXPECT_EQ(*device->Address, 112U);
    ASSERT_EQ(device->State != nullptr, row.ReportsState);
    ASSERT_EQ(device->ErrorCounter != nullptr, row.ReportsState);
    if (row.ReportsState) {
      EXPECT_EQ(*device->State, 1U) << "deliberately a flag";
      EXPECT_EQ(*device->ErrorCounter, 9U);
    }
    EXPECT_EQ(u32_DCIO_State, 7U) << "the scratch state is not consumed";
  }
}

TEST_F(Verify, MakesADcioStateOfZeroAndOne) {
  u32_DCIO_State = 0;
  Status_VerifyDCIO(&status_);
  u32_DCIO_SensorNumber = 1;
  u32_DCIO_State = 1;
  Status_VerifyDCIO(&status_);
  ASSERT_EQ(status_.DCIO.Devices.Count(), 2U);
  EXPECT_EQ(*status_.DCIO.Devices[0]->State, 0U);
  EXPECT_EQ(*status_.DCIO.Devices[1]->State, 1U);
}

TEST_F(Verify, MakesNoDcioDeviceOfAnUnknownType) {
  for (const std::uint32_t type : {5U, 99U, 4294967295U}) {
    st_DCIO_Type = static_cast<DcioType>(type);
    EXPECT_EQ(Status_VerifyDCIO(&status_), 0);
    EXPECT_EQ(status_.DCIO.Devices.Count(), 0U) << type;
  }
}

TEST_F(Verify, FindsADisplayInterfaceByTheAttributeCountInTheScratchState) {
  DisplayInterfaces();
  EXPECT_EQ(DisplayInterface(3, 0x11, kRouterCan), 0);
  EXPECT_EQ(DisplayInterface(3, 0x22, kControlBoardCan), 0) << "not keyed by class";
  EXPECT_EQ(DisplayInterface(4, 0x11, kControlBoardCan), 1) << "not keyed by address";
  EXPECT_EQ(DisplayInterface(3, 0x33, kRouterCan), 0);
  EXPECT_EQ(DisplayInterface(4, 0x33, kRouterCan), 1);
  ASSERT_EQ(DisplayInterfaces().Count(), 2U);
  EXPECT_EQ(*DisplayInterfaces()[0]->Address, 0x11) << "an existing interface is not updated";
  EXPECT_NE(dynamic_cast<QtSts::CTravexRouterDisplayInterface*>(DisplayInterfaces()[0]), nullptr);
  EXPECT_NE(dynamic_cast<QtSts::CSentrelControlBoardDisplayInterface*>(DisplayInterfaces()[1]),
            nullptr);
  EXPECT_EQ(DisplayInterfaces()[1]->NumberOfAttributes, 4U);
}

TEST_F(Verify, GivesARouterNoAddressForTheAbsentMarkButAControlBoardIt) {
  DisplayInterfaces();
  DisplayInterface(1, 0x4000, kRouterCan);
  DisplayInterface(2, 0x3FFF, kRouterCan);
  DisplayInterface(3, 0, kRouterCan);
  DisplayInterface(4, 0x4000, kControlBoardCan);
  ASSERT_EQ(DisplayInterfaces().Count(), 4U);
  EXPECT_EQ(DisplayInterfaces()[0]->Address, nullptr);
  EXPECT_EQ(*DisplayInterfaces()[1]->Address, 0x3FFF);
  EXPECT_EQ(*DisplayInterfaces()[2]->Address, 0);
  EXPECT_EQ(*DisplayInterfaces()[3]->Address, 0x4000);
}

TEST_F(Verify, AppendsNoDisplayInterfaceOfOtherAttachmentsAndReturnsTheCount) {
  DisplayInterfaces();
  for (const std::uint32_t type : {0U, 3U, 4U, 4294967295U}) {
    EXPECT_EQ(DisplayInterface(9, 1, static_cast<AttachmentType>(type)), 0) << type;
  }
  DisplayInterface(1, 1, kRouterCan);
  EXPECT_EQ(DisplayInterface(9, 1, kLocalCan), 1);
  EXPECT_EQ(DisplayInterface(9, 1, kLocalI2c), 1);
  EXPECT_EQ(DisplayInterfaces().Count(), 1U);
}

TEST_F(Verify, MakesAControlBoardWithItsOwnOpenEndedPoints) {
  DisplayInterfaces();
  DisplayInterface(1, 1, kControlBoardCan);
  auto* const board =
      dynamic_cast<QtSts::CSentrelControlBoardDisplayInterface*>(DisplayInterfaces()[0]);
  ASSERT_NE(board, nullptr);
  EXPECT_TRUE(board->Inputs->OpenEnded);
  EXPECT_TRUE(board->Outputs->OpenEnded);
  EXPECT_EQ(board->FlagByte, 1);
}

std::vector<std::string> g_gone;

// An element that notes when it goes.
template <class T>
class Noted : public T {
 public:
  explicit Noted(const char* name) : name_(name) {}
  ~Noted() override { g_gone.emplace_back(name_); }

 private:
  const char* name_;
};

TEST_F(Verify, ClearsTheSixListsInTheirOrderAndNotTheNameServers) {
  status_.Sensors.Add(new Noted<QtSts::CSensor>("sensor"));
  status_.DCIO.Devices.Add(new Noted<QtSts::CRunLED>("DCIO"));
  status_.Network.Devices.Add(new Noted<QtSts::CNetworkDevice>("network"));
  status_.Network.DNS.Addresses.Add(new Noted<QtSts::CAddress>("name server"));
  status_.Inputs.Add(new Noted<QtSts::CPlayerInput>("input"));
  status_.Outputs.Add(new Noted<QtSts::CTravex6Output>("output"));
  status_.Compositors.Add(new Noted<QtSts::CCompositor>("compositor"));
  g_gone.clear();
  Status_ClearLists(&status_);
  EXPECT_THAT(g_gone,
              testing::ElementsAre("compositor", "output", "input", "network", "DCIO", "sensor"));
  EXPECT_EQ(status_.Compositors.Count(), 0U);
  EXPECT_EQ(status_.Outputs.Count(), 0U);
  EXPECT_EQ(status_.Inputs.Count(), 0U);
  EXPECT_EQ(status_.Network.Devices.Count(), 0U);
  EXPECT_EQ(status_.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status_.Sensors.Count(), 0U);
  EXPECT_EQ(status_.Network.DNS.Addresses.Count(), 1U);
}

}  // namespace
