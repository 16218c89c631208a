#include "capture/file_walk.h"

#include <fcntl.h>
#include <gmock/gmock.h>

namespace {

using capture::FileWalk;
using Step = FileWalk::Step;

constexpr std::uint64_t kFolder = O_PATH | O_DIRECTORY;
constexpr std::uint64_t kLink = O_PATH | O_NOFOLLOW;
constexpr std::uint64_t kFile = O_RDONLY | O_NOFOLLOW;
constexpr bool kInside = true;

TEST(FileWalk, IsAtTheFileAtOnceWhereAnyLinkIsFollowed) {
  FileWalk walk;
  EXPECT_EQ(walk.Open("/proc/meminfo", O_RDONLY, false), Step::kFile);
  EXPECT_TRUE(walk.Begins());
  EXPECT_EQ(walk.Path(), "/proc/meminfo");
}

TEST(FileWalk, NamesAFileThatIsWaitedForByItsPath) {
  FileWalk walk;
  walk.Open("/proc/meminfo", O_RDONLY, false);
  EXPECT_EQ(walk.Open("/proc/meminfo", O_PATH, false), Step::kLook);
  EXPECT_FALSE(walk.Begins());
  EXPECT_EQ(walk.Open("/proc/thread-self/fd/7", O_RDONLY, false), Step::kFile);
  EXPECT_FALSE(walk.Begins());
  EXPECT_EQ(walk.Path(), "/proc/meminfo");
}

TEST(FileWalk, GoesOnFromALinkThatLeadsToAnotherFolder) {
  FileWalk walk;
  EXPECT_EQ(walk.Open("/home/Zet/", kFolder, false), Step::kFolder);
  EXPECT_EQ(walk.Open("/home/Zet/.settings", kFolder, kInside), Step::kFolder);
  EXPECT_EQ(walk.Open("/home/Zet/.settings", kLink, kInside), Step::kLook);
  walk.Follow("/home/Zet/.settings", "/data");
  EXPECT_EQ(walk.Open("/", kFolder, false), Step::kFolder);
  EXPECT_FALSE(walk.Begins());
  walk.Open("/.", kFolder, kInside);
  walk.Open("/./data", kFolder, kInside);
  EXPECT_EQ(walk.Open("/./data/uuid", kFile, kInside), Step::kFile);
  EXPECT_EQ(walk.Path(), "/home/Zet/.settings/uuid");
  EXPECT_THAT(walk.Links(), testing::ElementsAre("/home/Zet/.settings -> /data"));
}

TEST(FileWalk, GoesOnFromALinkThatLeadsToAnotherFile) {
  FileWalk walk;
  walk.Open("/home/Zet/", kFolder, false);
  walk.Open("/home/Zet/.settings", kFolder, kInside);
  walk.Open("/home/Zet/.settings/uuid", kFile, kInside);
  walk.Open("/home/Zet/.settings/uuid", kLink, kInside);
  walk.Follow("/home/Zet/.settings/uuid", "../id");
  walk.Open("/home/Zet/.settings/..", kFolder, kInside);
  walk.Open("/home/Zet/.settings/../id", kFile, kInside);
  EXPECT_EQ(walk.Path(), "/home/Zet/.settings/uuid");
}

TEST(FileWalk, ForgetsTheLinksOfTheFileBefore) {
  FileWalk walk;
  walk.Open("/home/Zet/", kFolder, false);
  walk.Follow("/home/Zet/.settings", "/data");
  walk.Open("/", kFolder, false);
  walk.Open("/data/uuid", kFile, kInside);
  walk.Open("/data/uuid", O_RDONLY, false);
  EXPECT_EQ(walk.Path(), "/data/uuid");
  EXPECT_THAT(walk.Links(), testing::IsEmpty());
}

}  // namespace
