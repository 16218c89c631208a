#include "hardware/parse_packages.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/hardware/exact.h"

namespace {

// A stanza of the package database.
std::string Stanza(const std::string& package, const std::string& version) {
  return "Package: " + package + "\nStatus: install ok installed\n" +
         (version.empty() ? "" : "Version: " + version + "\n") + "Description: no matter\n\n";
}

// Copies, because the parser's result points into its text.
std::optional<std::string> Firmware(const std::string& packages) {
  const ExactView text(packages);
  const auto version = hardware::ParsePackages(text).Distribution;
  return version ? std::optional<std::string>(*version) : std::nullopt;
}

std::optional<std::string> DisplayFirmware(const std::string& packages) {
  const ExactView text(packages);
  const auto version = hardware::ParsePackages(text).DisplayFirmware;
  return version ? std::optional<std::string>(*version) : std::nullopt;
}

TEST(FirmwareVersion, IsTheRestOfTheVersionLine) {
  EXPECT_EQ(Firmware(Stanza("bash", "5.2") + Stanza("qtm-distro", "4.1~rc2 (beta)\r") +
                     Stanza("zip", "3.0")),
            "4.1~rc2 (beta)\r");
  EXPECT_EQ(Firmware("Package: qtm-distro\nVersion: 4.1"), "4.1");
  EXPECT_EQ(Firmware("Package: qtm-distro\nVersion: \n"), "");
  EXPECT_EQ(Firmware("Package: qtm-distro\nVersion: "), "");
}

TEST(FirmwareVersion, MatchesALongerPackageNameToo) {
  EXPECT_EQ(Firmware(Stanza("qtm-distro-extra", "1.0") + Stanza("qtm-distro", "2.0")), "1.0");
}

TEST(FirmwareVersion, IsSearchedFromTheLineBehindThePackage) {
  EXPECT_EQ(Firmware("Package: qtm-distro Version: 1\nVersion: 2\n"), "2");
  EXPECT_EQ(Firmware("Version: 1\nPackage: qtm-distro\nConfig-Version: 3\n"), "3");
}

TEST(FirmwareVersion, IsTakenFromALaterStanzaWhenItsOwnHasNone) {
  EXPECT_EQ(Firmware(Stanza("qtm-distro", "") + Stanza("zip", "3.0")), "3.0");
}

TEST(FirmwareVersion, IsAbsentWithoutPackageOrVersion) {
  for (const std::string& packages :
       {std::string(), Stanza("qtm-distr", "1"), Stanza("bash", "5.2"),
        std::string("Package: qtm-distro"), std::string("Package: qtm-distro\n"),
        std::string("Package: qtm-distro\nVersion:1\n"), Stanza("qtm-distro", "")}) {
    SCOPED_TRACE(packages);
    EXPECT_EQ(Firmware(packages), std::nullopt);
  }
}

TEST(FirmwareVersion, MayBeOfAnyLength) {
  const std::string version(100000, '1');
  EXPECT_EQ(Firmware(Stanza("qtm-distro", version)), version);
}

TEST(DisplayFirmwareVersion, EndsAtTheFirstForeignCharacter) {
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "1.2.3-4ubuntu1")), "1.2.3-4");
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "0123456789abcdef.-g")), "0123456789abcdef.-");
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "1.2~3")), "1.2");
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "1A")), "1");
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "1 2")), "1");
  EXPECT_EQ(DisplayFirmware("Package: dispfw\nVersion: 1.2"), "1.2");
}

TEST(DisplayFirmwareVersion, MayBeEmpty) {
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "v1.2")), "");
  EXPECT_EQ(DisplayFirmware("Package: dispfw\nVersion: "), "");
}

TEST(DisplayFirmwareVersion, PrefersDispfwWhereverItStands) {
  EXPECT_EQ(DisplayFirmware(Stanza("display-firmware", "1.0") + Stanza("dispfw", "2.0")), "2.0");
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw-tools", "3.0") + Stanza("dispfw", "2.0")), "3.0");
}

TEST(PackageVersions, AreFoundTogetherInAnyOrder) {
  const std::string display = Stanza("dispfw", "2.0");
  const std::string distribution = Stanza("qtm-distro", "4.1");
  for (const std::string& packages : {display + distribution, distribution + display}) {
    EXPECT_EQ(Firmware(packages), "4.1");
    EXPECT_EQ(DisplayFirmware(packages), "2.0");
  }
}

TEST(DisplayFirmwareVersion, ComesFromDisplayFirmwareWithoutDispfw) {
  EXPECT_EQ(DisplayFirmware(Stanza("bash", "5.2") + Stanza("display-firmware", "1.0")), "1.0");
}

TEST(DisplayFirmwareVersion, IsSearchedFromThePackageItself) {
  EXPECT_EQ(DisplayFirmware("Package: dispfw Version: 7\nVersion: 8\n"), "7");
}

TEST(DisplayFirmwareVersion, IsTakenFromALaterStanzaWhenItsOwnHasNone) {
  EXPECT_EQ(DisplayFirmware(Stanza("dispfw", "") + Stanza("zip", "3.0")), "3.0");
}

TEST(DisplayFirmwareVersion, IsAbsentWithoutPackageOrVersion) {
  for (const std::string& packages :
       {std::string(), Stanza("bash", "5.2"), Stanza("displayfirmware", "1"),
        Stanza("zip", "3.0") + Stanza("dispfw", ""), std::string("Package: dispfw")}) {
    SCOPED_TRACE(packages);
    EXPECT_EQ(DisplayFirmware(packages), std::nullopt);
  }
}

TEST(DisplayFirmwareVersion, OfDisplayFirmwareIsNotTakenWhenDispfwHasNone) {
  EXPECT_EQ(DisplayFirmware(Stanza("display-firmware", "1.0") + Stanza("dispfw", "")),
            std::nullopt);
}

}  // namespace
