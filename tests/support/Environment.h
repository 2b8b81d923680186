// Changes of the environment for the length of a test.

#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

// A variable of the process has another value, or none, until the end of the scope.
class Variable {
 public:
  Variable(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* former = std::getenv(name)) former_ = former;
    set(value);
  }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { set(former_); }

 private:
  void set(const std::optional<std::string>& value) const {
    if (value) {
      (void)::setenv(name_, value->c_str(), 1);
    } else {
      (void)::unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> former_;
};

}  // namespace support
