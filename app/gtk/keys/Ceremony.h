// Carries out a registration or an assertion with the keys that are plugged in (W3C Web Authentication, Level 2,
// sections 5.1.3 and 5.1.4; CTAP 2.1; U2F).
//
// - One key that is plugged in is used; of several, the one that the user touches.
// - A key that is pulled out is forgotten. One that accepts no PIN is not used again before it has been reinserted.
// - A ceremony fails only after the user has touched the key or refused there, so that a page does not learn without
// the
//   user what a key holds or can do.
// - Has no time limit: the end of standard input ends the process.

#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/gtk/keys/Answers.h"
#include "app/gtk/keys/Device.h"
#include "app/gtk/keys/Protocol.h"
#include "app/gtk/keys/WebAuthn.h"

class Ceremony {
 public:
  // Gets the events of Protocol.h; sinks the floating reference `value`.
  using Report = std::function<void(const char* event, GVariant* value)>;

  Ceremony(Answers& answers, Report report) : answers_(answers), report_(std::move(report)) {}

  void run(const Registration& request);
  void run(const Assertion& request);

 private:
  enum class Step { kDone, kOtherKey };
  using Attempt = std::function<int(const char* pin, fido_opt_t builtInVerification)>;  // returns an error of libfido2

  void withKeys(const std::function<Step(const Device&)>& use);
  std::unique_ptr<Device> chooseKey();
  std::unique_ptr<Device> touchedOf(std::vector<std::unique_ptr<Device>> keys, const std::vector<std::string>& paths);
  std::vector<std::string> usableKeys();

  Step registerWith(const Device& key, const Registration& request);
  Step assertWith(const Device& key, const Assertion& request);
  Step finish(const Device& key, const fido_assert_t* assertion, const Bytes& onlyAllowed, bool usedAppId);
  Step chooseAccount(const Device& key, const fido_assert_t* assertion, std::size_t& chosen);

  // Repeats `attempt` with what the key needs to verify the user, until it succeeds or fails for good.
  int attemptVerified(const Device& key, UserVerification wanted, const Attempt& attempt);
  int askPin(const Device& key, bool wasWrong, Answer& pin);
  bool waitForAnswer(const Device& key, Answer& to);
  Step fail(KeyError error);
  Step failAfterTouch(const Device& key, KeyError error);
  Step blocked(const Device& key, bool untilReinserted);
  Step outcomeOf(const Device& key, int error);

  Answers& answers_;
  Report report_;
  std::set<std::string> unusable_;  // paths
};
