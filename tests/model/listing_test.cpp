#include "model/listing.h"

#include <cxxabi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "model/can_sensors.h"
#include "model/document.h"
#include "model/listing_rows.h"
#include "tests/model/forgetful.h"
#include "tests/model/record_layouts.h"
#include "tests/support/paths.h"
#include "tests/support/temporary_folder.h"

constexpr QtSts::Field kForgetfulFields[] = {
    QtSts::listing::Of<&Forgetful::Kept>("Kept", "", "Kept"),
};
constinit const QtSts::ClassInfo Forgetful::Class =
    QtSts::listing::Root<Forgetful>("Forgetful", "Lacks a member", kForgetfulFields);

namespace {

using QtSts::ClassInfo;
using QtSts::Field;
using record_layouts::Layouts;
using record_layouts::Line;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<const ClassInfo*> Listed() {
  const auto classes = QtSts::Classes();
  std::vector<const ClassInfo*> listed(classes.begin(), classes.end());
  EXPECT_GT(listed.size(), 50U) << "what holds for all of them says nothing";
  return listed;
}

std::vector<const Field*> FieldsOf(const ClassInfo& info) {
  std::vector<const Field*> fields;
  for (const Field& field : info.OwnFields()) {
    fields.push_back(&field);
  }
  return fields;
}

// "QtSts::CArea"
std::string CppName(const ClassInfo& info) {
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(info.Type->name(), nullptr, nullptr, nullptr), &std::free);
  return name.get();
}

const ClassInfo* ListedAs(const std::string& cpp_name) {
  for (const ClassInfo* info : Listed()) {
    if (CppName(*info) == cpp_name) {
      return info;
    }
  }
  return nullptr;
}

struct Headers {
  std::vector<std::string> Paths;    // of those that define such classes
  std::vector<std::string> Classes;  // every exported class that they define
};

Headers ModelHeaders() {
  static const std::regex definition(R"(class STATUS_API (\w+)( :| \{))");
  Headers headers;
  for (const auto& file :
       std::filesystem::directory_iterator(test_support::SourceTree() + "/model")) {
    if (file.path().extension() != ".h") {
      continue;
    }
    std::ostringstream stream;
    stream << std::ifstream(file.path()).rdbuf();
    const std::string text = stream.str();
    const std::size_t classes = headers.Classes.size();
    for (std::sregex_iterator match(text.begin(), text.end(), definition), end; match != end;
         ++match) {
      headers.Classes.push_back("QtSts::" + (*match)[1].str());
    }
    if (headers.Classes.size() > classes) {
      headers.Paths.push_back("model/" + file.path().filename().string());
    }
  }
  return headers;
}

// What the listing of `info` must have: the class's own members and those of its bases without a
// listing; a second listed base counts by its class name.
std::vector<std::string> Members(const ClassInfo& info, const std::vector<Line>& layout) {
  std::vector<std::string> members;
  int depth = 1;  // where own members stand; deeper within a base without a listing
  for (const Line& line : layout) {
    depth = std::min(depth, std::max(line.Depth, 1));
    if (line.Depth != depth) {
      continue;
    }
    if (!line.Base) {
      members.push_back(line.Name);
      continue;
    }
    const ClassInfo* const base = ListedAs(line.Name);
    if (base == nullptr) {
      ++depth;
    } else if (base != info.Base) {
      members.push_back(line.Name);
    }
  }
  return members;
}

// The names in the listing, in the same terms.
std::vector<std::string> ListedMembers(const ClassInfo& info, const std::vector<Line>& layout) {
  std::set<std::string> bases;
  for (const Line& line : layout) {
    if (line.Base && line.Depth == 1) {
      bases.insert(line.Name);
    }
  }
  std::vector<std::string> members;
  for (const Field* field : FieldsOf(info)) {
    const bool base = field->Record != nullptr && bases.count(CppName(*field->Record)) > 0;
    members.push_back(base ? CppName(*field->Record) : field->Name);
  }
  return members;
}

