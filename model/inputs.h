// Video inputs and the compositor that mixes them.
#pragma once

#include <cstdint>

#include "model/common.h"

namespace QtSts {

// A source of pictures. The list of the document holds the player input first, then the DVI input.
class STATUS_API CInput : public CListedStatus {
 public:
  std::uint32_t Index = 0;  // position in the input list
  CArea DetectedArea;
  CArea ScalerInputArea;
  CFrequency Frequency;
  CStat Statistics;  // losses of signal, pictures that were not valid
  std::uint32_t SpareWord = 0;
  bool SignalPresent = false;
  bool MultiplexerSelected = false;  // the video multiplexer routes this source
  std::uint8_t SpareByte1 = 0;
  std::uint8_t SpareByte2 = 0;

  virtual InputType GetType() = 0;

  static const ClassInfo Class;
};

class STATUS_API CPlayerInput : public CInput {
 public:
  InputType GetType() override { return kPlayerInput; }

  static const ClassInfo Class;
};

class STATUS_API CAnalogInput : public CInput {
 public:
  std::uint32_t FurtherWord = 5;

  InputType GetType() override { return kAnalogInput; }

  static const ClassInfo Class;
};

class STATUS_API CDigitalInput : public CInput {
 public:
  std::uint32_t FurtherWord = 5;

  InputType GetType() override { return kDigitalInput; }

  static const ClassInfo Class;
};

// What GetType says, of an input that is const. GetType must not change it.
STATUS_API InputType TypeOf(const CInput& input);

class STATUS_API CInputList : public COwningList<CInput> {};

class STATUS_API CCompositor : public CListedStatus {
 public:
  std::int32_t SpareWord = 0;
  std::int32_t State = 0;  // as the display driver answers it

  static const ClassInfo Class;
};

class STATUS_API CCompositorList : public COwningList<CCompositor> {};

}  // namespace QtSts
