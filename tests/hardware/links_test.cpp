// Links in folders that others than the collector may write.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "sandbox/scenario.h"
#include "sandbox/testing.h"
#include "tests/hardware/probe_fixture.h"

namespace {

using sandbox::MakeLink;
using sandbox::Scenario;
using sandbox::WriteFile;

constexpr uid_t kOwner = 1000;     // of the settings folder
constexpr uid_t kSomebody = 1001;  // else

constexpr char kSettings[] = "/home/Zet/.settings";
constexpr char kTransitions[] = "/dev/shm/netlink-eth0";

// While it lives, the process has the rights of `user`.
class EffectiveUser {
 public:
  explicit EffectiveUser(uid_t user) { EXPECT_EQ(seteuid(user), 0); }
  EffectiveUser(const EffectiveUser&) = delete;
  EffectiveUser& operator=(const EffectiveUser&) = delete;
  ~EffectiveUser() { EXPECT_EQ(seteuid(0), 0); }
};

class Links : public ProbeTest {
 protected:
  // An ordinary user's sandbox can hold no files of other users.
  void SetUp() override {
    Scenario().File("/secret", "secret").Folder(kSettings).Apply();
    if (!GiveTo(kOwner, "/home/Zet")) {
      GTEST_SKIP() << "no other users: " << std::strerror(errno);
    }
  }

  static bool GiveTo(uid_t user, const std::string& path) {
    return lchown(path.c_str(), user, user) == 0;
  }

  static void MakeLinkOf(uid_t user, const std::string& path, const std::string& target) {
    MakeLink(path, target);
    ASSERT_TRUE(GiveTo(user, path));
  }

  // What the probe makes of the identity: "" when there is none.
  std::string Guid() {
    status_.GUID = "";
    EXPECT_EQ(probe_.GUID(), 0);
    return status_.GUID;
  }

  bool HasGuid() { return probe_.GUID() == 0; }
};

// The owner of the settings folder could read in the document every file that the host may read.
TEST_F(Links, OfTheSettingsOwnerAreNotFollowed) {
  MakeLinkOf(kOwner, kUuid, "/secret");
  EXPECT_FALSE(HasGuid());
  MakeLinkOf(kOwner, kUuid, "../../../secret");
  EXPECT_FALSE(HasGuid());
}

TEST_F(Links, ThatReplaceTheSettingsFolderAreNotFollowed) {
  WriteFile("/elsewhere/uuid", "secret");
  ASSERT_EQ(rmdir(kSettings), 0);
  MakeLinkOf(kOwner, kSettings, "/elsewhere");
  EXPECT_FALSE(HasGuid());
  ASSERT_TRUE(GiveTo(0, kSettings));
  EXPECT_EQ(Guid(), "secret");
}

TEST_F(Links, OfTheSystemAreFollowedAboveTheSettingsFolder) {
  WriteFile("/data/.settings/uuid", "moved");
  ASSERT_EQ(rmdir(kSettings), 0);
  ASSERT_EQ(rmdir("/home/Zet"), 0);
  MakeLinkOf(kOwner, "/home/Zet", "/data");
  EXPECT_EQ(Guid(), "moved");
}

TEST_F(Links, OfRootAreFollowedWhereverTheyLead) {
  constexpr const char* kTargets[] = {
      "/data/uuid",        "../../../data/uuid",       "/data/relative", "/data/../data/./uuid",
      "//data//uuid",      "/data/folder/uuid",        "up/data/uuid",   "/data/chain0",
      "../.settings/near", "/home/Zet/.settings/near",
  };
  WriteFile("/data/uuid", "abc");
  WriteFile("/home/Zet/.settings/near", "abc");
  MakeLink("/data/relative", "uuid");
  MakeLink("/data/folder", ".");
  MakeLink("/home/Zet/.settings/up", "../../..");
  for (int i = 0; i < 39; ++i) {
    MakeLink("/data/chain" + std::to_string(i),
             i < 38 ? "chain" + std::to_string(i + 1) : "/data/uuid");
  }
  for (const char* target : kTargets) {
    SCOPED_TRACE(target);
    MakeLink(kUuid, target);
    EXPECT_EQ(Guid(), "abc");
  }
}

TEST_F(Links, OfRootThatLeadNowhereAreMissingFiles) {
  WriteFile("/data/file", "abc");
  MakeLink("/data/circle", "/data/circle");
  for (const char* target : {"/data/missing", "/missing/uuid", "/data/circle", "/data/file/uuid",
                             "/data/file/", "uuid", "../.settings/uuid"}) {
    SCOPED_TRACE(target);
    MakeLink(kUuid, target);
    EXPECT_FALSE(HasGuid());
  }
}

TEST_F(Links, OfOthersThatThoseOfRootLeadToAreNotFollowed) {
  MakeLink(kUuid, "current/uuid");
  WriteFile("/data/uuid", "secret");
  MakeLinkOf(kOwner, "/home/Zet/.settings/current", "/data");
  EXPECT_FALSE(HasGuid());
  MakeLink(kUuid, "/data/indirect");
  MakeLinkOf(kOwner, "/data/indirect", "uuid");
  EXPECT_FALSE(HasGuid());
}

TEST_F(Links, OfRootToAFolderAreUnreadableNotMissing) {
  MakeLink(kUuid, "/data/");
  sandbox::MakeFolder("/data");
  EXPECT_EQ(Guid(), "");
}

TEST_F(Links, OfTheEffectiveUserAreFollowed) {
  MakeLinkOf(kOwner, kUuid, "/secret");
  {
    const EffectiveUser owner(kOwner);
    EXPECT_EQ(Guid(), "secret");
  }
  MakeLink(kUuid, "/secret");
  {
    const EffectiveUser somebody(kSomebody);
    EXPECT_EQ(Guid(), "secret") << "root's";
  }
  MakeLinkOf(kOwner, kUuid, "/secret");
  const EffectiveUser somebody(kSomebody);
  EXPECT_FALSE(HasGuid());
}

TEST_F(Links, ToTheSerialNumberObeyTheSameRule) {
  SANDBOX_NEEDS_DEVICES();
  Scenario().Device("zetdisplay").File("/secret", "0x12AF0").Apply();
  MakeLinkOf(kOwner, kSerial, "/secret");
  EXPECT_EQ(probe_.IDs(), 1);
  EXPECT_EQ(status_.SerialNumber, 0U);
  MakeLink(kSerial, "/secret");
  EXPECT_EQ(probe_.IDs(), 0);
  EXPECT_EQ(status_.SerialNumber, 0x12AF0U);
}

// Everyone may write to the folder of the counters of link transitions.
TEST_F(Links, ToTheTransitionsObeyTheSameRule) {
  WriteFile("/secret", "17");
  MakeLinkOf(kOwner, kTransitions, "/secret");
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), -1);
  MakeLink(kTransitions, "/secret");
  EXPECT_EQ(probe_.NetworkLinkTransitionCount("eth0"), 17);
}

}  // namespace
