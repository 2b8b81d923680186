// One run of the sign-in window: its options and its process.

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

// For events that a busy machine may delay.
constexpr std::chrono::seconds kTimeout{60};

// Options without a value are not passed.
struct Options {
  std::optional<std::string> signIn;
  std::optional<std::string> redirect;
  std::optional<std::string> enterprise;
  std::optional<std::string> product;
  std::optional<std::string> enterpriseTitle;
  std::optional<std::string> pipe;
  std::vector<std::string> before;   // further arguments, before the six options
  std::filesystem::path program;     // the built program, unless a test has copied it
  std::vector<std::string> wrapper;  // a command that executes the program
  std::map<std::string, std::string> environment;
};

std::vector<std::string> commandLine(const Options& options);

class SignInRun {
 public:
  // Starts the program with its standard error in `errorFile`.
  SignInRun(const Options& options, const std::filesystem::path& errorFile);

  pid_t pid() const { return process_.pid(); }
  void signal(int number) { process_.signal(number); }

  bool ended() const { return process_.ended(); }

  // Waits for the end. Returns nothing after kTimeout or if a signal ended the program.
  std::optional<int> exitStatus();

  std::string standardError() const;

 private:
  std::filesystem::path errorFile_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
