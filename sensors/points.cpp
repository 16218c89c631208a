#include "sensors/points.h"

#include <memory>

#include "collector/state/report.h"
#include "collector/state/scratch.h"

namespace {

using observe::PointFate;
using observe::PointPlace;
using QtSts::BaseInputType;
using QtSts::BaseOutputType;
using QtSts::IOList;

template <class Base, class T>
std::unique_ptr<Base> Make() {
  return std::make_unique<T>();
}

// The class of each input type code.
constexpr std::unique_ptr<BaseInputType> (*kInputs[])() = {
    &Make<BaseInputType, QtSts::BaseInputType>,                     // 0
    &Make<BaseInputType, QtSts::GeneralPurposeInputType>,           // 1
    &Make<BaseInputType, QtSts::AirflowSensorInputType>,            // 2
    &Make<BaseInputType, QtSts::CDoorSensorInputType>,              // 3
    &Make<BaseInputType, QtSts::SurgeSuppressorInputType>,          // 4
    &Make<BaseInputType, QtSts::CIntakeFanStatusRelayInputType>,    // 5
    &Make<BaseInputType, QtSts::CFrontFanStatusRelayInputType>,     // 6
    &Make<BaseInputType, QtSts::CPixelFanStatusRelayInputType>,     // 7
    &Make<BaseInputType, QtSts::CFanPowerSenseInputType>,           // 8
    &Make<BaseInputType, QtSts::CPowerSupplyStatusRelayInputType>,  // 9
    &Make<BaseInputType, QtSts::CMaintHeaterStatusRelayInputType>,  // 10
    &Make<BaseInputType, QtSts::CHeaterStatusRelayInputType>,       // 11
};

// The class of each output type code.
constexpr std::unique_ptr<BaseOutputType> (*kOutputs[])() = {
    &Make<BaseOutputType, QtSts::BaseOutputType>,             // 0
    &Make<BaseOutputType, QtSts::CIntakeFanOutputType>,       // 1
    &Make<BaseOutputType, QtSts::CPixelFanOutputType>,        // 2
    &Make<BaseOutputType, QtSts::CFrontFanOutputType>,        // 3
    nullptr,                                                  // 4 is deliberately left free
    &Make<BaseOutputType, QtSts::CMaintHeaterOutputType>,     // 5
    &Make<BaseOutputType, QtSts::CHeaterOutputType>,          // 6
    &Make<BaseOutputType, QtSts::CGeneralPurposeOutputType>,  // 7
    &Make<BaseOutputType, QtSts::CAuxiliaryOutputType>,       // 8
    &Make<BaseOutputType, QtSts::CFaultOkLedOutputType>,      // 9
    &Make<BaseOutputType, QtSts::CCurrentMessageOutputType>,  // 10
};

constexpr std::int32_t kActive = 1;  // any other state is inactive

// Makes the point of `entry` and offers it to `list`; null when that refuses it. A refused point is
// deliberately dropped, neither kept nor deleted: tests/lsan.supp names this function for it.
template <class Point>
const Point* OfferPoint(std::unique_ptr<Point> (*make)(), const DcioPoint& entry, IOList* list) {
  std::unique_ptr<Point> point = make();
  point->Set(entry.State == kActive);
  point->Index = entry.Index;
  point->Label = entry.Label;
  const bool taken = list->Add(point.get());
  const Point* const offered = point.release();
  return taken ? offered : nullptr;
}

bool IsEmpty(const DcioPoint& entry) {
  return entry.Present == 0 && entry.Type == 0 && entry.Index == 0 && entry.State == 0 &&
         entry.Label.empty();
}

void ReportPoint(PointPlace where, std::size_t number, const DcioPoint& entry, PointFate fate,
                 const QtSts::CBaseStatus* element = nullptr) {
  observe::Report([&] {
    observe::Point event;
    event.What = fate;
    event.Where = where;
    event.Entry = static_cast<unsigned int>(number);
    event.Type = entry.Type;
    event.Index = entry.Index;
    event.Element = element;
    return event;
  });
}

template <class Point, std::size_t kCodes, std::size_t kEntries>
void Populate(std::unique_ptr<Point> (*const (&makers)[kCodes])(), PointPlace where,
              std::array<DcioPoint, kEntries>* staged, IOList* list) {
  for (std::size_t number = 0; number < kEntries; ++number) {
    DcioPoint& entry = (*staged)[number];
    if (entry.Present == 0) {
      if (observe::IsWatched() && !IsEmpty(entry)) {
        ReportPoint(where, number, entry, PointFate::kLeft);
      }
      continue;
    }
    if (entry.Type < kCodes && makers[entry.Type] != nullptr) {
      const Point* const point = OfferPoint(makers[entry.Type], entry, list);
      ReportPoint(where, number, entry, point == nullptr ? PointFate::kRefused : PointFate::kTaken,
                  point);
    } else {
      ReportPoint(where, number, entry, PointFate::kNoClass);
    }
    entry = DcioPoint();
  }
}

}  // namespace

void PopulateInputs(QtSts::CCANDcio* board) {
  Populate(kInputs, PointPlace::kInput, &dcioInputs, &board->Points);
}

void PopulateOutputs(QtSts::CCANDcio* board) {
  Populate(kOutputs, PointPlace::kOutput, &dcioOutputs, &board->Points);
}
