// docs/rows.md against the key table, the listing of the document and the handlers themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "collector/dispatch.h"
#include "collector/key_table.h"
#include "collector/state/scratch.h"
#include "handlers/fields.h"
#include "handlers/handlers.h"
#include "model/document.h"
#include "model/field_access.h"
#include "model/lookup/kinds.h"
#include "tests/packaging/markdown.h"
#include "tests/support/golden.h"

namespace {

using markdown::Cells;
using QtSts::ClassInfo;
using QtSts::CStatus;
using QtSts::Field;

// Columns of the table of keys.
enum KeyColumn { kKey, kFormat, kUnit, kField };

const std::string& Page() {
  static const std::string page = test_support::ReadSource("docs/rows.md");
  return page;
}

void Handle(const std::string& key, const std::string& value, CStatus* status) {
  rows::Dispatcher(status).Dispatch(key.c_str(), value.c_str());
}

const Field* FieldOf(const ClassInfo& info, std::string_view name, const void** object) {
  const Field* found = nullptr;
  QtSts::FieldAccess::Visit(info, const_cast<void*>(*object), [&](const Field& field, void* part) {
    if (field.Name == name) {
      found = &field;
      *object = part;
    }
    return found == nullptr;
  });
  return found;
}

struct Found {
  const Field* Where = nullptr;
  const void* Address = nullptr;
  std::string Value;  // as XML writes it; of a list the number of its elements
};

// The field at `path` of `status`, in first elements of lists; null when there is no such field.
Found Find(const CStatus& status, std::string_view path) {
  const ClassInfo* info = &CStatus::Class;
  const void* object = &status;
  for (;;) {
    const std::string_view name = path.substr(0, path.find('/'));
    const Field* const field = FieldOf(*info, name, &object);
    if (field == nullptr) {
      return {};
    }
    const void* const value = QtSts::FieldAccess::Read(*field, object);
    Found found{field, value, ""};
    if (field->Scalar != nullptr) {
      field->Scalar->Format(value, &found.Value);
    } else if (field->Elements != nullptr) {
      found.Value = std::to_string(QtSts::FieldAccess::Count(*field->Elements, value));
    }
    if (name.size() == path.size()) {
      return found;
    }
    path.remove_prefix(name.size() + 1);
    info = field->Record;
    object = value;
    if (field->Elements != nullptr) {
      const QtSts::CBaseStatus* const element = QtSts::FieldAccess::At(*field->Elements, value, 0);
      info = QtSts::ClassOf(*element);
      object = dynamic_cast<const void*>(element);
    }
  }
}

// What becomes of the field of a key when its row has `value`.
std::string Stored(const std::string& key, const std::string& value, const std::string& path) {
  CStatus status;
  Handle(key, value, &status);
  return Find(status, path).Value;
}

TEST(RowKeys, OnThePageAreTheKeyTable) {
  std::vector<std::string> documented;
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    documented.push_back(markdown::Name(row[kKey]));
  }
  std::vector<std::string> known;
  for (const StatusKey& key : status_primary_keys) {
    known.push_back(key.Key);
  }
  EXPECT_EQ(documented, known);
}

TEST(RowKeys, NameFieldsOfTheDocumentWithTheirUnits) {
  CStatus status;
  Handle("TtableRows", "1", &status);  // makes the output
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    SCOPED_TRACE(row[kKey]);
    const std::string path = markdown::Name(row[kField]);
    if (path.empty()) {
      EXPECT_EQ(row[kField], "");
      continue;
    }
    const Found found = Find(status, path);
    ASSERT_NE(found.Where, nullptr) << path;
    EXPECT_EQ(row[kUnit], found.Where->Unit);
  }
}

// The keys of a table, each with a field of the page when one of its rows goes there.
template <class Owner>
std::set<std::string> KeysWithTheirFields(std::span<const rows::Field<Owner>> table, Owner& owner,
                                          const CStatus& status) {
  std::set<std::string> keys;
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    for (const rows::Field<Owner>& field : table) {
      if (field.Name == markdown::Name(row[kKey]) &&
          field.Of(owner) == Find(status, markdown::Name(row[kField])).Address) {
        keys.emplace(field.Name);
      }
    }
  }
  return keys;
}

TEST(RowKeys, GoToTheFieldsOfThePageByTheTablesOfTheHandlers) {
  CStatus status;
  Handle("TtableRows", "1", &status);  // makes the output
  QtSts::COutput& output = *status.Outputs[0];
  std::set<std::string> keys = KeysWithTheirFields(handlers::RootFields(), status, status);
  keys.merge(KeysWithTheirFields(handlers::OutputFields(), output, status));
  keys.merge(KeysWithTheirFields(handlers::TtableFields(), output, status));
  std::set<std::string> documented;
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    const std::string key = markdown::Name(row[kKey]);
    if (!row[kField].empty() && !key.ends_with("_")) {
      documented.insert(key);
    }
  }
  EXPECT_EQ(keys, documented);
}

// What each format makes of three values: an integer beyond 16 bits with a fraction, a word, "1".
const std::map<std::string, std::vector<std::string>> kFormats = {
    {"text", {"65541.5", "true", "1"}},
    {"integer", {"65541", "0", "1"}},
    {"number", {"65541.5", "0", "1"}},
    {"flag", {"false", "true", "false"}},
};

