#include "tests/endtoend/SystemRoots.h"

#include <unistd.h>

#include <chrono>

#include "tests/tools/support/ChildProcess.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

constexpr char kStore[] = "/etc/ssl/certs/ca-certificates.crt";
constexpr char kMountAndRun[] = R"(mount --bind "$0" "$1" && shift && exec "$@")";

std::vector<std::string> commandFor(const std::filesystem::path& bundle) {
  if (geteuid() == 0) return {"unshare", "--mount", "sh", "-c", kMountAndRun, bundle, kStore};

  // Mounting needs root in a user namespace. The program runs in a second one, with its original user ID.
  return {"unshare",
          "--user",
          "--map-root-user",
          "--mount",
          "sh",
          "-c",
          kMountAndRun,
          bundle,
          kStore,
          "unshare",
          "--user",
          "--map-user=" + std::to_string(geteuid()),
          "--map-group=" + std::to_string(getegid())};
}

}  // namespace

std::optional<std::vector<std::string>> withSystemRoots(const std::filesystem::path& bundle) {
  tools::ChildProcess::Setup trial;
  trial.command = commandFor(bundle);
  trial.command.insert(trial.command.end(), {"cmp", "--quiet", bundle, kStore});
  trial.errorFile = "/dev/null";
  const tools::ChildProcess process(trial);
  (void)tools::waitUntil([&] { return process.ended(); }, std::chrono::seconds(30));
  if (process.exitStatus() != 0) return std::nullopt;
  return commandFor(bundle);
}

}  // namespace endtoend
