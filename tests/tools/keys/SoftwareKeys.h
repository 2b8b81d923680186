// Security keys in software, for programs that use libfido2; tests/tools/keys/software-keys describes their options.
//
//   options.environment.merge(keys.environment());
//   keys.plug("a", R"("pin": "1234")");
//   ...
//   ASSERT_TRUE(keys.waitFor("waiting a"));
//   keys.touch("a");
//
// - A key keeps its credentials while this object exists.
// - Runs the script software-keys, which needs python3-fido2.
// - The events of the script are events of the default main context.

#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/Glib.h"

namespace tools {

class SoftwareKeys {
 public:
  // Creates a socket in `folder`. Throws std::runtime_error if the script does not start.
  explicit SoftwareKeys(const std::filesystem::path& folder);
  ~SoftwareKeys();

  SoftwareKeys(const SoftwareKeys&) = delete;
  SoftwareKeys& operator=(const SoftwareKeys&) = delete;

  // The environment of a program whose libfido2 finds these keys and no others.
  std::map<std::string, std::string> environment() const;

  // `options` are members of a JSON object. Each returns when the key is plugged in or pulled out.
  void plug(const std::string& name, const std::string& options = "");
  void pull(const std::string& name);

  // Once, now or when the key asks next.
  void touch(const std::string& name);
  void refuse(const std::string& name);

  // When the key gets the CTAP 2 command next: "pull", "break" and "hang" in quotes, or the number of a status.
  void at(const std::string& name, int command, const std::string& what);

  // Waits for an event that the script reports. Each call takes one event. Returns false after 30 seconds.
  //   "waiting a", "cancelled a"
  bool waitFor(const std::string& event);

 private:
  void send(const std::string& command);
  void readEvent();
  static void onEvent(GObject* output, GAsyncResult* result, gpointer self);

  std::string socket_;
  platform::Owned<GSubprocess> script_;
  platform::Owned<GDataInputStream> output_;
  platform::Owned<GCancellable> cancellable_;
  std::vector<std::string> events_;
};

}  // namespace tools
