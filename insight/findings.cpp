#include "insight/findings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>

#include "insight/absences.h"
#include "insight/daylight.h"
#include "insight/finding_rules.h"
#include "insight/finding_texts.h"
#include "insight/origins.h"
#include "insight/places.h"
#include "insight/reading_rules.h"
#include "insight/row_element.h"
#include "insight/row_findings.h"
#include "insight/source_database.h"
#include "insight/source_findings.h"
#include "insight/wrong_rows.h"
#include "model/document.h"

namespace insight {
namespace {

using QtSts::TreeElement;
using QtSts::TreeValue;

// Otherwise in their order. There may be one for each row: sorting would move them many times.
std::vector<Finding> WorstFirst(std::vector<Finding> findings) {
  if (std::ranges::is_sorted(findings, {}, &Finding::Level)) {
    return findings;
  }
  std::vector<Finding> sorted;
  sorted.reserve(findings.size());
  for (const Severity level : {Severity::kCritical, Severity::kUnknown, Severity::kWarning}) {
    for (Finding& finding : findings) {
      if (finding.Level == level) {
        sorted.push_back(std::move(finding));
      }
    }
  }
  return sorted;
}

// The rules of a table for elements of each class, found when the first of the class comes.
template <class Rule>
class RulesByClass {
 public:
  explicit RulesByClass(std::span<const Rule> rules) : rules_(rules) {}

  const std::vector<const Rule*>& Of(const TreeElement& element) {
    const auto [entry, first] = by_class_.try_emplace(element.Class());
    if (first) {
      for (const Rule& rule : rules_) {
        if (element.IsA(rule.Class)) {
          entry->second.push_back(&rule);
        }
      }
    }
    return entry->second;
  }

 private:
  std::span<const Rule> rules_;
  std::unordered_map<const QtSts::ClassInfo*, std::vector<const Rule*>> by_class_;
};

// What to look at when a reading is not possible.
constexpr const char* kWriter = "the program that writes the row";
constexpr const char* kSensor =
    "the sensor: likely broken or unplugged; its cable; then the program that writes its row";

constexpr const char* kConnected = "/Connected";
constexpr std::string_view kState = "State";

// Whether a value is a reading of a sensor, or the state of a device or an input.
bool IsReading(const TreeElement& element, std::string_view field) {
  if (element.IsA(QtSts::BaseInputType::Class) || element.IsA(QtSts::CDCIODevice::Class)) {
    return field == kState;
  }
  return element.IsA(QtSts::CSensor::Class) && IsMeasured(field) &&
         QtSts::FieldNamed(QtSts::CCANSensor::Class, field) == nullptr;
}

// Whether it says what a sensor, a device or an input is.
bool IsOfItself(const TreeElement& element, std::string_view field) {
  const bool is_thing = element.IsA(QtSts::CSensor::Class) ||
                        element.IsA(QtSts::CDCIODevice::Class) ||
                        element.IsA(QtSts::BaseInputType::Class);
  return is_thing && !IsReading(element, field);
}

class Finder {
 public:
  Finder(const Snapshot& snapshot, const Limits& limits)
      : snapshot_(snapshot), limits_(limits), origins_(snapshot) {}

  std::vector<Finding> Run() {
    FindInSources(snapshot_, &findings_);
    FindInNetwork(snapshot_, &findings_);
    FindInDatabase(snapshot_, limits_, &findings_);
    FindAbsentRows(snapshot_, wrong_rows_, &findings_);
    for (const TreeElement& element : snapshot_.Document.Elements()) {
      const std::size_t before = findings_.size();
      FindInValues(element);
      FindImpossible(element);
      FindInReadings(element);
      if (wrong_rows_.HasWrapped()) {
        FindWrapped(element, before);
      }
      FindMissing(element);
    }
    FindInRows(wrong_rows_, &findings_);
    return WorstFirst(std::move(findings_));
  }

 private:
  // Adds `finding` with what is known of its value; not when that is not reported.
  void Add(Finding finding, const TreeElement& element, const FoundValue& found,
           const char* key = nullptr, std::optional<double> number = {}) {
    finding.Value = number;
    finding.Path = found.Holder->PathOf(*found.Value);
    // A row sets a bit of a field whose other bits are not reported.
    if (!finding.Path.ends_with(kConnected) && !snapshot_.IsReported(finding.Path) &&
        (key == nullptr || !origins_.HasRow(key))) {
      return;
    }
    AddWithOrigin(std::move(finding), element, key);
  }

  void AddWithOrigin(Finding finding, const TreeElement& element, const char* key) {
    if (std::exchange(placed_, &element) != &element) {
      place_ = PlaceOf(element);
    }
    finding.Where = place_;
    origins_.Name(&finding, element, key);
    if (finding.Path.ends_with(kConnected) && finding.Key.ends_with("_Type")) {
      finding.Message = "sensor counts as not connected: no row of it says that it is";
      finding.Hint = "the program that writes its rows: Connected is missing";
    } else if (const Remark* const mistake = wrong_rows_.MistakeIn(finding.Key, finding.Path)) {
      LeadWith(*mistake, &finding);
    }
    findings_.push_back(std::move(finding));
  }