TEST(Listing, LacksNoDataMemberOfItsClass) {
  const Headers headers = ModelHeaders();
  const Layouts layouts = record_layouts::Dump(headers.Paths, headers.Classes);
  for (const ClassInfo* info : Listed()) {
    SCOPED_TRACE(CppName(*info));
    ASSERT_TRUE(layouts.count(CppName(*info)) == 1) << "the compiler knows no such class";
    const std::vector<Line>& layout = layouts.at(CppName(*info));
    EXPECT_EQ(ListedMembers(*info, layout), Members(*info, layout));
  }
}

// The proof above is worth nothing if it cannot fail.
TEST(Listing, IsFoundOutWhenItLacksAMember) {
  const Layouts layouts = record_layouts::Dump({"tests/model/forgetful.h"}, {"Forgetful"});
  const std::vector<Line>& layout = layouts.at("Forgetful");
  EXPECT_THAT(Members(Forgetful::Class, layout), ElementsAre("Kept", "Forgotten"));
  EXPECT_THAT(ListedMembers(Forgetful::Class, layout), ElementsAre("Kept"));
}

// The compiler used to take headers that stood in the folder for temporary files.
TEST(Listing, IsComparedWithTheHeadersOfTheSourcesAlone) {
  const test_support::TemporaryFolder folder;
  std::filesystem::create_directories(folder.Path() + "/tests/model");
  std::ofstream(folder.Path() + "/tests/model/forgetful.h") << "#error of somebody else\n";
  setenv("TEST_TMPDIR", folder.Path().c_str(), 1);
  EXPECT_NO_THROW(record_layouts::Dump({"tests/model/forgetful.h"}, {"Forgetful"}));
  unsetenv("TEST_TMPDIR");
}

TEST(Listing, ExistsForEveryModelClass) {
  const Headers headers = ModelHeaders();
  const Layouts layouts = record_layouts::Dump(headers.Paths, headers.Classes);
  const std::set<std::string> roots = {"QtSts::CBaseStatus", "QtSts::CListedStatus"};
  int model_classes = 0;
  for (const std::string& name : headers.Classes) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(layouts.count(name) == 1) << "the compiler knows no such class";
    bool model_class = false;
    for (const Line& line : layouts.at(name)) {
      model_class = model_class || (line.Base && line.Name == "QtSts::CBaseStatus");
      if (line.Depth == 1 && !line.Base) {
        break;  // bases of members follow, which say nothing about the class
      }
    }
    if (model_class && roots.count(name) == 0) {
      ++model_classes;
      EXPECT_NE(ListedAs(name), nullptr) << "is missing from Classes()";
    }
  }
  EXPECT_GT(model_classes, 50);
}

TEST(Listing, NamesEachClassOnce) {
  std::set<std::string> names;
  for (const ClassInfo* info : Listed()) {
    SCOPED_TRACE(info->Name);
    EXPECT_TRUE(names.insert(info->Name).second);
    EXPECT_EQ(QtSts::ClassNamed(info->Name), info);
    if (info->Create != nullptr) {
      const std::unique_ptr<QtSts::CBaseStatus> made(info->Create());
      EXPECT_EQ(QtSts::ClassOf(*made), info);
    }
  }
  EXPECT_EQ(QtSts::ClassNamed("Nothing"), nullptr);
}

TEST(Listing, NamesClassesAsInTheProgramWithoutTheLeadingC) {
  const std::set<std::string> exceptions = {"MaintenanceHeaterOutputType"};
  for (const ClassInfo* info : Listed()) {
    const std::string cpp = CppName(*info).substr(std::string("QtSts::").size());
    const bool prefixed = cpp.size() > 1 && cpp[0] == 'C' && std::isupper(cpp[1]) != 0;
    if (exceptions.count(info->Name) == 0) {
      EXPECT_EQ(info->Name, prefixed ? cpp.substr(1) : cpp);
    }
  }
}

