// One run of the sign-in window: its options, its process, its window and its answer.

#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/tools/hand/Screen.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

// For what is only waited for: a machine may be busy with much else.
constexpr std::chrono::seconds kPatience{60};

// An option that is not set is not given.
struct Options {
  std::optional<std::string> signIn;
  std::optional<std::string> redirect;
  std::optional<std::string> enterprise;
  std::optional<std::string> product;
  std::optional<std::string> enterpriseTitle;
  std::optional<std::string> pipe;
  std::vector<std::string> before;   // further arguments, in front of the six options
  std::filesystem::path program;     // the built one, unless a test copied it elsewhere
  std::vector<std::string> wrapper;  // a command in front of the program, which must end by becoming it
  std::map<std::string, std::string> environment;
};

std::vector<std::string> commandLine(const Options& options);

class SignInRun {
 public:
  // Starts the program. What it writes to standard error goes into `errorFile`.
  SignInRun(const Options& options, const std::filesystem::path& errorFile);

  pid_t pid() const { return process_.pid(); }
  void signal(int number) { process_.signal(number); }

  bool ended() const { return process_.ended(); }

  // Waits for the end. Nothing when it does not come, or when a signal ended the program.
  std::optional<int> exitStatus();

  std::string standardError() const;

 private:
  std::filesystem::path errorFile_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
