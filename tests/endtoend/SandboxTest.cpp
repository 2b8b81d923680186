// The walls around the page process: they stand where the machine can put them up, and nobody is kept out where not.

#include <cstdlib>
#include <fstream>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kNoSandbox[] = "pages run without a sandbox";

class SandboxTest : public EndToEndTest {
 protected:
  // The program finds this script where it looks for bwrap first.
  void replaceBwrap(const std::string& script) {
    std::filesystem::create_directory(temporary("bin"));
    std::ofstream(temporary("bin/bwrap")) << "#!/bin/sh\n" << script << "\n";
    std::filesystem::permissions(temporary("bin/bwrap"), std::filesystem::perms::owner_all);
    options.environment["PATH"] = temporary("bin").string() + ":" + std::getenv("PATH");
  }

  void expectASignInWithout() {
    site.serve("/signin", redirectTo(site.address("/done")));
    EXPECT_EQ(messageOfARun(), result(site.address("/done")));
    EXPECT_THAT(run->standardError(), HasSubstr(kNoSandbox));
  }
};

TEST_F(SandboxTest, ThePageProcessIsWalledInWhereTheMachineAllowsIt) {
  site.serve("/signin", pageThatTells());
  start();
  untilAsked("/loaded");
  const bool walledIn = descendantNamed(run->pid(), "bwrap").has_value();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  if (!walledIn) GTEST_SKIP() << run->standardError();
  EXPECT_THAT(run->standardError(), Not(HasSubstr(kNoSandbox)));
}

TEST_F(SandboxTest, NoNoteOfItStaysBehind) {
  site.serve("/signin", redirectTo(site.address("/done")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  const std::filesystem::path notes = std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / ".flatpak";
  EXPECT_TRUE(!std::filesystem::exists(notes) || std::filesystem::is_empty(notes));
}

TEST_F(SandboxTest, WhereItCannotBePutUpTheSignInGoesOn) {
  replaceBwrap("exit 1");
  expectASignInWithout();
}

class OddFolderSandboxTest : public SandboxTest, public testing::WithParamInterface<const char*> {};

// bwrap would refuse the folders that WebKit looks for below it.
TEST_P(OddFolderSandboxTest, AFileInTheFoldersPlaceKeepsNobodyOut) {
  std::ofstream(temporary("file"));
  options.environment[GetParam()] = temporary("file");
  expectASignInWithout();
}

INSTANTIATE_TEST_SUITE_P(Folders, OddFolderSandboxTest,
                         testing::Values("XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"));

TEST_F(SandboxTest, WhereItHangsTheSignInGoesOn) {
  replaceBwrap("exec sleep 1000");
  expectASignInWithout();
}

TEST_F(SandboxTest, WhereItIsNotInstalledTheSignInGoesOn) {
  std::filesystem::create_directory(temporary("bin"));
  options.environment["PATH"] = temporary("bin");
  expectASignInWithout();
}

}  // namespace
}  // namespace endtoend
