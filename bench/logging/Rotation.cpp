#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/logging/Line.h"
#include "bench/logging/Measures.h"
#include "logging/LogTargetDefault.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

constexpr std::size_t kFullSize = 10 * 1024 * 1024;

void fill(const std::string& path) {
  std::string lines;
  while (lines.size() < kFullSize)
    lines += wholeLine();
  support::writeFile(path, lines);
}

void runProgram(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command)
    arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  pid_t process = 0;
  int status = 1;
  const int error = ::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ);
  if (error == 0) (void)::waitpid(process, &status, 0);
  if (status == 0) return;
  std::fprintf(stderr, "bench-logging: %s failed\n", arguments[0]);
  std::exit(1);
}

double microsecondsOfCopy(const support::TemporaryFolder& folder) {
  const std::string live = folder / "copied.log";
  const std::string archive = folder / "copied archive.log";
  fill(live);
  const double seconds = secondsOf([&] {
    runProgram({"cp", live, archive});
    runProgram({"truncate", "--size=0", live});
  });
  std::filesystem::remove(archive);
  return seconds * 1e6;
}

// Removes the archive, because all archives of one second have the same name.
double microsecondsOfRotation(const support::TemporaryFolder& folder, tarn::LogTargetDefault& target) {
  fill(folder / "rotated.log");
  const double seconds = secondsOf([&] { target.SegmentLogFile(true); });
  if (std::filesystem::file_size(folder / "rotated.log") != 0) std::exit(1);
  for (const std::string& name : support::namesIn(folder.path())) {
    if (name.rfind("rotated ", 0) == 0) std::filesystem::remove(folder / name);
  }
  return seconds * 1e6;
}

}  // namespace

void measureRotation() {
  const support::TemporaryFolder folder;
  tarn::LogTargetDefault target("rotated");
  target.setLogFile("rotated.log", folder.path().c_str());
  target.onRegisterTarget();
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double ours = microsecondsOfRotation(folder, target);
    pairs.add(ours, microsecondsOfCopy(folder));
  }
  target.onUnregisterTarget();
  print("rotating 10 MiB, against cp and truncate", pairs, "us", atMost(1.15));
}

}  // namespace bench
