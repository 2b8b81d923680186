#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/FakeConsoleUser.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kConsoleUser = 12345;
constexpr char kSecret[] = "secret\n";

// The home folder of the console user, and a folder of root with one file.
struct Scenery {
  std::string home = support::ownHome() + "/console";
  std::string logs = home + "/Library/Logs";
  std::string victim = support::ownHome() + "/victim";
  std::string file = victim + "/file";

  bool isUnchanged() const {
    return support::namesIn(victim) == std::vector<std::string>{"file"} && support::contentsOf(file) == kSecret;
  }
};

using Trap = std::function<void(const Scenery&)>;

std::vector<Trap> allTraps() {
  return {[](const Scenery& at) {
            fs::create_directories(at.logs);
            fs::create_symlink(at.file, at.logs + "/Kelvo.log");
          },
          [](const Scenery& at) {
            fs::create_directories(at.logs);
            fs::create_hard_link(at.file, at.logs + "/Kelvo.log");
          },
          [](const Scenery& at) { fs::create_directory_symlink(at.victim, at.home + "/Library"); },
          [](const Scenery& at) {
            fs::create_directory(at.home + "/Library");
            fs::create_directory_symlink(at.victim, at.logs);
          },
          [](const Scenery& at) {
            fs::create_directories(at.logs);
            fillLog(at.logs + "/Kelvo.log");
            for (const std::string& name : nextArchiveNames())
              fs::create_symlink(at.file, at.logs + "/" + name);
          }};
}

void giveToConsoleUser(const std::string& folder) {
  (void)::chown(folder.c_str(), kConsoleUser, kConsoleUser);
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (!entry.is_regular_file() || entry.hard_link_count() == 1)
      (void)::lchown(entry.path().c_str(), kConsoleUser, kConsoleUser);
}

// The user database and the way to the home folder must be accessible to the console user.
void openWayToHome() {
  for (const fs::path& folder : {fs::path(support::ownHome()), fs::path(support::ownHome()).parent_path()})
    (void)::chmod(folder.c_str(), 0755);
}

void spring(Row& row, const Trap& trap) {
  reset();
  makeLogFolder();
  const Scenery scenery;
  fs::create_directory(scenery.home);
  fs::create_directory(scenery.victim);
  fs::permissions(scenery.victim, fs::perms::owner_all);
  support::writeFile(scenery.file, kSecret);
  trap(scenery);
  giveToConsoleUser(scenery.home);

  const support::PasswordDatabase users(support::passwordEntry(0, support::ownHome()) +
                                        support::passwordEntry(kConsoleUser, scenery.home));
  torment(row, [](Writer& writer) {
    support::fakeConsoleUser = kConsoleUser;
    writer.loseLines();
    Writer::start();
    writer.lines(3);
  });
  row.wrong += scenery.isUnchanged() ? 0 : 1;
}

}  // namespace

void runTraps(Table& table) {
  constexpr char kName[] = "links in the console user's home that root follows";
  if (::geteuid() != 0) return table.printImpossible(kName);
  openWayToHome();
  Row row(kName);
  for (const Trap& trap : allTraps())
    spring(row, trap);
  table.print(row);
}

}  // namespace torture
