// A ceremony of SecurityKeys with keys in software.

#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/gtk/keys/SecurityKeys.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"
#include "tests/tools/keys/SoftwareKeys.h"
#include "tests/tools/support/EventLoop.h"

constexpr std::chrono::seconds kWaitTime{30};
constexpr char kRpId[] = "login.example.test";

class SecurityKeysTest : public testing::Test {
 protected:
  static Registration registration() {
    Registration request;
    request.rpId = kRpId;
    request.rpName = "Example";
    request.userId = {1, 2, 3};
    request.userName = "ada";
    request.userDisplayName = "Ada Lovelace";
    request.clientDataHash = sha256(clientDataJson("webauthn.create", kChallenge, kOrigin));
    request.algorithms = {kEs256};
    return request;
  }

  static Assertion assertion(const std::vector<Bytes>& allowed = {}) {
    Assertion request;
    request.rpId = kRpId;
    request.clientDataHash = sha256(clientDataJson("webauthn.get", kChallenge, kOrigin));
    request.allowed = allowed;
    return request;
  }

  template <typename Request>
  void start(const Request& request, std::chrono::milliseconds timeout = std::chrono::minutes(5)) {
    events.clear();
    registered.reset();
    asserted.reset();
    failed.reset();
    securityKeys.start(request, timeout, handlers());
  }

  // Waits until the last event is this one.
  bool waitForEvent(const std::string& event) {
    return tools::waitUntil([&] { return !events.empty() && events.back() == event; }, kWaitTime);
  }

  bool waitForEnd() {
    return tools::waitUntil([this] { return registered || asserted || failed; }, kWaitTime);
  }

  // Registers with a key that is touched all the time.
  RegistrationResult registerAtOnce(const Registration& request = registration()) {
    start(request);
    EXPECT_TRUE(waitForEnd());
    return registered.value_or(RegistrationResult());
  }

  static inline const Bytes kChallenge{9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 9, 8, 7, 6, 5, 4};
  static constexpr char kOrigin[] = "https://login.example.test";

 private:
  SecurityKeys::Events handlers() {
    SecurityKeys::Events handlers;
    handlers.onNeedsKey = [this](bool withoutPermission) {
      events.emplace_back(withoutPermission ? "forbidden" : "key");
    };
    handlers.onNeedsTouch = [this] { events.emplace_back("touch"); };
    handlers.onNeedsPin = [this](std::optional<int> triesLeft, bool wrong) {
      events.push_back((wrong ? "wrong pin " : "pin ") + std::to_string(triesLeft.value_or(-1)));
    };
    handlers.onPinBlocked = [this](bool untilReinserted) {
      events.emplace_back(untilReinserted ? "blocked until reinserted" : "blocked");
    };
    handlers.onAccounts = [this](const std::vector<KeyAccount>& all) {
      accounts = all;
      events.emplace_back("accounts");
    };
    handlers.onRegistered = [this](RegistrationResult result) { registered = std::move(result); };
    handlers.onAsserted = [this](AssertionResult result) { asserted = std::move(result); };
    handlers.onFailed = [this](KeyError error) { failed = error; };
    return handlers;
  }

  const support::TemporaryFolder folder_;

 protected:
  tools::SoftwareKeys keys{folder_.path()};

 private:
  const support::Variable preload_{"LD_PRELOAD", keys.environment().at("LD_PRELOAD")};
  const support::Variable socket_{"SVO_SOFTWARE_KEYS", keys.environment().at("SVO_SOFTWARE_KEYS")};

 protected:
  std::vector<std::string> events;
  std::vector<KeyAccount> accounts;
  std::optional<RegistrationResult> registered;
  std::optional<AssertionResult> asserted;
  std::optional<KeyError> failed;
  SecurityKeys securityKeys;
};
