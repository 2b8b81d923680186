#include "tests/endtoend/SignInRun.h"

#include <fstream>
#include <iterator>

#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

tools::ChildProcess::Setup setupFor(const Options& options, const std::filesystem::path& errorFile) {
  tools::ChildProcess::Setup setup;
  setup.command = commandLine(options);
  setup.environment = options.environment;
  setup.errorFile = errorFile;
  return setup;
}

}  // namespace

std::vector<std::string> commandLine(const Options& options) {
  std::vector<std::string> arguments = options.wrapper;
  arguments.push_back(options.program);
  arguments.insert(arguments.end(), options.before.begin(), options.before.end());
  const auto add = [&](const char* name, const std::optional<std::string>& value) {
    if (value) arguments.push_back(std::string(name) + "=" + *value);
  };
  add("--zelURL", options.signIn);
  add("--redirectURL", options.redirect);
  add("--redirectType3URL", options.enterprise);
  add("--productName", options.product);
  add("--type3WindowTitle", options.enterpriseTitle);
  add("--pipeName", options.pipe);
  return arguments;
}

SignInRun::SignInRun(const Options& options, const std::filesystem::path& errorFile)
    : errorFile_(errorFile), process_(setupFor(options, errorFile)) {}

std::optional<int> SignInRun::exitStatus() {
  (void)tools::waitUntil([this] { return ended(); }, kTimeout);
  return process_.exitStatus();
}

std::string SignInRun::standardError() const {
  std::ifstream file(errorFile_);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace endtoend
