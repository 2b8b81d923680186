#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/nativeutils/Figures.h"
#include "nativeutils/Backup.h"
#include "nativeutils/Files.h"
#include "platform/UniqueFd.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error(what + " failed");
}

// Includes the start of the program. Its output is discarded.
double secondsOfProgram(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command)
    arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  int status = -1;
  const double seconds = secondsOf([&] {
    pid_t child = 0;
    require(::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0, command[0]);
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
  });
  ::posix_spawn_file_actions_destroy(&actions);
  require(status == 0, command[0]);
  return seconds;
}

void makeFile(const std::string& path) {
  const platform::UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  require(static_cast<bool>(file), path);
}

// Creates 100,000 entries, including the folders.
void makeTree(const std::string& path, int folders) {
  constexpr int kEntries = 100000;
  require(::mkdir(path.c_str(), 0777) == 0, path);
  for (int i = 0; i < folders; ++i) {
    const std::string folder = path + "/folder " + std::to_string(i);
    require(::mkdir(folder.c_str(), 0777) == 0, folder);
    for (int j = 0; j < kEntries / folders - 1; ++j)
      makeFile(folder + "/file " + std::to_string(j));
  }
}

// Pending writes must not slow down the measurement.
double secondsAfterSync(const std::string& folder, const std::function<double()>& measure) {
  const platform::UniqueFd open(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  require(::syncfs(open.get()) == 0, "syncfs");
  return measure();
}

// All trees are created first: some file systems are slow to reuse freed blocks.
void measureDeletion(const std::string& name, int folders) {
  constexpr int kPairsOfTrees = 5;
  const support::TemporaryFolder folder;
  const auto tree = [&](int i) { return folder / std::to_string(i); };
  for (int i = 0; i < 2 * kPairsOfTrees; ++i)
    makeTree(tree(i), folders);
  const auto ours = [&](int i) {
    return secondsOf([&] { require(utilDeleteFolder(tree(i), false, false), "utilDeleteFolder"); });
  };
  const auto peer = [&](int i) { return secondsOfProgram({"rm", "-rf", tree(i)}); };
  Pairs pairs;
  for (int i = 0; i < 2 * kPairsOfTrees; i += 2) {
    const double first = secondsAfterSync(folder.path(), [&] { return ours(i); });
    pairs.add(first * 1e3, secondsAfterSync(folder.path(), [&] { return peer(i + 1); }) * 1e3);
  }
  print("100000 entries deleted, " + name, pairs, "ms", atMost(1.2));
}

void measureScan(const std::string& name, int folders) {
  const support::TemporaryFolder folder;
  const std::string tree = folder / "tree";
  makeTree(tree, folders);
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    makeFile(tree + "/App");
    std::string backup;
    const double ours =
        secondsOf([&] { require(utilBackupFolderIfExits(tree + "/App", backup, false), "utilBackupFolderIfExits"); });
    require(backup == tree + "//App_bkp" + std::to_string(i + 1), "the number");
    pairs.add(ours * 1e3, secondsOfProgram({"find", tree}) * 1e3);
  }
  print("backup among 100000 entries, " + name, pairs, "ms", atMost(1.2));
}

// Without holes and without equal blocks, which a file system could omit or share.
void makeLargeFile(const std::string& path) {
  constexpr std::size_t kMebibyte = std::size_t{1} << 20;
  std::minstd_rand random;
  std::string block(kMebibyte, '\0');
  const platform::UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  for (int i = 0; i < 1024; ++i) {
    for (std::size_t at = 0; at < kMebibyte; at += 64)
      block[at] = static_cast<char>(random());
    require(::write(file.get(), block.data(), kMebibyte) == static_cast<ssize_t>(kMebibyte), path);
  }
}

void measureCopy() {
  const support::TemporaryFolder folder;
  const std::string from = folder / "large";
  const std::string to = folder / "copies";
  require(::mkdir(to.c_str(), 0777) == 0, to);
  makeLargeFile(from);
  Pairs pairs;
  const auto measured = [&](const std::function<double()>& measure) {
    (void)::unlink((to + "/large").c_str());
    return secondsAfterSync(to, measure) * 1e3;
  };
  const std::function<double()> ours = [&] {
    return secondsOf([&] { require(utilCopySrcFileToDstFolder(from, to, false), "utilCopySrcFileToDstFolder"); });
  };
  const std::function<double()> peer = [&] { return secondsOfProgram({"cp", "-p", from, to}); };
  // The previous copy affects the memory available for the next one, so that the order alternates.
  for (int i = 0; i < 2 * kRepetitions; ++i) {
    const double first = measured(i % 2 == 0 ? ours : peer);
    const double second = measured(i % 2 == 0 ? peer : ours);
    i % 2 == 0 ? pairs.add(first, second) : pairs.add(second, first);
  }
  print("1 GiB copied, against cp -p", pairs, "ms", atMost(1.1));
}

}  // namespace

void measureFiles() {
  measureDeletion("against rm -rf", 1000);
  measureDeletion("one folder, against rm -rf", 1);
  measureScan("against find", 1000);
  measureScan("one folder, against find", 1);
  measureCopy();
}

}  // namespace bench
