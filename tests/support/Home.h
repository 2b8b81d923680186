// The home folder that tests/support/in-own-home has made for this run.

#pragma once

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace support {

// Throws rather than let a test near the home folder of a person.
inline std::string ownHome() {
  const passwd* user = ::getpwuid(::geteuid());
  if (std::getenv("NSS_WRAPPER_PASSWD") == nullptr || user == nullptr) {
    throw std::runtime_error("run this test through tests/support/in-own-home");
  }
  return user->pw_dir;
}

inline std::string ownLogFolder() {
  return ownHome() + "/Library/Logs";
}

// Empties the home folder, so that a test begins as the first one did.
inline std::string freshHome() {
  std::string home = ownHome();
  for (const auto& entry : std::filesystem::directory_iterator(home))
    std::filesystem::remove_all(entry.path());
  return home;
}

// Replaces a database of this run, the file that a variable names, until the end of the scope.
class ReplacedDatabase {
 public:
  ReplacedDatabase(const char* variable, const std::string& entries) : path_(std::getenv(variable)) {
    std::ifstream file(path_);
    former_.assign(std::istreambuf_iterator<char>(file), {});
    replace(entries);
  }
  ReplacedDatabase(const ReplacedDatabase&) = delete;
  ReplacedDatabase& operator=(const ReplacedDatabase&) = delete;
  ~ReplacedDatabase() { replace(former_); }

 private:
  // The wrapper notices a change by the second in which the file was modified.
  void replace(const std::string& entries) {
    const auto former = std::filesystem::last_write_time(path_);
    std::ofstream(path_) << entries;
    std::filesystem::last_write_time(path_, former + std::chrono::seconds(2));
  }

  std::string path_;
  std::string former_;
};

// A line of the password database.
inline std::string passwordEntry(uid_t user, const std::string& home) {
  return "user" + std::to_string(user) + ":x:" + std::to_string(user) + ":0::" + home + ":/bin/sh\n";
}

class PasswordDatabase : public ReplacedDatabase {
 public:
  explicit PasswordDatabase(const std::string& entries) : ReplacedDatabase("NSS_WRAPPER_PASSWD", entries) {}
};

class GroupDatabase : public ReplacedDatabase {
 public:
  explicit GroupDatabase(const std::string& entries) : ReplacedDatabase("NSS_WRAPPER_GROUP", entries) {}
};

}  // namespace support
