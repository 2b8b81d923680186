// TLS certificates, created by the command openssl.

#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/linux/Glib.h"

namespace endtoend {

class Certificate {
 public:
  // A self-signed certificate for 127.0.0.1. Stores certificate and key in `file`. Throws std::runtime_error on
  // failure.
  explicit Certificate(const std::filesystem::path& file);

  GTlsCertificate* get() const { return certificate_.get(); }

 private:
  friend class Authority;
  Certificate(const std::filesystem::path& file, const std::vector<std::string>& request);

  platform::Owned<GTlsCertificate> certificate_;
};

// A private certificate authority.
class Authority {
 public:
  // Stores its certificate in `file` and its key beside it. Throws std::runtime_error on failure.
  explicit Authority(const std::filesystem::path& file);

  // The authority's certificate, in PEM.
  const std::filesystem::path& file() const { return file_; }

  // Creates a certificate for a host name or IP address in `file`.
  Certificate sign(const std::string& host, const std::filesystem::path& file) const;

  // Creates a certificate for a client in `file`, and its key in "<file>.key".
  Certificate signClient(const std::string& name, const std::filesystem::path& file) const;

 private:
  std::filesystem::path file_;
};

}  // namespace endtoend
