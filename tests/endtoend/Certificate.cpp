#include "tests/endtoend/Certificate.h"

#include <stdexcept>
#include <string>

#include "examples/support/ChildProcess.h"
#include "examples/support/EventLoop.h"

namespace endtoend {

Certificate::Certificate(const std::filesystem::path& file) {
  examples::ChildProcess::Setup setup;
  setup.command = {"openssl",
                   "req",
                   "-x509",
                   "-newkey",
                   "ec",
                   "-pkeyopt",
                   "ec_paramgen_curve:P-256",
                   "-nodes",
                   "-keyout",
                   file,
                   "-out",
                   file.string() + ".crt",
                   "-days",
                   "2",
                   "-subj",
                   "/CN=127.0.0.1",
                   "-addext",
                   "subjectAltName=IP:127.0.0.1"};
  setup.errorFile = "/dev/null";
  const examples::ChildProcess openssl(setup);
  (void)examples::waitUntil([&] { return openssl.ended(); }, std::chrono::seconds(30));

  g_autoptr(GError) error = nullptr;
  certificate_.reset(g_tls_certificate_new_from_files((file.string() + ".crt").c_str(), file.c_str(), &error));
  if (!certificate_) throw std::runtime_error(error->message);
}

}  // namespace endtoend
