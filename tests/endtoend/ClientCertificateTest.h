// The fixture of tests with servers that ask for a client certificate, and users with tokens.

#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/endtoend/Accessibility.h"
#include "tests/endtoend/Certificate.h"
#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/SystemRoots.h"
#include "tests/endtoend/TokenStore.h"

namespace endtoend {

inline constexpr char kPin[] = "86420975";
inline constexpr char kNoToken[] = "A server asked for a client certificate: no token has one";

class ClientCertificateTest : public EndToEndTest {
 protected:
  void SetUp() override {
    if (!Accessibility::isPossible()) GTEST_SKIP() << "no D-Bus or no accessibility service here";
    if (!TokenStore::isPossible()) GTEST_SKIP() << "softhsm2 or gnutls-bin is not installed";
    const auto wrapper = withSystemRoots(organization.file());
    if (!wrapper) GTEST_SKIP() << "no mount namespace or no root certificates";
    options.wrapper = *wrapper;
    accessibility = std::make_unique<Accessibility>(temporary("bus"));
    options.environment.merge(accessibility->environment());
    options.environment.merge(tokens.environment());
    options.signIn = secure.address("/signin");
    options.redirect = secure.address("/done");
    secure.serve("/signin", redirectTo(secure.address("/done?code=1")));
    secure.serve("/done", page("done"));
    secure.askForCertificates(G_TLS_AUTHENTICATION_REQUESTED);
  }

  // A server that is destroyed waits for handshakes.
  void TearDown() override { run.reset(); }

  void addToken(const std::string& label, const std::string& owner) {
    tokens.add(label, kPin);
    (void)organization.signClient(owner, temporary(owner + ".crt"));
    tokens.store(label, kPin, temporary(owner + ".crt"));
  }

  void startFocused() {
    start();
    screen.focus(window().id);
  }

  // Waits for the first object whose name begins like this, apart from marks for its direction, and that takes input.
  AccessibleObject untilReady(AtspiRole role, const std::string& beginning) {
    std::optional<AccessibleObject> found;
    until("the object " + beginning, [&] {
      for (const AccessibleObject& each : accessibility->all()) {
        if (each.role != role || withoutMarks(each.name).rfind(beginning, 0) != 0) continue;
        found = each;
        return accessibility->isSensitive(each);
      }
      return false;
    });
    return *found;
  }

  // The names of the owners of the certificates in the prompt, in order.
  std::vector<std::string> choices() const {
    std::vector<std::string> names;
    for (const AccessibleObject& each : accessibility->all()) {
      const std::string name = withoutMarks(each.name);
      const std::size_t end = name.find('\n');
      if (each.role == ATSPI_ROLE_PUSH_BUTTON && end != std::string::npos) names.push_back(name.substr(0, end));
    }
    return names;
  }

  void choose(const std::string& owner) {
    (void)untilReady(ATSPI_ROLE_PUSH_BUTTON, owner + "\n");
    const std::vector<std::string> all = choices();
    const auto steps = std::find(all.begin(), all.end(), owner) - all.begin();
    for (auto step = steps; step > 0; --step)
      screen.press(XK_Down);
    screen.press(XK_Return);
  }

  void enterPin(const std::string& pin) {
    (void)untilReady(ATSPI_ROLE_PASSWORD_TEXT, "PIN of \u201CCard");
    screen.type(pin);
    screen.press(XK_Return);
  }

  void cancelPrompt(AtspiRole role, const std::string& part) {
    (void)untilReady(role, part);
    screen.press(XK_Escape);
  }

  // The owner of the certificate that came with each request, in order.
  static std::vector<std::string> ownersAt(const LoopbackServer& server) {
    std::vector<std::string> all;
    for (const Request& each : server.requests())
      all.push_back(each.certificate);
    return all;
  }
  std::vector<std::string> owners() const { return ownersAt(secure); }

  const Authority organization{temporary("organization.crt")};
  const Certificate certificate = organization.sign("127.0.0.1", temporary("signin.crt"));
  LoopbackServer secure{certificate.get()};
  LoopbackServer other{certificate.get()};
  TokenStore tokens{temporary("store")};
  std::unique_ptr<Accessibility> accessibility;
};

}  // namespace endtoend
