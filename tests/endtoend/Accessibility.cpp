#include "tests/endtoend/Accessibility.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "tests/tools/support/EventLoop.h"

namespace endtoend {

using platform::Owned;

namespace {

constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kService[] = "/usr/libexec/at-spi-bus-launcher";
constexpr char kRegistry[] = "org.a11y.atspi.Registry";
constexpr char kRootPath[] = "/org/a11y/atspi/accessible/root";
constexpr char kAccessible[] = "org.a11y.atspi.Accessible";
constexpr int kReplyTimeoutMilliseconds = 30'000;

tools::ChildProcess::Setup setupFor(const SessionBus& bus) {
  tools::ChildProcess::Setup setup;
  setup.command = {kService, "--launch-immediately", "--a11y=1"};
  setup.environment = bus.environment();
  setup.environment["GSETTINGS_BACKEND"] = "memory";
  setup.outputFile = "/dev/null";
  setup.errorFile = "/dev/null";
  return setup;
}

AtspiRole roleIn(GVariant* reply) {
  guint32 number = 0;
  g_variant_get(reply, "(u)", &number);
  return static_cast<AtspiRole>(number);
}

void onAppears(GDBusConnection*, const char*, const char*, gpointer appeared) {
  *static_cast<bool*>(appeared) = true;
}

void onChange(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, gpointer) {}

}  // namespace

std::string withoutMarks(std::string name) {
  for (const std::string_view mark : {"\u200E", "\u200F", "\u2068", "\u2069"}) {
    for (std::size_t at = 0; (at = name.find(mark, at)) != std::string::npos;)
      name.erase(at, mark.size());
  }
  return name;
}

bool Accessibility::isPossible() {
  return SessionBus::isPossible() && std::filesystem::exists(kService);
}

Accessibility::Accessibility(const std::filesystem::path& folder)
    : bus_(folder), service_(setupFor(bus_)), connection_(connectToBus(addressOfTheService())) {
  // Programs report changes only to registered listeners.
  changes_ = g_dbus_connection_signal_subscribe(connection_.get(), nullptr, "org.a11y.atspi.Event.Object", nullptr,
                                                nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onChange, nullptr, nullptr);
  const AccessibleObject registry{kRegistry, "/org/a11y/atspi/registry", ATSPI_ROLE_INVALID, ""};
  g_autoptr(GVariant) done =
      call(registry, kRegistry, "RegisterEvent", g_variant_new("(sass)", "object:", nullptr, ""));
  if (done == nullptr) throw std::runtime_error("no registry of accessible programs");
}

Accessibility::~Accessibility() {
  g_dbus_connection_signal_unsubscribe(connection_.get(), changes_);
}

std::string Accessibility::addressOfTheService() const {
  const Owned<GDBusConnection> session = connectToBus(bus_.address());
  bool appeared = false;
  const guint watch = g_bus_watch_name_on_connection(session.get(), "org.a11y.Bus", G_BUS_NAME_WATCHER_FLAGS_NONE,
                                                     onAppears, nullptr, &appeared, nullptr);
  (void)tools::waitUntil([&] { return appeared || service_.ended(); }, std::chrono::seconds(30));
  g_bus_unwatch_name(watch);
  g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
      session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr, G_VARIANT_TYPE("(s)"),
      G_DBUS_CALL_FLAGS_NONE, kReplyTimeoutMilliseconds, nullptr, nullptr);
  if (reply == nullptr) throw std::runtime_error("no accessibility service");
  const char* address = nullptr;
  g_variant_get(reply, "(&s)", &address);
  return address;
}

GVariant* Accessibility::call(const AccessibleObject& object, const char* interface, const char* method,
                              GVariant* arguments) const {
  return g_dbus_connection_call_sync(connection_.get(), object.owner.c_str(), object.path.c_str(), interface, method,
                                     arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, kReplyTimeoutMilliseconds, nullptr,
                                     nullptr);
}