TEST(RowKeys, AreReadInTheFormatOfThePage) {
  int checked = 0;
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    const std::string key = markdown::Name(row[kKey]);
    const std::string path = markdown::Name(row[kField]);
    SCOPED_TRACE(key);
    const auto format = kFormats.find(row[kFormat]);
    if (format == kFormats.end()) {
      EXPECT_TRUE(row[kFormat] == "word" || row[kFormat] == "mark" || key.ends_with("_") ||
                  path.empty())
          << row[kFormat];
      continue;
    }
    EXPECT_EQ(Stored(key, "65541.5", path), format->second[0]);
    EXPECT_EQ(Stored(key, "true", path), format->second[1]);
    EXPECT_EQ(Stored(key, "1", path), format->second[2]);
    ++checked;
  }
  EXPECT_GE(checked, 20);
}

TEST(RowKeys, ThatAreMarksSetTheirBit) {
  for (const auto& [key, bit] :
       {std::pair("MdlsAmbientFailure", 0x2000), std::pair("MdlsAmbientOverride", 0x4000)}) {
    EXPECT_EQ(Stored(key, "1", "Outputs/StatusFlags"), std::to_string(bit)) << key;
    EXPECT_EQ(Stored(key, "true", "Outputs/StatusFlags"), "0") << key;
  }
}

TEST(RowKeys, ThatAreKnownButNotUsedChangeNothing) {
  for (const Cells& row : markdown::Table(Page(), "Keys")) {
    if (row[kField].empty()) {
      CStatus status;
      Handle(markdown::Name(row[kKey]), "1", &status);
      EXPECT_EQ(status.Outputs.Count(), 0U) << row[kKey];
    }
  }
}

using WordsAndCodes = std::vector<std::pair<std::string, std::string>>;

WordsAndCodes Documented(std::string_view heading) {
  WordsAndCodes words;
  for (const Cells& row : markdown::Table(Page(), heading)) {
    words.emplace_back(markdown::Name(row[0]), row[1]);
  }
  return words;
}

WordsAndCodes InCode(const QtSts::CodeTable& table) {
  WordsAndCodes words;
  for (const QtSts::Code& code : table) {
    words.emplace_back(code.Text, std::to_string(code.Value));
  }
  return words;
}

template <class T>
std::multiset<typename T::value_type> Unordered(const T& values) {
  return {values.begin(), values.end()};
}

TEST(RowWords, OnThePageAreTheCodeTables) {
  const std::pair<const char*, QtSts::CodeTable> tables[] = {
      {"Dimming modes", QtSts::kDimmingModes},
      {"Fans overrides", QtSts::kFansOverrides},
      {"DCIO types", kDcioTypes},
      {"Locations", kAttachments},
      {"Lock states", QtSts::kLockStates},
  };
  for (const auto& [heading, table] : tables) {
    EXPECT_EQ(Unordered(Documented(heading)), Unordered(InCode(table))) << heading;
  }
}

TEST(RowWords, OfProductFamiliesStandInTheOrderOfTheSearch) {
  EXPECT_EQ(Documented("Product families"), InCode(QtSts::kProductFamilies));
  EXPECT_EQ(Stored("ProductFamily", "qtm2100", "ProductFamily"), "8");
}

TEST(DcioRows, FillEveryVariableOfADevice) {
  std::set<std::string> fields;
  std::vector<std::string> documented;
  for (const Cells& row : markdown::Table(Page(), "DCIO devices")) {
    const std::string name = markdown::Name(row[0]);
    SCOPED_TRACE(name);
    documented.push_back(name);
    const auto attribute =
        std::ranges::find(handlers::DcioAttributes(), name, &rows::Attribute::Name);
    ASSERT_NE(attribute, handlers::DcioAttributes().end());
    EXPECT_EQ(row[1], attribute->Reader->Name);
    if (name == "Type") {
      continue;
    }
    fields.insert(markdown::Name(row[3]));
    CStatus status;
    Handle("DCIO_00_" + name, "-1", &status);
    EXPECT_EQ(*static_cast<std::uint32_t*>(attribute->Where->Address), 4294967295U);
  }
  EXPECT_EQ(documented.size(), handlers::DcioAttributes().size());
  EXPECT_EQ(fields,
            (std::set<std::string>{"Address", "ErrorCounter", "NumberOfAttributes", "State"}));
}

TEST(DcioRows, OfEveryTypeMakeTheElementWithItsFields) {
  for (const Cells& row : markdown::Table(Page(), "DCIO types")) {
    SCOPED_TRACE(row[0]);
    CStatus status;
    Handle("DCIO_00_Type", markdown::Name(row[0]), &status);
    const QtSts::CDCIODevice* const device = status.DCIO.Devices[0];
    ASSERT_NE(device, nullptr);
    const ClassInfo* const device_class = QtSts::ClassOf(*device);
    EXPECT_EQ(device_class->Name, markdown::Name(row[2]));
    EXPECT_EQ(device->State != nullptr, row[3] == "all");
    EXPECT_EQ(device->ErrorCounter != nullptr, row[3] == "all");
    const auto kind =
        std::ranges::find(elements::DcioKinds(), device_class, &elements::DcioKind::Class);
    EXPECT_EQ(kind->Takes.size() + 1, row[3] == "all" ? handlers::DcioAttributes().size() : 3)
        << "every attribute but the type";
  }
}

}  // namespace
