#include "platform/Volumes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "platform/linux/Volumes.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"

namespace {

using platform::mountPointOf;
using platform::volumeNameOf;

class MountsTest : public testing::Test {
 protected:
  // Runs `body`, which answers whether all was as it should be, where it may mount what it likes; the body gives
  // nothing where the system does not let it.
  void mounted(const std::function<std::optional<bool>()>& body) {
    const int result = support::withOwnMounts([&] {
      const std::optional<bool> right = body();
      return right ? (*right ? 0 : 1) : support::kImpossible;
    });
    if (result == support::kImpossible) GTEST_SKIP() << "this process may not mount";
    EXPECT_EQ(result, 0);
  }

  static bool mountMemory(const std::string& path) { return ::mount("none", path.c_str(), "tmpfs", 0, "size=1m") == 0; }
  static bool bind(const std::string& from, const std::string& to) {
    return ::mount(from.c_str(), to.c_str(), nullptr, MS_BIND, nullptr) == 0;
  }

  std::string made(const std::string& name) const {
    std::filesystem::create_directories(folder / name);
    return folder / name;
  }

  const support::TemporaryFolder folder;
};

TEST_F(MountsTest, NamesWithBlanksAndNewlinesAreMountPointsLikeOthers) {
  const std::string place = made("a b\n\\040");
  mounted([&]() -> std::optional<bool> {
    if (!mountMemory(place)) return std::nullopt;
    return mountPointOf(place) == place && volumeNameOf(place) == "a b\n\\040";
  });
}

TEST_F(MountsTest, AFolderMountedElsewhereIsAMountOfItsOwn) {
  const std::string from = made("from"), to = made("to/inner");
  support::writeFile(from + "/file", "");
  mounted([&]() -> std::optional<bool> {
    if (!bind(from, to)) return std::nullopt;
    return mountPointOf(to + "/file") == to && mountPointOf(from + "/file") != from;
  });
}

TEST_F(MountsTest, AFolderMountedWithinItselfIsToldFromWhatIsAround) {
  const std::string outer = made("outer"), inner = made("outer/inner");
  mounted([&]() -> std::optional<bool> {
    if (!bind(outer, inner)) return std::nullopt;
    return mountPointOf(inner + "/inner") == inner && mountPointOf(outer) != outer;
  });
}

TEST_F(MountsTest, TheMountOnTopCounts) {
  const std::string place = made("place");
  mounted([&]() -> std::optional<bool> {
    if (!mountMemory(place) || !mountMemory(place)) return std::nullopt;
    std::filesystem::create_directory(place + "/on top");
    return mountPointOf(place + "/on top") == place;
  });
}

TEST_F(MountsTest, AFileCanBeAMountPoint) {
  const std::string from = folder / "from", to = folder / "to";
  support::writeFile(from, "");
  support::writeFile(to, "");
  mounted([&]() -> std::optional<bool> {
    if (!bind(from, to)) return std::nullopt;
    return mountPointOf(to) == to;
  });
}

TEST_F(MountsTest, AProcessThatSeesOnlyPartOfTheTreeHasItsRootThere) {
  const std::string root = made("root");
  mounted([&]() -> std::optional<bool> {
    std::filesystem::create_directory(root + "/inside");
    if (::chroot(root.c_str()) != 0) return std::nullopt;
    return mountPointOf("/inside") == "/" && volumeNameOf("/") == "/";
  });
}

TEST_F(MountsTest, ALabelIsTheVolumesName) {
  const std::string place = made("place"), image = folder / "image";
  mounted([&]() -> std::optional<bool> {
    const std::string make = "truncate -s 2M '" + image + "' && mkfs.ext4 -q -L 'Back up' '" + image +
                             "' && mount -o loop '" + image + "' '" + place + "'";
    if (std::system(("(" + make + ") >/dev/null 2>&1").c_str()) != 0) return std::nullopt;
    const bool named = volumeNameOf(place) == "Back up";
    return ::umount(place.c_str()) == 0 && named;
  });
}

TEST(Volumes, TellWhyAPathIsOnNone) {
  EXPECT_EQ(mountPointOf("/no/such"), std::nullopt);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(mountPointOf("/proc/self/status/below"), std::nullopt);
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(Volumes, HaveNoNameWhereNoFolderIs) {
  EXPECT_EQ(volumeNameOf("/no/such"), std::nullopt);
  EXPECT_EQ(volumeNameOf("/proc/self/status"), std::nullopt);
}

TEST(Volumes, ALabelIsReadFromTheNameOfItsLink) {
  EXPECT_EQ(platform::decodeLabel("Back\\x20up"), "Back up");
  EXPECT_EQ(platform::decodeLabel("a\\x2fb\\x5cx20"), "a/b\\x20");
  EXPECT_EQ(platform::decodeLabel("\\x2"), "\\x2");
  EXPECT_EQ(platform::decodeLabel("\\xzz\\x+1"), "\\xzz\\x+1");
  EXPECT_EQ(platform::decodeLabel("\xc3\xa4"), "\xc3\xa4");
  EXPECT_EQ(platform::decodeLabel(""), "");
}

}  // namespace
