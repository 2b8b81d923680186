// A TLS certificate for 127.0.0.1 that nobody has signed but itself, made when it is needed.

#pragma once

#include <gio/gio.h>

#include <filesystem>

#include "examples/support/Owned.h"

namespace endtoend {

class Certificate {
 public:
  // Keeps certificate and key in `file`. Throws std::runtime_error when it cannot be made.
  explicit Certificate(const std::filesystem::path& file);

  GTlsCertificate* get() const { return certificate_.get(); }

 private:
  examples::Owned<GTlsCertificate> certificate_;
};

}  // namespace endtoend
