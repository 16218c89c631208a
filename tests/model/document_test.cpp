#include "model/document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <type_traits>
#include <vector>

#include "tests/model/slot.h"
#include "tests/support/interposed/allocations.h"

namespace {

using namespace QtSts;  // NOLINT(google-build-using-namespace): this file is about its classes

TEST(Document, StartsWithItsInitialValues) {
  const CStatus status;
  EXPECT_EQ(status.Sensors.Count(), 0U);
  EXPECT_EQ(status.Network.DNS.Addresses.Count(), 0U);
  EXPECT_EQ(status.Network.Devices.Count(), 0U);
  EXPECT_EQ(status.Network.SpareWord, 0U);
  EXPECT_EQ(status.DCIO.Devices.Count(), 0U);
  EXPECT_EQ(status.Compositors.Count(), 0U);
  EXPECT_EQ(status.Inputs.Count(), 0U);
  EXPECT_EQ(status.Outputs.Count(), 0U);
  EXPECT_EQ(status.SolarInfo.CalculatedSunrise, "nil");
  EXPECT_EQ(status.SolarInfo.CalculatedSunset, "nil");
  EXPECT_FALSE(status.DaylightSaving);
  EXPECT_FALSE(status.SecondFlag);
  EXPECT_EQ(status.FirmwareVersion, "");
  EXPECT_EQ(status.DisplayFirmwareVersion, "");
  EXPECT_EQ(status.ErrorFlags, "0x0000000000000000");
  EXPECT_EQ(status.LocalTime, "");
  EXPECT_EQ(status.Uptime, "P0S");
  EXPECT_EQ(status.ConfigurationTimestamp, "2000-01-01T00:00:00");
  EXPECT_EQ(status.GUID, "");
  EXPECT_EQ(status.Version, "1.0");
  EXPECT_EQ(status.MemoryTotal, 100000);
  EXPECT_EQ(status.MemoryFree, 100000);
  EXPECT_EQ(status.StorageTotal, 100000U);
  EXPECT_EQ(status.StorageFree, 100000U);
  EXPECT_EQ(status.HardwareID1, 0);
  EXPECT_EQ(status.HardwareID2, 0);
  EXPECT_EQ(status.HardwareID3, 0);
  EXPECT_EQ(status.SerialNumber, 0U);
  EXPECT_EQ(status.ProductFamily, 1);
  EXPECT_EQ(status.FurtherWord1, 0U);
  EXPECT_EQ(status.FurtherWord2, 0U);
  EXPECT_EQ(status.FurtherWord3, 0U);
  EXPECT_EQ(status.FurtherWord4, 0U);
  EXPECT_EQ(status.FurtherWord5, 0U);
}

// The fields in their types, the sub-records by value.
static_assert(std::is_same_v<decltype(CStatus::MemoryTotal), std::int64_t>);
static_assert(std::is_same_v<decltype(CStatus::MemoryFree), std::int64_t>);
static_assert(std::is_same_v<decltype(CStatus::StorageTotal), std::uint64_t>);
static_assert(std::is_same_v<decltype(CStatus::StorageFree), std::uint64_t>);
static_assert(std::is_same_v<decltype(CStatus::HardwareID1), std::int32_t>);
static_assert(std::is_same_v<decltype(CStatus::SerialNumber), std::uint32_t>);
static_assert(std::is_same_v<decltype(CStatus::ProductFamily), std::int32_t>);
static_assert(std::is_same_v<decltype(CStatus::Uptime), std::string>);
static_assert(std::is_same_v<decltype(CStatus::DaylightSaving), bool>);
static_assert(std::is_same_v<decltype(CStatus::Sensors), CSensorList>);
static_assert(std::is_same_v<decltype(CStatus::Network), CNetwork>);
static_assert(std::is_same_v<decltype(CStatus::DCIO), CDCIO>);
static_assert(std::is_same_v<decltype(CStatus::Compositors), CCompositorList>);
static_assert(std::is_same_v<decltype(CStatus::Inputs), CInputList>);
static_assert(std::is_same_v<decltype(CStatus::Outputs), COutputList>);
static_assert(std::is_same_v<decltype(CStatus::SolarInfo), CSolarInfo>);
static_assert(std::is_same_v<decltype(CNetwork::DNS), CDNS>);

// Where members lie in memory is the order in which they are built.
void ExpectAscending(const std::vector<const void*>& members) {
  for (std::size_t i = 1; i < members.size(); ++i) {
    EXPECT_LT(members[i - 1], members[i]) << "member " << i + 1;
  }
}

TEST(Document, BuildsItsMembersInTheirOrder) {
  const CStatus s;
  ExpectAscending({&s.Sensors,
                   &s.Network,
                   &s.DCIO,
                   &s.Compositors,
                   &s.Inputs,
                   &s.Outputs,
                   &s.SolarInfo,
                   &s.DaylightSaving,
                   &s.SecondFlag,
                   &s.FirmwareVersion,
                   &s.DisplayFirmwareVersion,
                   &s.ErrorFlags,
                   &s.LocalTime,
                   &s.Uptime,
                   &s.ConfigurationTimestamp,
                   &s.GUID,
                   &s.Version,
                   &s.MemoryTotal,
                   &s.MemoryFree,
                   &s.StorageTotal,
                   &s.StorageFree,
                   &s.HardwareID1,
                   &s.HardwareID2,
                   &s.HardwareID3,
                   &s.SerialNumber,
                   &s.ProductFamily,
                   &s.FurtherWord1,
                   &s.FurtherWord2,
                   &s.FurtherWord3,
                   &s.FurtherWord4,
                   &s.FurtherWord5});
  ExpectAscending({&s.Network.DNS, &s.Network.Devices, &s.Network.SpareWord});
  ExpectAscending({&s.SolarInfo.CalculatedSunrise, &s.SolarInfo.CalculatedSunset});
}

TEST(Document, AllocatesNothingButItsTwoLongTexts) {
  alignas(CStatus) unsigned char memory[sizeof(CStatus)];
  const std::uint64_t before = interposed::g_allocations.Made;
  const CStatus* const status = new (memory) CStatus;
  EXPECT_EQ(interposed::g_allocations.Made - before, 2U)
      << "the error flags and the configuration timestamp";
  status->~CStatus();
}

// The document is a concrete status class that nobody copies, and so are its records.
static_assert(std::is_base_of_v<CBaseStatus, CStatus>);
static_assert(std::is_abstract_v<CBaseStatus>);
static_assert(!std::is_abstract_v<CStatus>);
static_assert(std::has_virtual_destructor_v<CBaseStatus>);
static_assert(!std::is_copy_constructible_v<CStatus>);
static_assert(std::is_base_of_v<CBaseStatus, CNetwork>);
static_assert(std::is_base_of_v<CBaseStatus, CDNS>);
static_assert(std::is_base_of_v<CBaseStatus, CDCIO>);
static_assert(std::is_base_of_v<CBaseStatus, CSolarInfo>);

// The point lists are none.
static_assert(!std::is_base_of_v<CBaseStatus, InputListType>);
static_assert(!std::is_base_of_v<CBaseStatus, OutputListType>);
static_assert(!std::is_base_of_v<CBaseStatus, IOList>);

TEST(Document, KeepsTheOrderOfVirtualFunctions) {
  // the destructor takes the slots 0 and 1
  EXPECT_EQ(Slot(&CBaseStatus::Parse), 2U);
  EXPECT_EQ(Slot(&CBaseStatus::Write), 3U);
  EXPECT_EQ(Slot(&CInput::GetType), 4U);
}

// The class of elements to make for a list.
template <class T>
struct Concrete {
  using Type = T;
};
template <>
struct Concrete<CInput> {
  using Type = CPlayerInput;
};

// An element that counts its destructions.
template <class T>
class Counted : public Concrete<T>::Type {
 public:
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  ~Counted() override { ++*destroyed_; }