GVariant* Accessibility::property(const AccessibleObject& object, const char* name) const {
  g_autoptr(GVariant) reply =
      call(object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", kAccessible, name));
  if (reply == nullptr) return nullptr;
  g_autoptr(GVariant) boxed = g_variant_get_child_value(reply, 0);
  return g_variant_get_variant(boxed);
}

AccessibleObject Accessibility::describe(const AccessibleObject& reference) const {
  AccessibleObject object = reference;
  if (g_autoptr(GVariant) reply = call(object, kAccessible, "GetRole", nullptr)) object.role = roleIn(reply);
  if (g_autoptr(GVariant) name = property(object, "Name")) object.name = g_variant_get_string(name, nullptr);
  return object;
}

pid_t Accessibility::processOf(const AccessibleObject& object) const {
  const AccessibleObject bus{kBus, "/org/freedesktop/DBus", ATSPI_ROLE_INVALID, ""};
  g_autoptr(GVariant) reply = call(bus, kBus, "GetConnectionUnixProcessID", g_variant_new("(s)", object.owner.c_str()));
  guint32 process = 0;
  if (reply != nullptr) g_variant_get(reply, "(u)", &process);
  return static_cast<pid_t>(process);
}

bool Accessibility::isSensitive(const AccessibleObject& object) const {
  g_autoptr(GVariant) answer = call(object, kAccessible, "GetState", nullptr);
  if (answer == nullptr) return false;
  g_autoptr(GVariant) states = g_variant_get_child_value(answer, 0);
  guint32 first = 0;  // the states with the numbers 0 to 31
  g_variant_get_child(states, 0, "u", &first);
  return (first >> ATSPI_STATE_SENSITIVE & 1) != 0;
}

// One by one: GetChildren of GTK omits the page, which belongs to another process.
std::vector<AccessibleObject> Accessibility::referencesBelow(const AccessibleObject& object) const {
  std::vector<AccessibleObject> children;
  g_autoptr(GVariant) count = property(object, "ChildCount");
  for (int i = 0; count != nullptr && i < g_variant_get_int32(count); ++i) {
    g_autoptr(GVariant) child = call(object, kAccessible, "GetChildAtIndex", g_variant_new("(i)", i));
    if (child == nullptr) break;
    const char *owner = nullptr, *path = nullptr;
    g_variant_get(child, "((&s&o))", &owner, &path);
    children.push_back({owner, path, ATSPI_ROLE_INVALID, ""});
  }
  return children;
}

// All objects if `owner` is empty.
std::vector<AccessibleObject> Accessibility::below(const AccessibleObject& above, const std::string& owner) const {
  std::vector<AccessibleObject> found;
  for (const AccessibleObject& child : referencesBelow(above)) {
    if (!owner.empty() && child.owner != owner) continue;
    found.push_back(describe(child));
    const std::vector<AccessibleObject> further = below(child, owner);
    found.insert(found.end(), further.begin(), further.end());
  }
  return found;
}

std::vector<AccessibleObject> Accessibility::below(const AccessibleObject& above) const {
  return below(above, "");
}

std::vector<AccessibleObject> Accessibility::allOf(pid_t process) const {
  for (const AccessibleObject& program : referencesBelow({kRegistry, kRootPath, ATSPI_ROLE_INVALID, ""})) {
    if (processOf(program) == process) return below(program, program.owner);
  }
  return {};
}

std::vector<AccessibleObject> Accessibility::all() const {
  return below({kRegistry, kRootPath, ATSPI_ROLE_INVALID, ""});
}

std::optional<AccessibleObject> Accessibility::find(const AccessibleObject& above, AtspiRole role,
                                                    const std::string& name) const {
  const std::vector<AccessibleObject> objects = below(above);
  const auto found = std::find_if(objects.begin(), objects.end(), [&](const AccessibleObject& object) {
    return object.role == role && object.name == name;
  });
  return found == objects.end() ? std::nullopt : std::optional(*found);
}

std::optional<AccessibleObject> Accessibility::find(AtspiRole role, const std::string& name) const {
  return find({kRegistry, kRootPath, ATSPI_ROLE_INVALID, ""}, role, name);
}

}  // namespace endtoend
