// What a screen reader is told of the programs in a session: a bus of the test's own with the accessibility service on
// it, and a look at the tree of everything that programs offer there.
//
//   options.environment.merge(accessibility.environment());
//   start();
//   until("the window", [&] { return accessibility.find(ATSPI_ROLE_FRAME, "My Product").has_value(); });
//
// Whatever programs tell of changes in the tree is an event of the default main context. A question waits for the
// program's answer; an object that has gone answers like none.

#pragma once

#include <atspi/atspi.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/endtoend/SessionBus.h"

namespace endtoend {

// Something that a screen reader can speak of: a window, a button, a field of a page.
struct AccessibleObject {
  std::string owner;  // its address on the bus
  std::string path;
  AtspiRole role = ATSPI_ROLE_INVALID;  // the number: a role's name depends on the release of AT-SPI
  std::string name;
};

class Accessibility {
 public:
  // Whether this system has the programs for it.
  static bool isPossible();

  // Returns once programs can speak to it; its files lie in `folder`. Throws std::runtime_error when that does not
  // come.
  explicit Accessibility(const std::filesystem::path& folder);
  ~Accessibility();

  Accessibility(const Accessibility&) = delete;
  Accessibility& operator=(const Accessibility&) = delete;

  // What lets a program take part.
  std::map<std::string, std::string> environment() const { return bus_.environment(); }

  // The first object of a role and name, in the order in which they are read, anywhere or below another object.
  std::optional<AccessibleObject> find(AtspiRole role, const std::string& name) const;
  std::optional<AccessibleObject> find(const AccessibleObject& above, AtspiRole role, const std::string& name) const;

  // Every object below another one, or all there are: for what find() does not ask.
  std::vector<AccessibleObject> below(const AccessibleObject& above) const;
  std::vector<AccessibleObject> all() const;

 private:
  std::string addressOfTheService() const;
  GVariant* ask(const AccessibleObject& object, const char* interface, const char* question, GVariant* details) const;
  GVariant* property(const AccessibleObject& object, const char* name) const;
  AccessibleObject describe(const std::string& owner, const std::string& path) const;
  std::vector<AccessibleObject> childrenOf(const AccessibleObject& object) const;

  SessionBus bus_;
  tools::ChildProcess service_;
  tools::Owned<GDBusConnection> connection_;
  guint changes_ = 0;
};

}  // namespace endtoend
