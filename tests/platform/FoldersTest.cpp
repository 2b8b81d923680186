#include "platform/Users.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>

#include "tests/support/Files.h"
#include "tests/support/Mounts.h"

namespace {

using platform::findFolder;
using platform::FolderDomain;
using platform::FolderKind;
using platform::FolderSearch;

// The mode that the shared folder of data is made with where it and the one above it are missing, under a umask; ""
// where a process may not arrange that.
std::string modeOfNewFolders(mode_t mask) {
  const support::Shared<unsigned> mode;
  const int result = support::withOwnMounts([&] {
    if (!support::mountMemory("/usr/local", 1 << 20)) return support::kImpossible;
    ::umask(mask);
    const FolderSearch found = findFolder(FolderDomain::kLocal, FolderKind::kApplicationSupport);
    *mode = support::modeOf("/usr/local/share");
    return found.failure == FolderSearch::Failure::kNone && found.path == "/usr/local/share" ? 0 : 1;
  });
  if (result == support::kImpossible) return "";
  EXPECT_EQ(result, 0);
  std::ostringstream octal;
  octal << std::oct << *mode;
  return octal.str();
}

TEST(Folders, ThatAreSharedAreMadeForEverybodyLessTheUmask) {
  if (modeOfNewFolders(0).empty()) GTEST_SKIP() << "this process may not mount";
  EXPECT_EQ(modeOfNewFolders(0), "755");
  EXPECT_EQ(modeOfNewFolders(022), "755");
  EXPECT_EQ(modeOfNewFolders(027), "750");
  EXPECT_EQ(modeOfNewFolders(077), "700");
}

TEST(Folders, ThatCannotBeMadeAreNamedAllTheSame) {
  const int result = support::withOwnMounts([] {
    if (!support::mountMemory("/usr/local", 1 << 20)) return support::kImpossible;
    support::writeFile("/usr/local/share", "");
    const FolderSearch found = findFolder(FolderDomain::kLocal, FolderKind::kApplicationSupport);
    const bool failed = found.failure == FolderSearch::Failure::kFind && found.status == ENOTDIR;
    return failed && found.path == "/usr/local/share" ? 0 : 1;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "this process may not mount";
  EXPECT_EQ(result, 0);
}

TEST(Folders, ADomainThatDoesNotHaveAKindHasNoFolder) {
  for (const auto kind : {FolderKind::kApplications, FolderKind::kUtilities}) {
    for (const auto domain : {FolderDomain::kUser, FolderDomain::kSystem}) {
      const FolderSearch found = findFolder(domain, kind);
      EXPECT_EQ(found.failure, FolderSearch::Failure::kFind);
      EXPECT_EQ(found.status, ENOENT);
      EXPECT_EQ(found.path, "");
    }
  }
}

}  // namespace