  // What comes of a row that is wrong is no news of the thing itself.
  static void LeadWith(const Remark& mistake, Finding* finding) {
    finding->Message =
        "row " + finding->Key + " is wrong: " + mistake.Text + "; so " + finding->Message;
    finding->Hint = CureOf(mistake);
  }

  void FindInValues(const TreeElement& element) {
    for (const ValueRule* const rule : value_rules_.Of(element)) {
      const FoundValue found = FindIn(element, rule->Class, rule->Field);
      if (found.Value != nullptr && rule->NeedsAttention(element, *found.Value) &&
          (rule->Counts == When::kAlways || IsOfConnected(element)) &&
          (rule->Counts != When::kByDay || IsNowByDay())) {
        Add(MakeFinding(rule->Id, rule->Level, WithValue(rule->Message, *found.Value), rule->Hint),
            element, found, rule->Key);
      }
    }
  }

  bool IsNowByDay() {
    if (!by_day_) {
      by_day_ = IsByDay(snapshot_.Document.Root());
    }
    return *by_day_;
  }

  // "temperature"; without a rule what the field is.
  static std::string WhatOf(const TreeElement& element, const TreeValue& value) {
    const auto rule = std::ranges::find_if(ReadingRules(), [&](const ReadingRule& candidate) {
      return value.Listed().Name == std::string_view(candidate.Field) &&
             element.IsA(candidate.Class);
    });
    if (rule != ReadingRules().end()) {
      return rule->What;
    }
    const std::string_view about = value.Listed().About;
    std::string what(about.substr(0, about.find(';')));
    if (what.front() >= 'A' && what.front() <= 'Z') {
      what.front() = static_cast<char>(what.front() - 'A' + 'a');
    }
    return what;
  }

  void AddImpossible(const TreeElement& element, const FoundValue& found, std::string message,
                     const char* hint) {
    Add(MakeFinding("reading-impossible", Severity::kUnknown, std::move(message), hint), element,
        found);
  }

  // Not a number, or infinite, in any field; light below 0.
  void FindImpossible(const TreeElement& element) {
    for (const TreeValue& value : element.Values()) {
      const double number = NumberOf(value);
      if (number >= 0 && std::isfinite(number) && value.Kind() != QtSts::ValueKind::kReals) {
        continue;
      }
      const char* const why = IsInfinite(value)         ? "no finite number"
                              : IsLight(element, value) ? "below 0"
                                                        : nullptr;
      if (why != nullptr && !IsOfStandingClock(element) && IsOfConnected(element)) {
        AddImpossible(element, {&element, &value},
                      WhatOf(element, value) + " " + TextOf(value) + " is not possible: " + why,
                      "the source of this value, or the program that writes its row");
      }
    }
  }

  static bool IsInfinite(const TreeValue& value) {
    const auto infinite = [](double number) { return !std::isfinite(number); };
    return infinite(NumberOf(value)) || (value.Kind() == QtSts::ValueKind::kReals &&
                                         std::ranges::any_of(value.Reals(), infinite));
  }

  // The clock of an input without a signal stands, as it should.
  static bool IsOfStandingClock(const TreeElement& element) {
    const TreeElement* const input = element.Parent();
    return input != nullptr && input->IsA(QtSts::CInput::Class) &&
           !input->FindValue("SignalPresent")->Flag();
  }

  static bool CanBe(const TreeValue& value, const Range& possible) {
    return value.Kind() == QtSts::ValueKind::kReals
               ? std::ranges::all_of(value.Reals(),
                                     [&](float each) { return possible.Holds(each); })
               : possible.Holds(NumberOf(value));
  }

  static std::string WhyNot(const Range& possible, const TreeValue& value) {
    const std::string most =
        std::isfinite(possible.Most) ? " to " + Rounded(possible.Most) : std::string();
    return (most.empty() ? "below " : "outside of ") +
           WithUnit(Rounded(possible.Least) + most, value.Listed().Unit);
  }

  void FindInReadings(const TreeElement& element) {
    for (const ReadingRule* const each : reading_rules_.Of(element)) {
      const ReadingRule& rule = *each;
      const FoundValue found = FindIn(element, rule.Class, rule.Field);
      if (found.Value == nullptr || IsInfinite(*found.Value)) {
        continue;
      }
      if (!CanBe(*found.Value, rule.Possible)) {
        if (IsOfConnected(element)) {
          AddImpossible(element, found,
                        WhatOf(element, *found.Value) + " " + TextOf(*found.Value) +
                            " is not possible: " + WhyNot(rule.Possible, *found.Value),
                        element.IsA(QtSts::CDimming::Class) ? kWriter : kSensor);
        }
      } else if (rule.Limit != nullptr) {
        FindOutside(element, rule, found);
      }
    }
  }

