// A fixture for pages that ask for a security key.

#pragma once

#include <string>

#include "tests/endtoend/PromptTest.h"
#include "tests/tools/keys/SoftwareKeys.h"

namespace endtoend {

class SecurityKeyTest : public PromptTest {
 protected:
  SecurityKeyTest() {
    options.signIn = onLocalhost("/signin");
    options.environment.merge(keys.environment());
  }

  // The site under a name that is a relying party identifier. 127.0.0.1, where it is too, is another site.
  std::string onLocalhost(const std::string& target) const {
    const std::string address = site.address(target);
    return "http://localhost" + address.substr(address.find(':', 5));
  }

  // Starts with a page that may call:
  //   registration(changes), signIn(changes)   options with these members replaced
  //   tell(promise)                            reports "granted" or the name of the error
  //   onpress(action)                          calls it at the next click
  void startAsking(const std::string& script) {
    startOn(kTools + ("<script>" + script + "</script>"));
    untilPainted();
  }

  void clickPage() { clickAt(300, 300); }

  // The program finds these keys only.
  tools::SoftwareKeys keys{temporary("")};

  static constexpr char kTools[] = R"(<script>
  const bytes = (count) => crypto.getRandomValues(new Uint8Array(count));
  const registration = (changes) => ({ publicKey: {
    rp: { name: 'Example' }, user: { id: bytes(16), name: 'ada', displayName: 'Ada' }, challenge: bytes(32),
    pubKeyCredParams: [{ type: 'public-key', alg: -7 }], ...changes } });
  const signIn = (changes) => ({ publicKey: { challenge: bytes(32), ...changes } });
  const tell = (promise) => promise.then(() => report('granted'), (error) => report(error.name));
  const onpress = (action) => addEventListener('click', action, { once: true });
</script>)";
};

}  // namespace endtoend