TEST(Listing, NamesEachFieldOnceWithinItsClassAndBases) {
  for (const ClassInfo* info : Listed()) {
    std::set<std::string> names;
    QtSts::VisitEveryField(*info, [&](const Field& field) {
      SCOPED_TRACE(std::string(info->Name) + "/" + field.Name);
      EXPECT_TRUE(names.insert(field.Name).second);
      EXPECT_TRUE(std::regex_match(field.Name, std::regex("[A-Za-z][A-Za-z0-9]*")));
      return true;
    });
  }
}

TEST(Listing, IsWalkedFromTheFirstBaseToTheClassItselfUntilTheVisitorStops) {
  std::vector<std::string> all;
  EXPECT_TRUE(QtSts::VisitEveryField(QtSts::CCANTempSensor::Class, [&all](const Field& field) {
    all.emplace_back(field.Name);
    return true;
  }));
  EXPECT_THAT(all, ElementsAre("NumberOfAttributes", "Connected", "SyncLossCounter", "Address",
                               "Bus", "Face", "Revision", "IdType", "HardwareID", "Celsius"));
  std::vector<std::string> some;
  EXPECT_FALSE(QtSts::VisitEveryField(QtSts::CCANTempSensor::Class, [&some](const Field& field) {
    some.emplace_back(field.Name);
    return some.size() < 2;
  }));
  EXPECT_THAT(some, ElementsAre("NumberOfAttributes", "Connected"));
}

TEST(Listing, FindsAFieldOfTheClassOrOfABaseByItsName) {
  const ClassInfo& info = QtSts::CCANTempSensor::Class;
  EXPECT_EQ(QtSts::FieldNamed(info, "Celsius"), FieldsOf(info).front());
  EXPECT_EQ(QtSts::FieldNamed(info, "SyncLossCounter"),
            QtSts::FieldNamed(QtSts::CSensor::Class, "SyncLossCounter"));
  EXPECT_EQ(QtSts::FieldNamed(info, "Humidity"), nullptr);
  EXPECT_EQ(QtSts::FieldNamed(info, ""), nullptr);
}

TEST(Listing, GivesEachMeaningInOneSentenceWithoutTheStop) {
  const auto is_sentence = [](const std::string& text) {
    return std::regex_match(text, std::regex("[A-Z0-9].*[^.\\s]"));
  };
  for (const ClassInfo* info : Listed()) {
    SCOPED_TRACE(info->Name);
    EXPECT_TRUE(is_sentence(info->About)) << info->About;
    for (const Field* field : FieldsOf(*info)) {
      EXPECT_TRUE(is_sentence(field->About)) << field->Name << ": " << field->About;
    }
  }
}

TEST(Listing, HoldsExactlyOneKindOfThingInAField) {
  for (const ClassInfo* info : Listed()) {
    for (const Field* field : FieldsOf(*info)) {
      SCOPED_TRACE(std::string(info->Name) + "/" + field->Name);
      EXPECT_NE(field->Scalar != nullptr, field->Record != nullptr);
      EXPECT_TRUE(field->Elements == nullptr || field->Record != nullptr);
      EXPECT_TRUE(field->Codes.empty() || field->Scalar != nullptr);
    }
  }
}

TEST(IsA, GoesFromTheDerivedClassToTheBaseOnly) {
  const ClassInfo& sensor = QtSts::CSensor::Class;
  const ClassInfo& can = QtSts::CCANSensor::Class;
  EXPECT_TRUE(QtSts::IsA(can, sensor));
  EXPECT_TRUE(QtSts::IsA(sensor, sensor));
  EXPECT_FALSE(QtSts::IsA(sensor, can));
  EXPECT_FALSE(QtSts::IsA(QtSts::CArea::Class, sensor));
}

}  // namespace
