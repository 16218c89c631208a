// Random rows through two cycles: a snapshot changes nothing, and every difference that its rows
// make is claimed by one of them.
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "collector/key_table.h"
#include "collector/observer.h"
#include "model/compare.h"
#include "model/text.h"
#include "model/xml.h"
#include "tests/insight/row_fixture.h"
#include "tests/sensors/row_maker.h"

namespace {

namespace listing = QtSts::listing;
using Texts = std::map<std::string, std::string>;

// Rows of sensors from the maker of random rows, and rows of all other keys.
sandbox::Rows MakeRows(unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  const auto pick = [&below](std::initializer_list<const char*> texts) {
    return std::string(std::data(texts)[below(texts.size())]);
  };
  const Rows sensors = RowMaker(seed).Make();
  sandbox::Rows rows(sensors.begin(), sensors.end());
  for (int i = 0; i < 60; ++i) {
    std::string key = status_primary_keys[below(status_primary_keys.size())].Key;
    if (key.ends_with('_')) {
      key += pick({"0", "1", "2", "00", "10", "-1", "x", "4294967296", ""});
      key +=
          pick({"", "_Type", "_Type", "_State", "_Address", "_ErrCnt", "_NumAttribute", "_Zone"});
    } else {
      key += pick({"", "", "", "", "X"});
    }
    rows[key] = pick({"1", "true", "manual", "auto", "none", "sensor", "DoorSwitch", "RunLED", "",
                      "62.5", "62,5", "-1", "99999999999", "qtm3300", "a\xFF", "Local_CAN"});
  }
  rows["GUID"] = nullptr;
  return rows;
}

// The two cycles of an input of the fuzz target of rows: a row a line, key and value with a tab
// between them, a line "=" between the cycles.
std::vector<sandbox::Rows> CyclesOf(const std::filesystem::path& input) {
  std::ifstream file(input, std::ios::binary);
  std::vector<sandbox::Rows> cycles(1);
  for (std::string line; std::getline(file, line);) {
    const std::size_t tab = std::min(line.find('\t'), line.size());
    if (line == "=") {
      cycles.emplace_back();
    } else {
      cycles.back()[line.substr(0, tab)] = line.substr(std::min(tab + 1, line.size()));
    }
  }
  return cycles;
}

std::string WithoutTime(QtSts::CStatus& status) {
  status.LocalTime.clear();
  status.Uptime.clear();
  return QtSts::WriteDocument(status);
}

// ---- The scratch state, value by value

template <class T>
std::string TextOf(const QtSts::ScalarType& type, const T& value) {
  std::string text;
  type.Format(&value, &text);
  QtSts::CleanText(&text);
  return text;
}

void Add(const std::string& name, bool value, Texts* texts) {
  (*texts)[name] = TextOf(listing::kBool, value);
}
void Add(const std::string& name, float value, Texts* texts) {
  (*texts)[name] = TextOf(listing::kFloat, value);
}
void Add(const std::string& name, double value, Texts* texts) {
  (*texts)[name] = TextOf(listing::kDouble, value);
}
template <class T>
requires std::is_enum_v<T> || std::is_integral_v<T>
void Add(const std::string& name, T value, Texts* texts) { (*texts)[name] = std::to_string(value); }
void Add(const std::string& name, const BeaconRoundel& beacon, Texts* texts) {
#define ADD(field, ...) Add(name + "." #field, beacon.field, texts);
  BEACON_ROUNDEL_FIELDS(ADD)
#undef ADD
}
void Add(const std::string& name, const std::map<std::uint8_t, std::uint16_t>& fans, Texts* texts) {
  for (const auto& [number, speed] : fans) {
    Add(name + "[" + std::to_string(number) + "]", speed, texts);
  }
}
void Add(const std::string& name, const std::vector<float>& voltages, Texts* texts) {
  for (std::size_t i = 0; i < voltages.size(); ++i) {
    Add(name + "[" + std::to_string(i) + "]", voltages[i], texts);
  }
}
template <std::size_t kCount>
void Add(const std::string& name, const std::array<DcioPoint, kCount>& points, Texts* texts) {
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::string point = name + "[" + std::to_string(i) + "].";
    Add(point + "Present", points[i].Present, texts);
    Add(point + "Type", points[i].Type, texts);
    Add(point + "Index", points[i].Index, texts);
    Add(point + "State", points[i].State, texts);
    (*texts)[point + "Label"] = TextOf(listing::kText, points[i].Label);
  }
}

