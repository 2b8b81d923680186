// TLS certificates that are made when they are needed, by the command openssl.

#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/tools/support/Owned.h"

namespace endtoend {

class Certificate {
 public:
  // One for 127.0.0.1 that nobody has signed but itself. Keeps certificate and key in `file`. Throws std::runtime_error
  // when it cannot be made.
  explicit Certificate(const std::filesystem::path& file);

  GTlsCertificate* get() const { return certificate_.get(); }

 private:
  friend class Authority;
  Certificate(const std::filesystem::path& file, const std::vector<std::string>& request);

  tools::Owned<GTlsCertificate> certificate_;
};

// An authority that signs certificates, as an organisation has one for its own sites.
class Authority {
 public:
  // Keeps its certificate in `file` and its key beside it. Throws like the above.
  explicit Authority(const std::filesystem::path& file);

  // The certificate that a machine has to know, in PEM.
  const std::filesystem::path& file() const { return file_; }

  // A certificate for one host, kept in `file`.
  Certificate sign(const std::string& host, const std::filesystem::path& file) const;

 private:
  std::filesystem::path file_;
};

}  // namespace endtoend