  // "temperature 81 °C, above the limit of 65 °C", of a reading that is `number` in the unit of the
  // limit.
  static std::string MessageOf(const TreeElement& element, const ReadingRule& rule,
                               const TreeValue& value, double number, const Range& range) {
    const std::string instead = rule.WithoutShare == nullptr ? "" : rule.WithoutShare(element);
    if (!instead.empty()) {
      return rule.What + (" " + TextOf(value)) + instead;
    }
    const std::string_view unit = UnitOf(rule.Limit);
    const std::string shown = WithUnit(Rounded(number), unit);
    return OutsideOf(
        range,
        rule.What + (rule.Share == nullptr ? " " + shown
                                           : " " + TextOf(value) + WithShare(rule.Share, shown)),
        number, unit);
  }

  void FindOutside(const TreeElement& element, const ReadingRule& rule, const FoundValue& found) {
    const std::optional<double> number = rule.Read(element, *found.Value, &peers_);
    const Limit& limit = limits_.Of(rule.Limit);
    if (!number || (limit.Warning.Holds(*number) && limit.Critical.Holds(*number)) ||
        !IsOfConnected(element)) {
      return;
    }
    const bool critical = !limit.Critical.Holds(*number);
    std::string message =
        MessageOf(element, rule, *found.Value, *number, critical ? limit.Critical : limit.Warning);
    Add(MakeFinding(rule.Limit, critical ? Severity::kCritical : Severity::kWarning,
                    std::move(message), rule.Hint),
        element, found, nullptr, *number);
  }

  // What stands there because a number had no room; not when it is not possible either.
  // `before` counts the findings before those of the element.
  void FindWrapped(const TreeElement& element, std::size_t before) {
    if (!IsOfConnected(element)) {
      return;
    }
    for (const TreeValue& value : element.Values()) {
      const std::string path = element.PathOf(value);
      if (IsOfItself(element, value.Listed().Name) || wrong_rows_.WrappedAt(path) == nullptr ||
          std::find_if(findings_.begin() + static_cast<std::ptrdiff_t>(before), findings_.end(),
                       [&](const Finding& finding) { return finding.Path == path; }) !=
              findings_.end()) {
        continue;
      }
      AddImpossible(element, {&element, &value},
                    "the document is wrong: " + WhatOf(element, value) + " " + TextOf(value), "");
    }
  }

  // One finding for all that an element lacks.
  void FindMissing(const TreeElement& element) {
    if (!IsOfConnected(element)) {
      return;
    }
    constexpr std::size_t kMostNamed = 3;
    std::string names;
    std::string first;
    std::size_t count = 0;
    for (const TreeValue& value : element.Values()) {
      const std::string_view field = value.Listed().Name;
      if (!IsReading(element, field) || snapshot_.IsReported(element.PathOf(value)) ||
          IsUnfed(element.PathOf(value))) {
        continue;
      }
      const std::string what = field == kState ? "its state" : WhatOf(element, value);
      if (++count <= kMostNamed) {
        names += (names.empty() ? "" : ", ") + what.substr(0, what.find(','));
      }
      first = first.empty() ? element.PathOf(value) : first;
    }
    if (count > kMostNamed) {
      names += " and " + std::to_string(count - kMostNamed) + " more";
    }
    if (!names.empty()) {
      Finding finding =
          MakeFinding("reading-missing", Severity::kWarning, "no row reports " + names,
                      "the program that writes these rows");
      finding.Path = std::move(first);
      AddWithOrigin(std::move(finding), element, nullptr);
      findings_.back().Source = kDatabaseId;
    }
  }

  // Whether a source did not give it, of which another finding speaks.
  bool IsUnfed(const std::string& path) const {
    return std::ranges::any_of(snapshot_.Sources, [&](const Source& source) {
      return source.Id != kDatabaseId &&
             std::ranges::find(source.Unfed, path) != source.Unfed.end();
    });
  }

  const Snapshot& snapshot_;
  const Limits& limits_;
  Origins origins_;
  const WrongRows wrong_rows_{snapshot_};
  Peers peers_{snapshot_, wrong_rows_};
  RulesByClass<ValueRule> value_rules_{ValueRules()};
  RulesByClass<ReadingRule> reading_rules_{ReadingRules()};
  std::vector<Finding> findings_;
  std::optional<bool> by_day_;
  const TreeElement* placed_ = nullptr;  // of the last finding; all of an element come together
  std::string place_;
};

}  // namespace

std::vector<Finding> FindFindings(const Snapshot& snapshot, const Limits& limits) {
  return Finder(snapshot, limits).Run();
}

}  // namespace insight
