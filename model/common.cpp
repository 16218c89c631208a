#include "model/common.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Of;

constexpr Field kAreaFields[] = {
    Of<&CArea::Width>("Width", "px", "Width of the picture area"),
    Of<&CArea::Height>("Height", "px", "Height of the picture area"),
};

constexpr Field kFrequencyFields[] = {
    Of<&CFrequency::Vertical>("Vertical", "Hz", "Vertical frequency; of an output, its frame rate"),
    Of<&CFrequency::Horizontal>("Horizontal", "Hz", "Horizontal frequency"),
    Of<&CFrequency::PixelClock>("PixelClock", "Hz", "Pixel clock"),
};

constexpr Field kStatFields[] = {
    Of<&CStat::Number>("Number", "", "Number of the statistic"),
    Of<&CStat::First>("First", "",
                      "First count: link transitions of a network device, losses of signal of an "
                      "input, the router's own for an output"),
    Of<&CStat::Second>(
        "Second", "",
        "Second count: link errors of a network device, pictures that were not valid "
        "of an input, the router's own for an output"),
};

}  // namespace

constinit const ClassInfo CArea::Class =
    listing::Root<CArea>("Area", "A picture area", kAreaFields);
constinit const ClassInfo CFrequency::Class =
    listing::Root<CFrequency>("Frequency", "Picture timing", kFrequencyFields);
constinit const ClassInfo CStat::Class = listing::Root<CStat>("Stat", "Two counters", kStatFields);

}  // namespace QtSts
