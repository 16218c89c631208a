#include "tests/collector/scratch_variables.h"

#include <locale>
#include <sstream>
#include <type_traits>

namespace {

// Text of a value of any of the types.
template <class T>
requires std::is_arithmetic_v<T> || std::is_enum_v<T>
void Append(std::ostream& out, const T& value) {
  out << +value << ' ';  // the plus prints an enumeration or a byte as a number
}

void Append(std::ostream& out, const BeaconRoundel& value) {
#define APPEND(name, ...) Append(out, value.name);
  BEACON_ROUNDEL_FIELDS(APPEND)
#undef APPEND
}

void Append(std::ostream& out, const DcioPoint& point) {
  const auto& [present, type, index, state, label] = point;
  Append(out, present);
  Append(out, type);
  Append(out, index);
  Append(out, state);
  out << '"' << label << "\" ";
}

void Append(std::ostream& out, const std::pair<const std::uint8_t, std::uint16_t>& fan) {
  Append(out, fan.first);
  Append(out, fan.second);
}

template <class T>
requires requires(T list) { list.begin(); }
void Append(std::ostream& out, const T& list) {
  out << '[';
  for (const auto& element : list) {
    Append(out, element);
  }
  out << "] ";
}

// A value that no variable has at load.
template <class T>
requires std::is_arithmetic_v<T> || std::is_enum_v<T>
void FillValue(T* value) { *value = static_cast<T>(1); }

void FillValue(BeaconRoundel* value) {
  std::uint8_t next = 1;
#define FILL(name, ...) value->name = next++;
  BEACON_ROUNDEL_FIELDS(FILL)
#undef FILL
}

void FillValue(DcioPoint* point) { *point = {1, 2, 3, 4, "label"}; }

void FillValue(std::map<std::uint8_t, std::uint16_t>* value) { *value = {{1, 1200}, {2, 900}}; }

void FillValue(std::vector<float>* value) { *value = {24.5F, 24.5F}; }

template <std::size_t kCount>
void FillValue(std::array<DcioPoint, kCount>* points) {
  for (DcioPoint& point : *points) {
    FillValue(&point);
  }
}

template <class T>
std::string TextOf(const T& value) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  Append(out, value);
  return out.str();
}

template <auto kVariable>
constexpr ScratchVariable Of(const char* name) {
  using T = std::remove_pointer_t<decltype(kVariable)>;
  return {name, kVariable, [] { FillValue(kVariable); }, [] { *kVariable = T{}; },
          [] { return TextOf(*kVariable); }};
}

constexpr ScratchVariable kVariables[] = {
#define VARIABLE(name, ...) Of<&name>(#name),
    SCRATCH_VARIABLES(VARIABLE)
#undef VARIABLE
};

}  // namespace

std::span<const ScratchVariable> ScratchVariables() { return kVariables; }

void ClearScratch() { RestoreScratch({}); }

void FillScratch() {
  for (const ScratchVariable& variable : kVariables) {
    variable.Fill();
  }
}

Scratch SaveScratch() {
  Scratch saved;
#define SAVE(name, ...) saved.name = name;
  SCRATCH_VARIABLES(SAVE)
#undef SAVE
  return saved;
}

void RestoreScratch(const Scratch& saved) {
#define RESTORE(name, ...) name = __VA_ARGS__(saved.name);  // a copy, so that memory is given back
  SCRATCH_VARIABLES(RESTORE)
#undef RESTORE
}

std::vector<std::string> Differences(const Scratch& left, const Scratch& right) {
  std::vector<std::string> names;
#define COMPARE(name, ...) \
  if (!(left.name == right.name)) names.emplace_back(#name);
  SCRATCH_VARIABLES(COMPARE)
#undef COMPARE
  return names;
}

std::string ScratchText() {
  std::ostringstream out;
  PrintTo(SaveScratch(), &out);
  return out.str();
}

void PrintTo(const Scratch& scratch, std::ostream* out) {
#define PRINT(name, ...) *out << #name << ' ' << TextOf(scratch.name) << '\n';
  SCRATCH_VARIABLES(PRINT)
#undef PRINT
}
