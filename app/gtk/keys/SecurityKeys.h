// Runs one ceremony of W3C Web Authentication with the security keys that are plugged in (CTAP 2.1, U2F).
//
// - Each ceremony runs the program svo-signin-keys, which talks to the keys. A key that blocks, or sends what it
//   should not, does not affect this process, and libfido2 is loaded only by that program.
// - One ceremony at a time; `start` cancels the previous one. `cancel` and the destructor end it: no event follows,
//   and the key stops waiting for a touch. Neither waits for the program.
// - Exactly one of `onRegistered`, `onAsserted` and `onFailed` ends a ceremony that is not cancelled. Any function of
//   this class may be called from an event.
// - A PIN is overwritten here and in the program once it has been used. Nothing is logged.
// Main thread.

#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/gtk/Glib.h"
#include "app/gtk/keys/Protocol.h"
#include "app/gtk/keys/WebAuthn.h"

// An account whose credential a key holds. One of the two names may be empty.
struct KeyAccount {
  std::string name;
  std::string displayName;
};

class SecurityKeys {
 public:
  struct Events {
    // No key is plugged in. `withoutPermission`: there is one that this user may not open.
    std::function<void(bool withoutPermission)> onNeedsKey;
    // A touch starts the use of a key, or chooses one of several.
    std::function<void()> onNeedsTouch;
    // The key wants its PIN: call `givePin`. `wrong`: the one before was wrong. `triesLeft` is known from CTAP 2 keys.
    std::function<void(std::optional<int> triesLeft, bool wrong)> onNeedsPin;
    // The key takes no PIN until it has been removed and inserted again, or never. Another key may be used.
    std::function<void(bool untilReinserted)> onPinBlocked;
    // Several credentials fit: call `chooseAccount` with an index. At least two accounts.
    std::function<void(std::vector<KeyAccount>)> onAccounts;
    std::function<void(RegistrationResult)> onRegistered;
    std::function<void(AssertionResult)> onAsserted;
    std::function<void(KeyError)> onFailed;
  };

  SecurityKeys() = default;
  ~SecurityKeys() { cancel(); }

  SecurityKeys(const SecurityKeys&) = delete;
  SecurityKeys& operator=(const SecurityKeys&) = delete;

  // After `timeout` the ceremony fails with kNotAllowed.
  void start(Registration registration, std::chrono::milliseconds timeout, Events events);
  void start(Assertion assertion, std::chrono::milliseconds timeout, Events events);

  // Returns false for a text that is no PIN of any key (CTAP 2.1, section 6.5.1). No try is lost, and the key still
  // waits for one.
  bool givePin(std::string pin);

  // Neither function has an effect unless it was asked for.
  void chooseAccount(std::size_t index);

  void cancel();

 private:
  void run(GVariant* request, std::chrono::milliseconds timeout, Events events);
  void answer(const char* text);
  void readLine();
  void receive(const std::string& line);
  void receiveRegistration(GVariant* value);
  void receiveAssertion(GVariant* value);
  void fail(KeyError error);
  Events end();

  static void onLine(GObject* output, GAsyncResult* result, gpointer self);
  static gboolean onTimeout(gpointer self);

  Owned<GSubprocess> process_;
  Owned<GDataInputStream> output_;
  Owned<GCancellable> cancellable_;
  guint timeout_ = 0;
  Events events_;
  guint32 question_ = 0;  // 0: none
  std::variant<Registration, Assertion> request_;
};