 private:
  int* destroyed_;
};

template <class List>
class OwningList : public testing::Test {
 protected:
  using Element = typename List::Element;
  static_assert(std::has_virtual_destructor_v<List>);
  static_assert(std::is_base_of_v<CBaseStatus, Element>);
  // The position is taken by reference, by the operator that is no template.
  using At = Element* (COwningList<Element>::*)(const unsigned int&) const;
  static_assert(std::is_same_v<decltype(static_cast<At>(&List::operator[])), At>);

  Element* Make() { return new Counted<Element>(&destroyed_); }

  int destroyed_ = 0;
  List list_;
};

using Lists =
    testing::Types<CSensorList, CAddressList, CNetworkDeviceList, CDCIODeviceList, CCompositorList,
                   CInputList, COutputList, CDisplayInterfaceList, CDeviceList, CStatList>;
TYPED_TEST_SUITE(OwningList, Lists);

TYPED_TEST(OwningList, GivesNullAtAndBeyondItsCountAndNeverCreates) {
  for (const unsigned int position : {0U, 1U, 4294967295U}) {
    EXPECT_EQ(this->list_[position], nullptr);
  }
  this->list_.Add(this->Make());
  EXPECT_NE(this->list_[0], nullptr);
  for (const unsigned int position : {1U, 2U, 4294967295U}) {
    EXPECT_EQ(this->list_[position], nullptr);
  }
  EXPECT_EQ(this->list_.Count(), 1U);
}

TYPED_TEST(OwningList, KeepsTheOrderOfAdd) {
  typename TypeParam::Element* const elements[] = {this->Make(), this->Make(), this->Make()};
  // against the order of addresses, one way or the other
  for (const int i : {2, 0, 1}) {
    this->list_.Add(elements[i]);
  }
  EXPECT_EQ(this->list_[0], elements[2]);
  EXPECT_EQ(this->list_[1], elements[0]);
  EXPECT_EQ(this->list_[2], elements[1]);
}

TYPED_TEST(OwningList, DeletesItsElementsWhenClearedAndOnlyThen) {
  this->list_.Clear();
  for (int i = 0; i < 3; ++i) {
    this->list_.Add(this->Make());
  }
  EXPECT_EQ(this->list_.Count(), 3U);
  EXPECT_EQ(this->destroyed_, 0);
  this->list_.Clear();
  EXPECT_EQ(this->destroyed_, 3);
  EXPECT_EQ(this->list_.Count(), 0U);
  EXPECT_EQ(this->list_[0], nullptr);
  this->list_.Clear();
  EXPECT_EQ(this->destroyed_, 3);
}

TYPED_TEST(OwningList, CanBeFilledAgainAfterClear) {
  this->list_.Add(this->Make());
  this->list_.Clear();
  auto* const element = this->Make();
  this->list_.Add(element);
  EXPECT_EQ(this->list_.Count(), 1U);
  EXPECT_EQ(this->list_[0], element);
}

TYPED_TEST(OwningList, DeletesItsElementsWhenDestroyed) {
  {
    TypeParam list;
    list.Add(this->Make());
    list.Add(this->Make());
  }
  EXPECT_EQ(this->destroyed_, 2);
}

TYPED_TEST(OwningList, DeletesAnElementThatWasAddedTwiceOnce) {
  auto* const twice = this->Make();
  for (auto* const element : {twice, this->Make(), twice}) {
    this->list_.Add(element);
  }
  EXPECT_EQ(this->list_.Count(), 3U);
  this->list_.Clear();
  EXPECT_EQ(this->destroyed_, 2);
}

TEST(Elements, StartWithTheirInitialValues) {
  const CTravex6Output output;
  EXPECT_EQ(output.Index, 0U);
  EXPECT_EQ(output.DisplayInterfaces.Count(), 0U);
  EXPECT_EQ(output.Dimming.Content.First, 0);
  EXPECT_EQ(output.Dimming.Content.Second, 0);
  EXPECT_EQ(output.Dimming.Content.Third, 0U);
  EXPECT_EQ(output.Dimming.DimmingLevel, 1.0F);
  EXPECT_EQ(output.Dimming.ActualDimmingLevel, 1.0F);
  EXPECT_EQ(output.Dimming.SpareLevel, -1.0F);
  EXPECT_EQ(output.Dimming.OutputLevel, 100.0F);
  EXPECT_EQ(output.Dimming.DimmingMode, 0U);
  ExpectAscending({&output.Dimming.Content, &output.Dimming.DimmingLevel,
                   &output.Dimming.ActualDimmingLevel, &output.Dimming.SpareLevel,
                   &output.Dimming.OutputLevel});
  for (const CArea* area : {&output.Area, &output.ScalerOutputArea}) {
    EXPECT_EQ(area->Width, 0U);
    EXPECT_EQ(area->Height, 0U);
  }
  EXPECT_EQ(output.Frequency.Vertical, 0.0F);
  EXPECT_EQ(output.Frequency.Horizontal, 0.0F);
  EXPECT_EQ(output.Frequency.PixelClock, 0.0F);
  EXPECT_EQ(output.Devices.Count(), 0U);
  for (const std::string* text : {&output.Title, &output.Author, &output.Contract, &output.ED,
                                  &output.Date, &output.Time, &output.Task, &output.SpareText}) {
    EXPECT_EQ(*text, "");
  }
  EXPECT_THAT((std::vector{output.Preset1, output.Preset2, output.Preset3, output.Preset4,
                           output.Preset5, output.Preset6}),
              testing::ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_FALSE(output.Fans.Enabled);
  EXPECT_EQ(output.Fans.Override, 0U);
  EXPECT_EQ(output.Statistics.Count(), 0U);
  EXPECT_THAT(
      (std::vector{output.SpareWord1, output.StatusFlags, output.SpareWord2, output.SpareWord3}),
      testing::Each(0));
}

TEST(Elements, OfTheTtableStartAtZero) {
  const CTtable table;
  EXPECT_THAT(
      (std::vector{table.ColumnsPlusOne, table.RowsPlusOne, table.Rows, table.Columns,
                   table.FaceCount, table.Interleaved, table.ModuleHeight, table.ModuleWidth}),
      testing::Each(0));
  EXPECT_EQ(table.PixelPitch, 0.0F);
  EXPECT_EQ(table.RefreshRate, 0.0F);
  ExpectAscending({&table.ColumnsPlusOne, &table.RowsPlusOne, &table.Rows, &table.Columns,
                   &table.FaceCount, &table.Interleaved, &table.ModuleHeight, &table.ModuleWidth,
                   &table.PixelPitch, &table.RefreshRate});
  const CDevice device;
  EXPECT_EQ(device.Index, 0U);
  EXPECT_EQ(device.Node, 0);
  EXPECT_EQ(device.Value, 0);
  static_assert(std::is_same_v<decltype(CDevice::Index), std::uint32_t>);
  static_assert(std::is_same_v<decltype(CDevice::Node), std::int32_t>);
  static_assert(std::is_same_v<decltype(CDevice::Value), std::int32_t>);
}

template <class T>
void ExpectFreshInput(const T& input) {
  EXPECT_EQ(input.Index, 0U);
  EXPECT_EQ(input.DetectedArea.Width, 0U);
  EXPECT_EQ(input.DetectedArea.Height, 0U);
  EXPECT_EQ(input.ScalerInputArea.Width, 0U);
  EXPECT_EQ(input.ScalerInputArea.Height, 0U);
  EXPECT_EQ(input.Frequency.Vertical, 0.0F);
  EXPECT_EQ(input.Frequency.Horizontal, 0.0F);
  EXPECT_EQ(input.Frequency.PixelClock, 0.0F);
  EXPECT_EQ(input.Statistics.Number, 0);
  EXPECT_EQ(input.Statistics.First, 0);
  EXPECT_EQ(input.Statistics.Second, 0);
  EXPECT_EQ(input.SpareWord, 0U);
  EXPECT_FALSE(input.SignalPresent);
  EXPECT_FALSE(input.MultiplexerSelected);
  EXPECT_EQ(input.SpareByte1, 0);
  EXPECT_EQ(input.SpareByte2, 0);
}

TEST(Elements, OfTheInputListStartAtZeroButForAFive) {
  ExpectFreshInput(CPlayerInput());
  ExpectFreshInput(CAnalogInput());
  ExpectFreshInput(CDigitalInput());
  EXPECT_EQ(CAnalogInput().FurtherWord, 5U);
  EXPECT_EQ(CDigitalInput().FurtherWord, 5U);
  EXPECT_EQ(CPlayerInput().GetType(), 0U);
  EXPECT_EQ(CAnalogInput().GetType(), 1U);
  EXPECT_EQ(CDigitalInput().GetType(), 2U);
}

TEST(Elements, OfTheSmallListsStartAtZero) {
  EXPECT_EQ(CCompositor().SpareWord, 0);
  EXPECT_EQ(CCompositor().State, 0);
  EXPECT_EQ(CStat().Number, 0);
  EXPECT_EQ(CStat().First, 0);
  EXPECT_EQ(CStat().Second, 0);
  static_assert(std::is_same_v<decltype(CStat::First), std::int32_t>);
  static_assert(std::is_same_v<decltype(CContent::First), std::uint16_t>);
  static_assert(std::is_same_v<decltype(CContent::Third), std::uint32_t>);
  const CDCIODevice device;
  EXPECT_EQ(device.NumberOfAttributes, 0U);
  EXPECT_EQ(device.State, nullptr);
  EXPECT_EQ(device.ErrorCounter, nullptr);
  EXPECT_EQ(device.Address, nullptr);
}

TEST(Elements, OfAControlBoardHaveOpenEndedPointLists) {
  const CSentrelControlBoardDisplayInterface board;
  ASSERT_NE(board.Inputs, nullptr);
  ASSERT_NE(board.Outputs, nullptr);
  EXPECT_TRUE(board.Inputs->OpenEnded);
  EXPECT_TRUE(board.Outputs->OpenEnded);
  EXPECT_EQ(board.Inputs->MaximumIndex, 0U);
  EXPECT_EQ(board.Outputs->MaximumIndex, 0U);
  EXPECT_TRUE(board.Inputs->Points.empty());
  EXPECT_TRUE(board.Outputs->Points.empty());
  EXPECT_EQ(board.FlagByte, 1);
  EXPECT_EQ(board.NumberOfAttributes, 0U);
  EXPECT_EQ(board.Sensors.Count(), 0U);
  EXPECT_EQ(board.Address, nullptr);
}

}  // namespace