Texts ScratchTexts() {
  Texts texts;
#define ADD(name, ...) Add(#name, name, &texts);
  SCRATCH_VARIABLES(ADD)
#undef ADD
  return texts;
}

// ---- Claims

std::string At(const Texts& texts, const std::string& path) {
  const auto found = texts.find(path);
  return found == texts.end() ? "" : found->second;
}

// Every value, and every element of a list with the name of its class.
Texts DocumentTexts(const QtSts::DocumentTree& tree) {
  Texts texts;
  for (const QtSts::TreeElement& element : tree.Elements()) {
    if (element.Class() != nullptr && element.Listed() == nullptr) {
      texts[element.Path()] = element.Class()->Name;
    }
    for (const QtSts::TreeValue& value : element.Values()) {
      texts[element.PathOf(value)] = value.Written();
    }
  }
  return texts;
}

// What stood somewhere before the first row that claims it and after the last one; each row goes on
// from what the one before it left.
std::map<std::string, std::pair<std::string, std::string>> ClaimsOf(
    const std::vector<insight::Row>& rows, std::vector<insight::Change> insight::Row::*changes) {
  std::map<std::string, std::pair<std::string, std::string>> claims;
  for (const insight::Row& row : rows) {
    for (const insight::Change& change : row.*changes) {
      const auto [claim, is_first] = claims.try_emplace(change.Path, change.Before, change.After);
      if (!is_first) {
        EXPECT_EQ(change.Before, claim->second.second) << row.Key << " claims " << change.Path;
        claim->second.second = change.After;
      }
    }
  }
  return claims;
}

// Keeps what stood there before the rows.
class BeforeRows : public observe::Observer {
 public:
  explicit BeforeRows(const QtSts::CStatus& status) : status_(status) {
    observe::SetObserver(this);
  }
  BeforeRows(const BeforeRows&) = delete;
  BeforeRows& operator=(const BeforeRows&) = delete;
  ~BeforeRows() override { observe::SetObserver(nullptr); }

  void See(const observe::Event& event) override {
    const auto* const asks = event.As<observe::AsksDatabase>();
    if (asks != nullptr && asks->At == observe::Stage::kRows) {
      Document = DocumentTexts(QtSts::DocumentTree(status_));
      Scratch = ScratchTexts();
    }
  }

  Texts Document;
  Texts Scratch;

 private:
  const QtSts::CStatus& status_;
};

class RandomRows : public ExplainedRows {
 protected:
  void ExpectClaims(const BeforeRows& before) const {
    const Texts after = DocumentTexts(snapshot_->Document);
    const auto claims = ClaimsOf(snapshot_->Rows, &insight::Row::Changes);
    for (const auto& [path, claim] : claims) {
      EXPECT_EQ(claim.second, At(after, path)) << path;
      if (before.Document.contains(path)) {
        EXPECT_EQ(claim.first, At(before.Document, path)) << path;
      }
    }
    for (const auto& [path, text] : before.Document) {
      EXPECT_TRUE(At(after, path) == text || claims.contains(path)) << path;
    }
    ExpectNewOnesClaimed(before, after, claims);
    ExpectScratchClaims(before);
  }

 private:
  // What was not there before belongs to an element that a row claims.
  template <class Claims>
  static void ExpectNewOnesClaimed(const BeforeRows& before, const Texts& after,
                                   const Claims& claims) {
    for (const auto& [path, text] : after) {
      if (before.Document.contains(path)) {
        continue;
      }
      bool claimed = claims.contains(path);
      for (std::size_t end = path.find(']'); !claimed && end != std::string::npos;
           end = path.find(']', end + 1)) {
        claimed = claims.contains(path.substr(0, end + 1));
      }
      EXPECT_TRUE(claimed) << path;
    }
  }

