// What WebKit's child processes inherit from the window: no descriptor, no debugging variable, no core file.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "app/gtk/Environment.h"
#include "tests/endtoend/PageTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::Not;
using testing::StartsWith;

std::filesystem::path folderOf(pid_t process) {
  return "/proc/" + std::to_string(process);
}

std::string textOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The open files, sockets and pipes of a process, without the standard descriptors. Other kinds have no name of their
// own.
std::vector<std::string> openFilesOf(pid_t process) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folderOf(process) / "fd")) {
    std::error_code closed;
    const std::string file = std::filesystem::read_symlink(entry, closed);
    if (std::stoi(entry.path().filename()) > 2 && !closed && file.rfind("anon_inode:", 0) != 0) files.push_back(file);
  }
  std::sort(files.begin(), files.end());
  return files;
}

class ChildrenTest : public PageTest, public testing::WithParamInterface<bool> {
 protected:
  void startWithChildren() {
    const bool sandboxed = GetParam();
    if (!sandboxed) replaceBwrap("exit 1");
    startOn("");
    for (const char* const name : {"WebKitWebProces", "WebKitNetworkPr"}) {
      const auto process = descendantNamed(run->pid(), name);
      ASSERT_TRUE(process) << name;
      children_[name] = *process;
    }
  }

  std::map<std::string, pid_t> children_;
};

TEST_P(ChildrenTest, InheritNoDescriptor) {
  std::ofstream(temporary("inherited"));
  options.wrapper = {"/bin/sh", "-c", "exec 9<>\"$0\" && exec \"$@\"", temporary("inherited")};
  startWithChildren();
  for (const auto& [name, process] : children_) {
    const std::vector<std::string> files = openFilesOf(process);
    EXPECT_THAT(files, Not(Contains(logFile())));
    EXPECT_THAT(files, Not(Contains(temporary("inherited"))));

    std::vector<std::string> shared;
    const std::vector<std::string> window = openFilesOf(run->pid());
    std::set_intersection(files.begin(), files.end(), window.begin(), window.end(), std::back_inserter(shared));
    // WebKit's memory monitor opens files of the system without close-on-exec. Its processes send each other memory.
    EXPECT_THAT(shared, Each(AnyOf(StartsWith("/dev/"), StartsWith("/proc/"), StartsWith("/sys/"),
                                   StartsWith("/memfd:WebKit"))))
        << name;
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_P(ChildrenTest, InheritNoDebuggingVariable) {
  for (const char* const name : kDebuggingVariables)
    options.environment[name] = "";
  options.environment["JSC_useJIT"] = "1";
  startWithChildren();
  for (const auto& [name, process] : children_) {
    const std::string environment = '\0' + textOf(folderOf(process) / "environ");
    for (const char* const variable : kDebuggingVariables)
      EXPECT_EQ(environment.find('\0' + std::string(variable) + '='), std::string::npos) << variable;
    EXPECT_EQ(environment.find('\0' + std::string(kEngineOptionPrefix)), std::string::npos);
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_P(ChildrenTest, WriteNoCoreFile) {
  options.wrapper = {"/bin/sh", "-c", "ulimit -c unlimited; exec \"$@\"", "sh"};
  startWithChildren();
  children_["the window"] = run->pid();
  for (const auto& [name, process] : children_) {
    std::istringstream limits(textOf(folderOf(process) / "limits"));
    std::string line;
    while (std::getline(limits, line) && line.rfind("Max core file size", 0) != 0) {
    }
    EXPECT_THAT(line, testing::MatchesRegex("Max core file size +0 +0 +bytes *")) << name;
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Of, ChildrenTest, testing::Bool(), [](const auto& each) {
  return std::string(each.param ? "ASandboxedWindow" : "AWindowWithoutASandbox");
});

}  // namespace
}  // namespace endtoend
