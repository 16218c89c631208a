// The register dumps of the drivers: text in which each register is a label followed by a
// hexadecimal value.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "model/inputs.h"

namespace hardware {

// Value after the first `label` in the dump, nothing when the label is missing. Deliberately the
// whole text after the label is searched for "0x": a register whose value lacks it gets the next
// register's value.
std::optional<std::uint64_t> FindRegister(const char* dump, const char* label);

// Fields of the player's input, signal included; a register that is absent leaves its field.
void ParsePlayerInput(const char* frame_control, QtSts::CInput* input);

// Fields of the DVI input except the signal, which only the display driver knows.
void ParseDviInput(const char* frame_control, QtSts::CInput* input);

// Whether the multiplexer routes the DVI source (otherwise the player); nothing when the dump lacks
// the register.
std::optional<bool> ParseRoutesDvi(const char* video_mux);

// What the pixel tracker adds to the output's status flags. `enable` is the router's answer,
// `tracker` the display driver's.
std::uint32_t TrackerFlags(int enable, int tracker, const char* frame_control);

// The lines of the dump that are about the pixel tracker, in order, without their line feeds.
std::vector<std::string_view> TrackerLines(std::string_view frame_control);

}  // namespace hardware
