// The accessibility tree of the programs in a session of the test's own: a session bus with the accessibility service.
//
//   options.environment.merge(accessibility.environment());
//   start();
//   until("the window", [&] { return accessibility.find(ATSPI_ROLE_FRAME, "My Product").has_value(); });
//
// - Changes in the tree are events of the default main context.
// - Calls wait for the program's response. An object that no longer exists is treated as missing.

#pragma once

#include <atspi/atspi.h>
#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/endtoend/SessionBus.h"

namespace endtoend {

// An object that a screen reader can speak: a window, a button, a field of a page.
struct AccessibleObject {
  std::string owner;  // the program's address on the bus
  std::string path;
  AtspiRole role = ATSPI_ROLE_INVALID;  // role names depend on the AT-SPI version
  std::string name;
};

// Returns a name without the characters that give its text a direction, which are not displayed.
std::string withoutMarks(std::string name);

class Accessibility {
 public:
  // Whether this system has the required programs.
  static bool isPossible();

  // Returns when programs can connect. Its files are in `folder`. Throws std::runtime_error if it does not start.
  explicit Accessibility(const std::filesystem::path& folder);
  ~Accessibility();

  Accessibility(const Accessibility&) = delete;
  Accessibility& operator=(const Accessibility&) = delete;

  // The environment of a program that connects to this session.
  std::map<std::string, std::string> environment() const { return bus_.environment(); }

  // Returns the first object with a role and a name, in reading order: of all objects, or of those below `above`.
  std::optional<AccessibleObject> find(AtspiRole role, const std::string& name) const;
  std::optional<AccessibleObject> find(const AccessibleObject& above, AtspiRole role, const std::string& name) const;

  // Whether an object takes input.
  bool isSensitive(const AccessibleObject& object) const;

  // Returns all objects, or all below `above`.
  std::vector<AccessibleObject> below(const AccessibleObject& above) const;
  std::vector<AccessibleObject> all() const;

  // Returns the objects of one process. Those of a page belong to another one, which does not respond while the page
  // waits for a dialog.
  std::vector<AccessibleObject> allOf(pid_t process) const;

 private:
  std::string addressOfTheService() const;
  GVariant* call(const AccessibleObject& object, const char* interface, const char* method, GVariant* arguments) const;
  GVariant* property(const AccessibleObject& object, const char* name) const;
  AccessibleObject describe(const AccessibleObject& reference) const;
  pid_t processOf(const AccessibleObject& object) const;
  std::vector<AccessibleObject> referencesBelow(const AccessibleObject& object) const;  // without role and name
  std::vector<AccessibleObject> below(const AccessibleObject& above, const std::string& owner) const;

  SessionBus bus_;
  tools::ChildProcess service_;
  platform::Owned<GDBusConnection> connection_;
  guint changes_ = 0;
};

}  // namespace endtoend
