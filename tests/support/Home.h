// The temporary home folder and the user databases that tests/support/in-own-home creates.

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

// Throws if the test runs outside of tests/support/in-own-home, so that no test uses a real home folder.
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

// Empties the home folder and returns it.
inline std::string freshHome() {
  std::string home = ownHome();
  for (const auto& entry : std::filesystem::directory_iterator(home))
    std::filesystem::remove_all(entry.path());
  return home;
}

// Replaces the contents of the file that an environment variable names, until the end of the scope.
class ReplacedDatabase {
 public:
  ReplacedDatabase(const char* variable, const std::string& entries) : path_(std::getenv(variable)) {
    std::ifstream file(path_);
    previous_.assign(std::istreambuf_iterator<char>(file), {});
    replace(entries);
  }
  ReplacedDatabase(const ReplacedDatabase&) = delete;
  ReplacedDatabase& operator=(const ReplacedDatabase&) = delete;
  ~ReplacedDatabase() { replace(previous_); }

 private:
  // nss_wrapper reads the file again only if its modification time differs in seconds.
  void replace(const std::string& entries) {
    const auto previous = std::filesystem::last_write_time(path_);
    std::ofstream(path_) << entries;
    std::filesystem::last_write_time(path_, previous + std::chrono::seconds(2));
  }

  std::string path_;
  std::string previous_;
};

// Returns a line of the password database.
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
