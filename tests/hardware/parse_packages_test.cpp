#include "hardware/parse_packages.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/hardware/exact.h"
#include "tests/hardware/packages_reference.h"

namespace {

// A stanza of the package database.
std::string Stanza(const std::string& package, const std::string& version) {
  return "Package: " + package + "\nStatus: install ok installed\n" +
         (version.empty() ? "" : "Version: " + version + "\n") + "Description: no matter\n\n";
}

// The versions when the database comes in pieces of `size` bytes.
hardware::PackageVersions Search(const std::string& packages, std::size_t size) {
  hardware::PackageSearch search;
  for (std::size_t i = 0; i < packages.size(); i += size) {
    const ExactView piece(std::string_view(packages).substr(i, size));
    search.Take(piece);
  }
  return search.TakeVersions();
}

// The same whole and in pieces that are smaller than any label.
hardware::PackageVersions Search(const std::string& packages) {
  const auto whole = Search(packages, packages.size() + 1);
  for (const std::size_t size : {1, 2, 7, 24, 25}) {
    const auto versions = Search(packages, size);
    EXPECT_EQ(versions.Distribution, whole.Distribution) << size;
    EXPECT_EQ(versions.DisplayFirmware, whole.DisplayFirmware) << size;
  }
  return whole;
}

std::optional<std::string> Firmware(const std::string& packages) {
  return Search(packages).Distribution;
}

std::optional<std::string> DisplayFirmware(const std::string& packages) {
  return Search(packages).DisplayFirmware;
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

TEST(FirmwareVersion, IsSearchedFromTheLineAfterThePackage) {
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

TEST(PackageVersions, MayContainOrFollowZeroBytes) {
  using namespace std::string_literals;
  EXPECT_EQ(Firmware("\0Package: qtm-distro\0\nVersion: 4\0.1\n"s), "4\0.1"s);
  EXPECT_EQ(DisplayFirmware("\0Package: dispfw\0Version: 1.2\0003\n"s), "1.2");
}

// An endless line would otherwise take as much memory as it has bytes.
TEST(PackageVersions, OfOverAMegabyteAreCut) {
  constexpr std::size_t kLongest = std::size_t{1} << 20;
  for (const std::size_t more : {0, 1, 100000}) {
    SCOPED_TRACE(more);
    const auto versions = Search(Stanza("qtm-distro", std::string(kLongest + more, '1')) +
                                     Stanza("dispfw", std::string(kLongest + more, '2')),
                                 65536);
    EXPECT_EQ(versions.Distribution, std::string(kLongest, '1'));
    EXPECT_EQ(versions.DisplayFirmware, std::string(kLongest, '2'));
  }
}

TEST(PackageSearch, WantsNoMoreOnceNothingCanChange) {
  hardware::PackageSearch search;
  EXPECT_TRUE(search.Take(Stanza("display-firmware", "1.0")));
  EXPECT_TRUE(search.Take(Stanza("qtm-distro", "4.1")));
  EXPECT_TRUE(search.Take("Package: dispfw\nVersion: 2.0"));
  EXPECT_TRUE(search.Take("5"));
  EXPECT_FALSE(search.Take("\n"));
}

// A text made of the labels, the names, their beginnings and what stands around them.
std::string RandomDatabase(std::minstd_rand* random) {
  using namespace std::string_view_literals;
  constexpr std::string_view kParts[] = {"Package: "sv,
                                         "Package: qtm-distro"sv,
                                         "Package: dispfw"sv,
                                         "Version: "sv,
                                         "Package: display-firmware"sv,
                                         "qtm-distro"sv,
                                         "dispfw"sv,
                                         "display-firmware"sv,
                                         "Package"sv,
                                         "Version"sv,
                                         "disp"sv,
                                         "P"sv,
                                         "Pack"sv,
                                         "Vers"sv,
                                         ": "sv,
                                         "\n"sv,
                                         "\n"sv,
                                         "1.2-3"sv,
                                         "4.5~beta"sv,
                                         "\0"sv,
                                         "display-firmwar"sv,
                                         "qtm-distr\n"sv};
  std::string text;
  for (std::size_t parts = (*random)() % 40; parts > 0; --parts) {
    text += kParts[(*random)() % std::size(kParts)];
  }
  return text;
}

TEST(PackageSearch, FindsInAnyPiecesWhatStandsInTheWhole) {
  std::minstd_rand random(1);
  int with_both = 0;
  for (int i = 0; i < 50000 && !testing::Test::HasFailure(); ++i) {
    const std::string packages = RandomDatabase(&random);
    hardware::PackageSearch search;
    std::string cuts;
    bool more = true;
    for (std::size_t at = 0; at < packages.size() && more;) {
      const std::size_t size = random() % 40;
      more = search.Take(std::string_view(packages).substr(at, size));
      at += size;
      cuts += std::to_string(size) + ' ';
    }
    SCOPED_TRACE(testing::PrintToString(packages) + " in " + cuts);
    const auto versions = search.TakeVersions();
    EXPECT_EQ(versions.Distribution, ReferenceDistribution(packages));
    EXPECT_EQ(versions.DisplayFirmware, ReferenceDisplayFirmware(packages));
    with_both += versions.Distribution && versions.DisplayFirmware ? 1 : 0;
  }
  EXPECT_GT(with_both, 1000);
}

}  // namespace
