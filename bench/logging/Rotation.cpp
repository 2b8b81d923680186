#include <cstdlib>
#include <filesystem>
#include <string>

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

double microsecondsOfRename(const support::TemporaryFolder& folder) {
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
    pairs.add(ours, microsecondsOfRename(folder));
  }
  target.onUnregisterTarget();
  print("rotating 10 MiB, against rename and create", pairs, "us", atMost(2.5));
}

}  // namespace bench
