// Video outputs, what hangs on them, and the T-table that describes the display's tiling.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "model/common.h"
#include "model/io_points.h"
#include "model/sensors.h"

namespace QtSts {

// Content limits as the router answers them; all bits set means no answer.
class STATUS_API CContent : public CListedStatus {
 public:
  std::uint16_t First = 0;
  std::uint16_t Second = 0;
  std::uint32_t Third = 0;

  static const ClassInfo Class;
};

class STATUS_API CDimming : public CListedStatus {
 public:
  CContent Content;
  float DimmingLevel = 1;        // percent
  float ActualDimmingLevel = 1;  // percent
  float SpareLevel = -1;
  float OutputLevel = 100;        // as the router answers it
  std::uint32_t DimmingMode = 0;  // a code of kDimmingModes

  static const ClassInfo Class;
};

class STATUS_API CFans : public CListedStatus {
 public:
  bool Enabled = false;
  std::uint32_t Override = 0;  // a code of kFansOverrides

  static const ClassInfo Class;
};

// The numbers of the T-table; its texts and device nodes stand in the output.
class STATUS_API CTtable : public CListedStatus {
 public:
  std::uint32_t ColumnsPlusOne = 0;
  std::uint32_t RowsPlusOne = 0;
  std::uint32_t Rows = 0;     // of modules
  std::uint32_t Columns = 0;  // of modules
  std::uint32_t FaceCount = 0;
  std::uint32_t Interleaved = 0;  // a number, not a flag
  std::uint32_t ModuleHeight = 0;
  std::uint32_t ModuleWidth = 0;
  float PixelPitch = 0;
  float RefreshRate = 0;

  static const ClassInfo Class;
};

// One device node of the T-table.
class STATUS_API CDevice : public CListedStatus {
 public:
  std::uint32_t Index = 0;  // running number within the cycle
  std::int32_t Node = 0;    // from the row's key
  std::int32_t Value = 0;   // the row's value

  static const ClassInfo Class;
};

class STATUS_API CDeviceList : public COwningList<CDevice> {};

// What carries the picture to the display, with the sensors behind it. The number of attributes is
// the key by which an interface is found.
class STATUS_API CDisplayInterface : public CListedStatus {
 public:
  std::uint32_t NumberOfAttributes = 0;
  CSensorList Sensors;
  std::unique_ptr<std::uint16_t> Address;  // null: not reported

  static const ClassInfo Class;
};

class STATUS_API CTravexRouterDisplayInterface : public CDisplayInterface {
 public:
  static const ClassInfo Class;
};

// A control board has points of its own, in open-ended lists.
class STATUS_API CSentrelControlBoardDisplayInterface : public CDisplayInterface, public IOList {
 public:
  std::uint8_t FlagByte = 1;

  CSentrelControlBoardDisplayInterface()
      : IOList(std::make_unique<InputListType>(), std::make_unique<OutputListType>()) {}

  static const ClassInfo Class;
};

class STATUS_API CDisplayInterfaceList : public COwningList<CDisplayInterface> {};

// An output port with everything that probes and rows say about it.
class STATUS_API COutput : public CListedStatus {
 public:
  std::uint32_t Index = 0;
  CDisplayInterfaceList DisplayInterfaces;
  CDimming Dimming;
  CArea Area;
  CArea ScalerOutputArea;
  CFrequency Frequency;  // Vertical is the frame rate
  CTtable Ttable;
  CDeviceList Devices;
  std::uint32_t SpareWord1 = 0;
  std::string Title;  // texts of the T-table
  std::string Author;
  std::string Contract;
  std::string ED;
  std::string Date;
  std::string Time;
  std::string Task;
  std::string SpareText;
  std::uint32_t Preset1 = 1;
  std::uint32_t Preset2 = 2;
  std::uint32_t Preset3 = 3;
  std::uint32_t Preset4 = 4;
  std::uint32_t Preset5 = 5;
  std::uint32_t Preset6 = 6;
  CFans Fans;
  CStatList Statistics;
  std::uint32_t StatusFlags = 0;  // kFlag... bits
  std::uint32_t SpareWord2 = 0;
  std::uint32_t SpareWord3 = 0;

  static const ClassInfo Class;
};

class STATUS_API CTravex6Output : public COutput {
 public:
  static const ClassInfo Class;
};

class STATUS_API COutputList : public COwningList<COutput> {};

}  // namespace QtSts
