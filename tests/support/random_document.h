// Documents with every field of every listed class filled at random, by walking the listings. The
// same seed gives the same document, on every machine.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "model/document.h"
#include "model/listing.h"

namespace test_support {

// Any number; the source of all choices. A fuzz target may take them from its input.
using Choices = std::function<std::uint64_t()>;

// The deterministic source of this seed.
Choices SeededChoices(std::uint64_t seed);

// Fills the fields of `object`, whose class is `info`, its bases' fields included: numbers from the
// whole range of their types with their limits, floats with not-a-number and infinities, texts of
// any bytes, optional fields present or absent, lists of up to three elements of any class that
// they may hold. What values promise each other they keep: points have indices that their list
// takes, and a board has one state of its connection.
void FillAtRandom(const QtSts::ClassInfo& info, void* object, const Choices& next);

std::unique_ptr<QtSts::CStatus> RandomDocument(const Choices& next);

}  // namespace test_support
