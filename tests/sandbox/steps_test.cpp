// Steps: what changes between two cycles.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "sandbox/descriptor.h"
#include "sandbox/rows.h"
#include "sandbox/scenario.h"
#include "sandbox/testing.h"

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

Node FileNode(const std::string& bytes) { return {.Bytes = bytes}; }

Scenario FromTree(const Tree& tree) { return Scenario::FromTree(tree, "capture"); }

std::string Complaint(const Tree& tree) {
  try {
    FromTree(tree);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

ino_t InodeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(0, stat(path.c_str(), &status)) << path;
  return status.st_ino;
}

TEST(Steps, OnlyWhatAStepBringsChanges) {
  const Scenario scenario = FromTree({{"root/etc/kept", FileNode("kept")},
                                      {"root/etc/changed", FileNode("one")},
                                      {"root/etc/gone/inner", FileNode("one")},
                                      {"interfaces", FileNode("interface eth0\n")},
                                      {"rows.tsv", FileNode("A\t1\nB\t2\n")},
                                      {"steps/01/root/etc/changed", FileNode("two")},
                                      {"steps/01/root/etc/new", FileNode("two")},
                                      {"steps/01/removed", FileNode("root/etc/gone # a folder\n")},
                                      {"steps/01/rows.tsv", FileNode("C\t3\n")},
                                      {"steps/02/interfaces", FileNode("interface eth1\n")}});
  ASSERT_EQ(2U, scenario.Steps());
  scenario.Apply();
  const ino_t changed = InodeOf("/etc/changed");
  const unsigned int eth0 = if_nametoindex("eth0");
  EXPECT_EQ("one", ReadFile("/etc/changed"));

  scenario.Step(1).ApplyAfter(scenario);
  EXPECT_EQ("kept", ReadFile("/etc/kept"));
  EXPECT_EQ("two", ReadFile("/etc/changed"));
  EXPECT_EQ(changed, InodeOf("/etc/changed")) << "a program that holds it open sees the change";
  EXPECT_EQ("two", ReadFile("/etc/new"));
  EXPECT_FALSE(fs::exists("/etc/gone/inner"));
  EXPECT_EQ(eth0, if_nametoindex("eth0")) << "the same interface";
  EXPECT_THROW(RunSql("INSERT INTO status VALUES('C', '');"), std::runtime_error) << "C is there";
  RunSql("INSERT INTO status VALUES('A', '');");

  scenario.Step(2).ApplyAfter(scenario.Step(1));
  EXPECT_EQ("two", ReadFile("/etc/changed"));
  EXPECT_EQ(0U, if_nametoindex("eth0"));
  EXPECT_NE(0U, if_nametoindex("eth1"));
  EXPECT_THROW(static_cast<void>(scenario.Step(3)), std::out_of_range);
}

TEST(Steps, OfNodesFaultsAndUptimeAreApplied) {
  SANDBOX_NEEDS_DEVICES();
  constexpr unsigned long kRate = 0x8004DA0C;
  const Scenario scenario = FromTree({{"root/proc/meminfo", FileNode("abc")},
                                      {"devices/travex", FileNode("0x8004DA0C 1\n")},
                                      {"devices/zetdisplay", FileNode("")},
                                      {"faults", FileNode("/proc/meminfo open 13\n")},
                                      {"steps/01/devices/travex", FileNode("0x8004DA0C 2\n")},
                                      {"steps/01/faults", FileNode("/etc/resolv.conf open 5\n")},
                                      {"steps/01/uptime", FileNode("1000\n")},
                                      {"steps/01/removed", FileNode("devices/zetdisplay\n")},
                                      {"steps/02/removed", FileNode("faults\nuptime\n")}});
  scenario.Apply();
  const Descriptor node(open("/dev/travex", O_RDWR));
  EXPECT_EQ(1, ioctl(node.Number(), kRate));
  EXPECT_EQ(-1, open("/proc/meminfo", O_RDONLY));
  scenario.Step(1).ApplyAfter(scenario);
  EXPECT_EQ(2, ioctl(node.Number(), kRate));
  EXPECT_FALSE(fs::exists("/dev/zetdisplay"));
  EXPECT_EQ("abc", ReadFile("/proc/meminfo"));
  EXPECT_EQ(-1, open("/etc/resolv.conf", O_RDONLY));
  scenario.Step(2).ApplyAfter(scenario.Step(1));
  EXPECT_FALSE(fs::exists("/etc/resolv.conf"));
}

TEST(Steps, RowsThatAreGoneMakeTheQueryFail) {
  const Scenario scenario = FromTree({{"rows.tsv", FileNode("A\t1\n")},
                                      {"steps/01/removed", FileNode("rows.tsv\n")},
                                      {"steps/02/rows.tsv", FileNode("A\t2\n")}});
  scenario.Apply();
  RunSql("SELECT * FROM status;");
  const ino_t database = InodeOf(kDatabase);
  scenario.Step(1).ApplyAfter(scenario);
  EXPECT_THROW(RunSql("SELECT * FROM status;"), std::runtime_error);
  scenario.Step(2).ApplyAfter(scenario.Step(1));
  RunSql("SELECT * FROM status;");
  EXPECT_EQ(database, InodeOf(kDatabase));
}

TEST(Steps, AScenarioInCodeCanFollowAnother) {
  const Scenario first = Scenario().File("/etc/a", "1").File("/etc/b", "1").Row("A", "1");
  first.Apply();
  Scenario(first).File("/etc/a", "2").NoFile("/etc/b").ApplyAfter(first);
  EXPECT_EQ("2", ReadFile("/etc/a"));
  EXPECT_FALSE(fs::exists("/etc/b"));
}

TEST(Steps, TheirMistakesAreReportedWhenTheFolderIsRead) {
  struct Row {
    Tree Contents;
    const char* Complaint;
  };
  const Row rows[] = {
      {{{"steps/02/uptime", FileNode("1\n")}}, "capture/steps/01: this step is missing"},
      {{{"steps/1/uptime", FileNode("1\n")}},
       "capture/steps/1: steps are numbered 01, 02 and so on"},
      {{{"steps/first", FileNode("")}}, "capture/steps/first: steps are numbered 01, 02 and so on"},
      {{{"steps/01/uptime", FileNode("\nx\n")}}, "capture/steps/01/uptime: line 2: "},
      {{{"steps/01/removed", FileNode("root/etc/hosts\n")}},
       "capture/steps/01/removed: line 1: there is nothing to remove: root/etc/hosts"},
      {{{"steps/01/removed", FileNode("a b\n")}}, "capture/steps/01/removed: line 1: "},
      {{{"steps/01/removed", FileNode("document.xml\n")}}, "there is nothing to remove"},
      {{{"devices/travex/inner", FileNode("")}, {"devices/travex", {.What = Node::Kind::kFolder}}},
       "capture/devices/travex: not a file"},
      {{{"base", FileNode("demo\n")}}, "capture/base: "},
  };
  for (const auto& [contents, complaint] : rows) {
    EXPECT_THAT(Complaint(contents), HasSubstr(complaint));
  }
}

// The number of steps used to be that of the folders of an archive, each made from the first on.
TEST(Steps, AreAThousandAtMost) {
  Tree tree;
  const auto add = [&tree](int number) {
    const std::string name = (number < 10 ? "0" : "") + std::to_string(number);
    tree["steps/" + name] = {.What = Node::Kind::kFolder};
  };
  for (int number = 1; number <= 1000; ++number) {
    add(number);
  }
  EXPECT_EQ(1000U, FromTree(tree).Steps());
  add(1001);
  EXPECT_THAT(Complaint(tree), HasSubstr("capture/steps/1001: more than 1000 steps"));
  EXPECT_THAT(Complaint({{"steps/99999999999999999999999/uptime", FileNode("1")}}),
              HasSubstr("capture/steps/99999999999999999999999: steps are numbered 01"));
}

TEST(Steps, OneAfterTheOtherAreTheSameControllers) {
  SANDBOX_NEEDS_DEVICES();
  Tree tree = {{"root/etc/always", FileNode("0")}, {"devices/travex", FileNode("0x1 1\n")}};
  tree["steps/01/root/etc/number"] = FileNode("1");
  tree["steps/02/removed"] = FileNode("root/etc/always\ndevices/travex\n");
  tree["steps/02/root/etc/number"] = FileNode("2");
  const Scenario scenario = FromTree(tree);
  scenario.Apply();
  StepByStep steps(scenario);
  EXPECT_FALSE(steps.AtEnd());
  steps.ApplyNext();
  EXPECT_EQ("1", ReadFile("/etc/number"));
  EXPECT_EQ("0", ReadFile("/etc/always"));
  steps.ApplyNext();
  EXPECT_EQ("2", ReadFile("/etc/number"));
  EXPECT_FALSE(std::filesystem::exists("/etc/always"));
  EXPECT_TRUE(steps.AtEnd());
  StepByStep later(scenario, 1);
  EXPECT_FALSE(later.AtEnd());
}

// Whoever asks for nodes in the last step only needs the device file system, too.
TEST(Steps, SayWhetherAnyOfThemNeedsNodes) {
  Tree tree = {{"root/etc/number", FileNode("0")}, {"steps/01/root/etc/number", FileNode("1")}};
  EXPECT_FALSE(FromTree(tree).NeedsDevices());
  tree["steps/02/devices/travex"] = FileNode("0x1 1\n");
  EXPECT_TRUE(FromTree(tree).NeedsDevices());
}

TEST(Steps, AreReadInTheOrderOfTheirNumbers) {
  Tree tree;
  for (int number = 1; number <= 120; ++number) {
    const std::string name = (number < 10 ? "0" : "") + std::to_string(number);
    tree["steps/" + name + "/root/etc/number"] = FileNode(name);
  }
  const Scenario scenario = FromTree(tree);
  ASSERT_EQ(120U, scenario.Steps());
  scenario.Step(101).Apply();
  EXPECT_EQ("101", ReadFile("/etc/number"));
}

// A scenario used to be able to write through the links and mounts of the sandbox.
TEST(Steps, NothingIsWrittenOutsideOfTheSandbox) {
  for (const char* const path :
       {"root/proc/sys/kernel/hostname", "root/proc/self/comm", "root/.proc/sys/kernel/hostname",
        "root/usr/scenario", "root/bin/scenario", "root/dev/null", "root/.sandbox/devices/x",
        "root/dev/fd/1", "root/proc/sys/kernel"}) {
    const std::string name = ReadFile("/proc/sys/kernel/hostname");
    const Scenario scenario = FromTree({{path, FileNode("scenario")}});
    EXPECT_THROW(scenario.Apply(), std::runtime_error) << path;
    EXPECT_EQ(name, ReadFile("/proc/sys/kernel/hostname"));
  }
  const Scenario linked = FromTree({{"root/etc/link", {Node::Kind::kLink, "/proc/sys/kernel"}},
                                    {"root/etc/link/hostname", FileNode("scenario")}});
  EXPECT_THROW(linked.Apply(), std::runtime_error);
  EXPECT_NE("scenario\n", ReadFile("/proc/sys/kernel/hostname"));
  EXPECT_THROW(Scenario().Fault("/proc/self/comm", {.Open = 5}).Apply(), std::runtime_error);
}

}  // namespace
}  // namespace sandbox
