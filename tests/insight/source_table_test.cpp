// The table of sources against README.md, against the listing of the document, and against what a
// cycle asks.
#include "insight/source_table.h"

#include <algorithm>

#include "collector/observer.h"
#include "model/document.h"
#include "sandbox/testing.h"
#include "tests/insight/source_fixture.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

using insight::Feed;
using insight::FeedTable;
using insight::Part;
using insight::SourceInfo;
using insight::SourceTable;
using QtSts::ClassInfo;

TEST(SourceTable, IsTheOneOfTheReadme) {
  const auto rows = markdown::Table(test_support::ReadSource("README.md"), "What it reads");
  ASSERT_EQ(rows.size(), SourceTable().size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const SourceInfo& source = SourceTable()[i];
    std::string name = rows[i].at(0);
    std::erase_if(name, [](char c) { return c == '"' || c == '`'; });
    EXPECT_EQ(name, source.Name);
    EXPECT_EQ(rows[i].at(2), source.Required ? "required" : "optional") << name;
  }
}

// Whether the listing has a path; positions in lists count for nothing.
bool IsListed(const std::string& path) {
  const ClassInfo* info = &QtSts::CStatus::Class;
  const QtSts::Field* field = nullptr;
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    std::string name = path.substr(begin, end - begin);
    const std::size_t bracket = name.find('[');
    field = info == nullptr ? nullptr : QtSts::FieldNamed(*info, name.substr(0, bracket));
    if (field == nullptr || (bracket != std::string::npos && field->Elements == nullptr)) {
      return false;
    }
    info = field->Record;
    begin = end + 1;
  }
  return field->Scalar != nullptr || field->Elements != nullptr;
}

TEST(SourceTable, NamesFieldsOfTheListing) {
  EXPECT_FALSE(IsListed("Outputs[0]/Dimming/Level"));
  for (const Feed& feed : FeedTable()) {
    std::string field = feed.Field;
    if (const std::size_t mark = field.find("%d"); mark != std::string::npos) {
      field.replace(mark, 2, "0");
    }
    EXPECT_TRUE(field.empty() || feed.Needs == Part::kSpoils || IsListed(field)) << field;
  }
}

// Every probe, source, request and label of a cycle, as the table has them.
class TableWatcher : public observe::Observer {
 public:
  void See(const observe::Event& event) override {
    if (const auto* const begins = event.As<observe::ProbeBegins>()) {
      probe_ = begins->Probe;
    } else if (const auto* const asks = event.As<observe::Asks>()) {
      if (asks->What == observe::Call::kRequest) {
        ++seen_;
        EXPECT_TRUE(Has([&](const Feed& feed) {
          return feed.Request == asks->Number &&
                 insight::SourceNamed(feed.Source).Name == asks->Source;
        })) << probe_
            << " asks " << asks->Source << ' ' << std::hex << asks->Number;
      } else if (asks->What == observe::Call::kOpen && asks->Descriptor == -1) {
        ++seen_;
        EXPECT_TRUE(Has([&](const Feed& feed) { return IsPathOf(feed.Source, asks->Source); }))
            << probe_ << " opens " << asks->Source;
      }
    } else if (const auto* const label = event.As<observe::Label>()) {
      ++seen_;
      EXPECT_TRUE(probe_ == "Network" || Has([&](const Feed& feed) {
                    return feed.Label != nullptr && label->Text == std::string(feed.Label);
                  }))
          << probe_ << " looks for " << label->Text;
    }
  }

  int Seen() const { return seen_; }

 private:
  template <class Matches>
  bool Has(const Matches& matches) const {
    return std::ranges::any_of(
        FeedTable(), [&](const Feed& feed) { return probe_ == feed.Probe && matches(feed); });
  }

  // The path of the source, or a folder on the way to one that is walked.
  static bool IsPathOf(const char* id, const std::string& path) {
    const SourceInfo& source = insight::SourceNamed(id);
    std::string name = source.Name;
    if (const std::size_t mark = name.find("%s"); mark != std::string::npos) {
      name.replace(mark, 2, path.find("eth1") == std::string::npos ? "eth0" : "eth1");
    }
    return name == path || (source.Trusted && name.starts_with(path));
  }

  std::string probe_;
  int seen_ = 0;
};

TEST(SourceTable, HasAllThatACycleAsks) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Contrary());
  TableWatcher watcher;
  observe::SetObserver(&watcher);
  Cycle();
  observe::SetObserver(nullptr);
  EXPECT_GT(watcher.Seen(), 60);
}

TEST(SourceTable, GivesEverySourceOfACycleFieldsOfTheListing) {
  SANDBOX_NEEDS_DEVICES();
  Apply(Contrary());
  const insight::Snapshot snapshot = Cycle();
  EXPECT_EQ(snapshot.Sources.size(), SourceTable().size() + 4);  // a second interface
  for (const insight::Source& source : snapshot.Sources) {
    EXPECT_TRUE(!source.Fields.empty() || source.Id.starts_with("carrier:")) << source.Id;
    for (const std::string& field : source.Fields) {
      EXPECT_TRUE(IsListed(field)) << source.Id << ' ' << field;
      EXPECT_TRUE(snapshot.Document.Root().FindValue(field) != nullptr ||
                  snapshot.Document.Root().Find(field) != nullptr)
          << source.Id << ' ' << field;
    }
  }
}

}  // namespace
