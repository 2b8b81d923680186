// Changes the environment for a scope.

#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

// Sets or removes an environment variable and restores it at the end of the scope.
class Variable {
 public:
  Variable(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* previous = std::getenv(name)) previous_ = previous;
    set(value);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { set(previous_); }

 private:
  void set(const std::optional<std::string>& value) const {
    if (value) {
      (void)::setenv(name_, value->c_str(), 1);
    } else {
      (void)::unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> previous_;
};

}  // namespace support
