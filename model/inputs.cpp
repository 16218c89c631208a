#include "model/inputs.h"

#include "model/listing_rows.h"

namespace QtSts {
namespace {

using listing::Derived;
using listing::Of;

constexpr Field kInputFields[] = {
    Of<&CInput::Index>("Index", "", "Position in the input list"),
    Of<&CInput::DetectedArea>("DetectedArea", "", "Picture size that was detected"),
    Of<&CInput::ScalerInputArea>("ScalerInputArea", "", "Picture size that enters the scaler"),
    Of<&CInput::Frequency>("Frequency", "", "Detected timing"),
    Of<&CInput::Statistics>("Statistics", "", "Losses of signal and pictures that were not valid"),
    Of<&CInput::SpareWord>("SpareWord", "", "Not used"),
    Of<&CInput::SignalPresent>("SignalPresent", "", "Whether a signal is present"),
    Of<&CInput::MultiplexerSelected>("MultiplexerSelected", "",
                                     "Whether the video multiplexer routes this source"),
    Of<&CInput::SpareByte1>("SpareByte1", "", "Not used"),
    Of<&CInput::SpareByte2>("SpareByte2", "", "Not used"),
};

constexpr Field kAnalogFields[] = {
    Of<&CAnalogInput::FurtherWord>("FurtherWord", "", "Not used by the collector"),
};

constexpr Field kDigitalFields[] = {
    Of<&CDigitalInput::FurtherWord>("FurtherWord", "", "Not used by the collector"),
};

constexpr Field kCompositorFields[] = {
    Of<&CCompositor::SpareWord>("SpareWord", "", "Not used"),
    Of<&CCompositor::State>("State", "", "State as the display driver answers it"),
};

}  // namespace

constinit const ClassInfo CInput::Class =
    listing::Root<CInput>("Input", "A source of pictures", kInputFields);
constinit const ClassInfo CPlayerInput::Class =
    Derived<CPlayerInput, CInput>("PlayerInput", "The local media player's graphics");
constinit const ClassInfo CAnalogInput::Class =
    Derived<CAnalogInput, CInput>("AnalogInput", "An analog input", kAnalogFields);
constinit const ClassInfo CDigitalInput::Class =
    Derived<CDigitalInput, CInput>("DigitalInput", "The DVI input", kDigitalFields);
constinit const ClassInfo CCompositor::Class =
    listing::Root<CCompositor>("Compositor", "What mixes the inputs", kCompositorFields);

InputType TypeOf(const CInput& input) { return const_cast<CInput&>(input).GetType(); }

}  // namespace QtSts
