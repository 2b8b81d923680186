#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/logging/Line.h"
#include "bench/logging/Measures.h"
#include "logging/LogTargetDefault.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

constexpr std::size_t fullSize = 10 * 1024 * 1024;

void fill(const std::string& path) {
  std::string lines;
  while (lines.size() < fullSize)
    lines += wholeLine();
  support::writeFile(path, lines);
}

double microsecondsOfRenaming(const support::TemporaryFolder& folder) {
  const std::string live = folder / "renamed.log";
  const std::string archive = folder / "renamed archive.log";
  fill(live);
  const double seconds = secondsOf([&] {
    std::filesystem::rename(live, archive);
    (void)openForAppending(live);
  });
  std::filesystem::remove(archive);
  return seconds * 1e6;
}

// The archive is removed, so that one second may see many cuts.
double microsecondsOfCutting(const support::TemporaryFolder& folder, tarn::LogTargetDefault& target) {
  fill(folder / "cut.log");
  const double seconds = secondsOf([&] { target.SegmentLogFile(true); });
  if (std::filesystem::file_size(folder / "cut.log") != 0) std::exit(1);
  for (const std::string& name : support::namesIn(folder.path())) {
    if (name.rfind("cut ", 0) == 0) std::filesystem::remove(folder / name);
  }
  return seconds * 1e6;
}

}  // namespace

void measureCutting() {
  const support::TemporaryFolder folder;
  tarn::LogTargetDefault target("cut");
  target.setLogFile("cut.log", folder.path().c_str());
  target.onRegisterTarget();
  Pairs pairs;
  for (int i = 0; i < repetitions; ++i) {
    const double ours = microsecondsOfCutting(folder, target);
    pairs.add(ours, microsecondsOfRenaming(folder));
  }
  target.onUnregisterTarget();
  print("cutting 10 MiB, against rename and create", pairs, "us", atMost(2.5));
}

}  // namespace bench
