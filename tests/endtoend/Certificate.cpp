#include "tests/endtoend/Certificate.h"

#include <chrono>
#include <stdexcept>

#include "tests/tools/support/ChildProcess.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

// Creates a key and a certificate for it. `request` has the subject and the signer.
void make(const std::filesystem::path& certificate, const std::filesystem::path& key,
          const std::vector<std::string>& request) {
  tools::ChildProcess::Setup setup;
  setup.command = {"openssl", "req",     "-x509", "-newkey", "ec",        "-pkeyopt", "ec_paramgen_curve:P-256",
                   "-nodes",  "-keyout", key,     "-out",    certificate, "-days",    "2"};
  setup.command.insert(setup.command.end(), request.begin(), request.end());
  setup.errorFile = "/dev/null";
  const tools::ChildProcess openssl(setup);
  (void)tools::waitUntil([&] { return openssl.ended(); }, std::chrono::seconds(30));
  if (openssl.exitStatus() != 0) throw std::runtime_error("openssl failed");
}

std::filesystem::path keyOf(const std::filesystem::path& certificate) {
  return certificate.string() + ".key";
}

}  // namespace

Certificate::Certificate(const std::filesystem::path& file)
    : Certificate(file, {"-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"}) {}

Certificate::Certificate(const std::filesystem::path& file, const std::vector<std::string>& request) {
  make(file, keyOf(file), request);
  g_autoptr(GError) error = nullptr;
  certificate_.reset(g_tls_certificate_new_from_files(file.c_str(), keyOf(file).c_str(), &error));
  if (!certificate_) throw std::runtime_error(error->message);
}

Authority::Authority(const std::filesystem::path& file) : file_(file) {
  make(file, keyOf(file), {"-subj", "/CN=Example Organization", "-addext", "keyUsage=critical,keyCertSign"});
}

Certificate Authority::sign(const std::string& host, const std::filesystem::path& file) const {
  return {
      file,
      {"-CA", file_, "-CAkey", keyOf(file_), "-subj", "/CN=" + host, "-addext", "basicConstraints=critical,CA:FALSE",
       "-addext", "subjectAltName=" + std::string(g_hostname_is_ip_address(host.c_str()) ? "IP:" : "DNS:") + host}};
}

Certificate Authority::signClient(const std::string& name, const std::filesystem::path& file) const {
  return {file,
          {"-CA", file_, "-CAkey", keyOf(file_), "-subj", "/CN=" + name, "-addext",
           "basicConstraints=critical,CA:FALSE", "-addext", "extendedKeyUsage=clientAuth"}};
}

}  // namespace endtoend