  void ExpectScratchClaims(const BeforeRows& before) const {
    const Texts after = ScratchTexts();
    const auto claims = ClaimsOf(snapshot_->Rows, &insight::Row::Carried);
    for (const auto& [name, claim] : claims) {
      EXPECT_EQ(claim.first, At(before.Scratch, name)) << name;
      EXPECT_EQ(claim.second, At(after, name)) << name;
    }
    for (const Texts* texts : {&before.Scratch, &after}) {
      for (const auto& [name, text] : *texts) {
        EXPECT_TRUE(At(before.Scratch, name) == At(after, name) || claims.contains(name)) << name;
      }
    }
  }
};

constexpr unsigned kSeeds = 40;

// Runs cycles with and without a recorder, each with a scratch state of its own.
void ExpectTheSame(const std::vector<sandbox::Rows>& cycles) {
  CStatusInterface plain;
  plain.InitDatabase(false);
  CStatusInterface observed;
  observed.InitDatabase(false);
  insight::Recorder recorder(observed);
  Scratch of_plain;
  Scratch of_observed;
  for (const sandbox::Rows& rows : cycles) {
    sandbox::SetRows(rows);
    RestoreScratch(of_plain);
    plain.QueryDatabase();
    const Texts expected = ScratchTexts();  // not-a-number equals itself here
    of_plain = SaveScratch();
    RestoreScratch(of_observed);
    recorder.RunCycle();
    of_observed = SaveScratch();
    ASSERT_EQ(WithoutTime(observed.m_Status), WithoutTime(plain.m_Status));
    ASSERT_EQ(ScratchTexts(), expected);
  }
}

TEST_F(RandomRows, GiveTheDocumentAndTheScratchStateThatPlainCyclesGive) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    ExpectTheSame({MakeRows(seed), MakeRows(seed + 1000)});
    ASSERT_FALSE(HasFatalFailure());
  }
}

TEST_F(RandomRows, OfTheFuzzersAreClaimedAndChangeNothing) {
  BeforeRows before(collector_.m_Status);
  std::size_t inputs = 0;
  for (const auto& input :
       std::filesystem::directory_iterator(sandbox::SourcePath("fuzz/corpus/rows"))) {
    SCOPED_TRACE(input.path());
    const std::vector<sandbox::Rows> cycles = CyclesOf(input.path());
    for (const sandbox::Rows& rows : cycles) {
      Explain(rows);
      ExpectClaims(before);
    }
    observe::SetObserver(nullptr);
    ExpectTheSame(cycles);
    observe::SetObserver(&before);
    ++inputs;
  }
  EXPECT_GT(inputs, 3U);
}

TEST_F(RandomRows, ClaimEachDifferenceThatTheyMakeAndNoOther) {
  const BeforeRows before(collector_.m_Status);
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    Explain(MakeRows(seed));
    ASSERT_GT(snapshot_->Rows.size(), 50U);
    ExpectClaims(before);
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(RandomRows, HaveEachARemarkAndTheWorstOneFirst) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    Explain(MakeRows(seed));
    for (const insight::Row& row : snapshot_->Rows) {
      ASSERT_FALSE(row.Remarks.empty());
      for (const insight::Remark& remark : row.Remarks) {
        EXPECT_FALSE(remark.Text.empty()) << row.Key;
        EXPECT_LE(insight::InfoOf(remark.What).Class, row.Class());
        const std::string& part = remark.Part == insight::RowPart::kKey ? row.Key : row.Value;
        EXPECT_LE(remark.Begin, remark.End);
        EXPECT_LE(remark.End, remark.Part == insight::RowPart::kNone ? 0 : part.size());
      }
    }
  }
}

// The path of a row is where its value stands in the document.
TEST_F(RandomRows, HaveThePathsOfTheirValues) {
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    Explain(MakeRows(seed));
    const Texts after = DocumentTexts(snapshot_->Document);
    std::map<std::string, std::string> last;
    for (const insight::Row& row : snapshot_->Rows) {
      if (!row.Path.empty()) {
        last[row.Path] = row.After;
      }
    }
    for (const auto& [path, text] : last) {
      EXPECT_EQ(text, At(after, path)) << path;
    }
    ASSERT_FALSE(HasFailure());
  }
}

}  // namespace
