// Desktop services without a desktop: no display, no message bus, or one that does not reply.

#include <gio/gio.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/UniqueFd.h"
#include "platform/linux/Glib.h"
#include "tests/endtoend/SessionBus.h"
#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"

namespace {

using namespace std::chrono_literals;
using support::Variable;

// An event that a context handles in its next iteration. It has the priority of the timer in `runLoopFor`: an iteration
// skips ready events of lower priority.
class Event {
 public:
  explicit Event(GMainContext* context) : source_(g_idle_source_new()) {
    g_source_set_callback(
        source_,
        [](gpointer self) {
          static_cast<Event*>(self)->handledBy_ = std::this_thread::get_id();
          return static_cast<gboolean>(G_SOURCE_REMOVE);
        },
        this, nullptr);
    g_source_set_priority(source_, G_PRIORITY_DEFAULT);
    g_source_attach(source_, context);
  }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;
  ~Event() {
    g_source_destroy(source_);
    g_source_unref(source_);
  }

  std::thread::id handledBy() const { return handledBy_; }
  bool isHandled() const { return handledBy_ != std::thread::id(); }

 private:
  GSource* source_;
  std::thread::id handledBy_;
};

TEST(RunLoopTest, RunsForTheGivenTime) {
  const auto start = platform::runLoopTime();
  platform::runLoopFor(30ms);
  EXPECT_GE(platform::runLoopTime() - start, 29ms);  // the timer counts whole milliseconds
}

TEST(RunLoopTest, HandlesEventsOfTheFirstThread) {
  const Event event(nullptr);
  platform::runLoopFor(1ms);
  EXPECT_TRUE(event.isHandled());
}

TEST(RunLoopTest, IgnoresTheGlobalContextOnAnotherThread) {
  const Event event(nullptr);
  std::thread([] { platform::runLoopFor(10ms); }).join();
  EXPECT_FALSE(event.isHandled());
}

TEST(RunLoopTest, HandlesAThreadsOwnContext) {
  std::thread::id other;
  std::thread thread([&] {
    const platform::Owned<GMainContext, g_main_context_unref> own(g_main_context_new());
    g_main_context_push_thread_default(own.get());
    {
      const Event event(own.get());
      platform::runLoopFor(10ms);
      other = event.handledBy();
    }
    g_main_context_pop_thread_default(own.get());
  });
  const std::thread::id expected = thread.get_id();
  thread.join();
  EXPECT_EQ(other, expected);
}

TEST(RunLoopTest, RunsInsideAnEventHandler) {
  bool done = false;
  const platform::Owned<GSource, g_source_unref> source(g_idle_source_new());
  g_source_set_callback(
      source.get(),
      [](gpointer flag) {
        platform::runLoopFor(1ms);
        *static_cast<bool*>(flag) = true;
        return static_cast<gboolean>(G_SOURCE_REMOVE);
      },
      &done, nullptr);
  g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
  g_source_attach(source.get(), nullptr);
  platform::runLoopFor(1ms);
  EXPECT_TRUE(done);
}

// Accepts connections and never replies.
class SilentServer {
 public:
  explicit SilentServer(const std::string& path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket_.get(), 5), 0);
  }

 private:
  const platform::UniqueFd socket_;
};

// An X display that never replies, with a free display number.
class SilentDisplay {
 public:
  SilentDisplay() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket_.get(), name, size), 0);
    EXPECT_EQ(::getsockname(socket_.get(), name, &size), 0);
    EXPECT_EQ(::listen(socket_.get(), 5), 0);
    constexpr int kFirstDisplayPort = 6000;
    name_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - kFirstDisplayPort);
  }

  const std::string& name() const { return name_; }

 private:
  const platform::UniqueFd socket_;
  std::string name_;
};

// Receives the signal that `NoBusTest` posts.
class Listener {
 public:
  explicit Listener(const std::string& address) : bus_(endtoend::connectToBus(address)) {
    const auto onSignal = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
                             gpointer received) { *static_cast<bool*>(received) = true; };
    g_dbus_connection_signal_subscribe(bus_.get(), nullptr, "org.example.Agent", "Stop", "/org/example/Agent", nullptr,
                                       G_DBUS_SIGNAL_FLAGS_NONE, onSignal, &received_, nullptr);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  bool hasReceived() const {
    return support::becomesTrue([this] {
      g_main_context_iteration(nullptr, FALSE);
      return received_;
    });
  }

 private:
  const platform::Owned<GDBusConnection> bus_;
  bool received_ = false;
};

class NoBusTest : public testing::Test {
 protected:
  static std::chrono::steady_clock::duration timeToPost() {
    const auto start = std::chrono::steady_clock::now();
    platform::postToAllSessions("org.example.Stop", "org.example.Agent");
    return std::chrono::steady_clock::now() - start;
  }

  // The minimum of several posts: load may delay any of them, a timeout of the function delays all.
  static std::chrono::steady_clock::duration minTimeToPost() {
    auto min = timeToPost();
    for (int others = 0; others < 4; ++others)
      min = std::min(min, timeToPost());
    return min;
  }

  const support::TemporaryFolder folder;
  const Variable noSession{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
  const Variable noRuntimeFolder{"XDG_RUNTIME_DIR", folder.path()};
  const Variable noSystem{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder / "no-such")};
};

TEST_F(NoBusTest, PostsWithoutWaiting) {
  EXPECT_LT(minTimeToPost(), 1500ms);
}

TEST_F(NoBusTest, IgnoresInvalidAddresses) {
  for (const char* address : {"nonsense", "unix:path=", "autolaunch:", ":::"}) {
    const Variable session("DBUS_SESSION_BUS_ADDRESS", address);
    EXPECT_LT(minTimeToPost(), 1500ms) << address;
  }
}

TEST_F(NoBusTest, StartsNoBus) {
  const Variable display("DISPLAY", ":98");
  EXPECT_LT(minTimeToPost(), 1500ms);
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(NoBusTest, IgnoresAutolaunchEntriesOfAnAddressList) {
  support::writeFile(folder / "dbus-launch", "#!/bin/sh\ntouch '" + (folder / "started") + "'\n");
  std::filesystem::permissions(folder / "dbus-launch", std::filesystem::perms(0755));
  const Variable path("PATH", folder.path() + ":" + std::getenv("PATH")), display("DISPLAY", ":98");
  for (const char* bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"}) {
    for (const char* address : {"unix:path=/no;autolaunch:", "autolaunch:;unix:path=/no", ";autolaunch:scope=user;"}) {
      const Variable variable(bus, address);
      EXPECT_LT(minTimeToPost(), 1500ms) << address;
      EXPECT_FALSE(std::filesystem::exists(folder / "started")) << bus << "=" << address;
    }
  }
}

TEST_F(NoBusTest, TimesOutForASilentBus) {
  const SilentServer bus(folder / "bus");
  EXPECT_LT(timeToPost(), 10s);
}

TEST_F(NoBusTest, PostsToTheSystemBusDespiteSilentSession) {
  const SilentServer session(folder / "bus");
  if (!endtoend::SessionBus::isPossible()) GTEST_SKIP() << "there is no message bus here";
  const endtoend::SessionBus bus(folder / "system");
  const Variable system("DBUS_SYSTEM_BUS_ADDRESS", bus.address());
  const Listener listener(bus.address());
  EXPECT_LT(timeToPost(), 10s);
  EXPECT_TRUE(listener.hasReceived());
}

TEST_F(NoBusTest, IgnoresNamesThatDBusRejects) {
  platform::postToAllSessions("", "");
  platform::postToAllSessions("org.example.", "org.example.Agent");
  platform::postToAllSessions("org.example.Stop", "no dots");
  platform::postToAllSessions("org.example.Stop", "org..Agent");
}

TEST(RaiseWindowTest, FailsWithoutADisplay) {
  const Variable none("DISPLAY", std::nullopt);
  EXPECT_EQ(platform::raiseWindow(::getpid()), platform::RaiseResult::kFailed);
  const Variable gone("DISPLAY", ":9876");
  EXPECT_EQ(platform::raiseWindow(::getpid()), platform::RaiseResult::kFailed);
}

TEST(RaiseWindowTest, FailsForASilentDisplay) {
  const SilentDisplay server;
  const Variable display("DISPLAY", server.name());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(platform::raiseWindow(::getpid()), platform::RaiseResult::kFailed);
  EXPECT_GT(std::chrono::steady_clock::now() - start, 1s) << "the display was not queried";
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST(LauncherTest, ReportsMissingFilesAndLaunchesNothing) {
  const platform::LaunchResult missing = platform::launchInForeground("/no/such", {});
  EXPECT_FALSE(missing.launched);
  ASSERT_TRUE(missing.failure);
  EXPECT_EQ(missing.failure->error, "ENOENT");
  EXPECT_EQ(missing.failure->comment, "No such file or directory");
  const platform::LaunchResult existing = platform::launchInForeground("/bin/true", {});
  EXPECT_FALSE(existing.launched);
  EXPECT_FALSE(existing.failure);
}

// A desktop whose handler of the scheme "svotest" writes the URL to a file.
class OpenUrlTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const std::string data = std::getenv("XDG_DATA_HOME"), config = std::getenv("XDG_CONFIG_HOME");
    std::filesystem::create_directories(data + "/applications");
    std::filesystem::create_directories(config);
    support::writeFile(data + "/handler", "#!/bin/sh\nprintf %s \"$1\" >'" + data + "/part' && mv '" + data +
                                              "/part' '" + data + "/opened'\n");
    std::filesystem::permissions(data + "/handler", std::filesystem::perms(0755));
    support::writeFile(data + "/applications/svotest.desktop",
                       "[Desktop Entry]\nType=Application\nName=Test\nExec=" + data +
                           "/handler %u\nMimeType=x-scheme-handler/svotest;\n");
    support::writeFile(config + "/mimeapps.list", "[Default Applications]\nx-scheme-handler/svotest=svotest.desktop\n");
  }

  const std::string opened = std::string(std::getenv("XDG_DATA_HOME")) + "/opened";
};

TEST_F(OpenUrlTest, StartsTheHandlerOfTheScheme) {
  const Variable display("DISPLAY", ":98");
  EXPECT_TRUE(platform::openUrl("svotest:a%20b?c"));
  EXPECT_TRUE(support::becomesTrue([&] { return std::filesystem::exists(opened); }));
  EXPECT_EQ(support::contentsOf(opened), "svotest:a%20b?c");
  EXPECT_TRUE(support::becomesTrue([] { return !support::hasChildren(); }));
  std::filesystem::remove(opened);
}

TEST_F(OpenUrlTest, StartsTheHandlerDespiteASilentBus) {
  const support::TemporaryFolder folder;
  const SilentServer bus(folder / "bus");
  const Variable display("DISPLAY", ":98"), session("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder / "bus"));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(platform::openUrl("svotest:late"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
  EXPECT_TRUE(support::becomesTrue([&] { return std::filesystem::exists(opened); }));
  EXPECT_EQ(support::contentsOf(opened), "svotest:late");
  std::filesystem::remove(opened);
}

TEST_F(OpenUrlTest, FailsWithoutAHandler) {
  const Variable display("DISPLAY", ":98");
  EXPECT_FALSE(platform::openUrl("svo-no-such-scheme:a"));
}

TEST_F(OpenUrlTest, FailsWithoutADisplay) {
  const Variable none("DISPLAY", std::nullopt);
  EXPECT_FALSE(platform::openUrl("svotest:a"));
}

TEST_F(OpenUrlTest, FailsForInvalidUrls) {
  const Variable display("DISPLAY", ":98");
  for (const char* text : {"svotest:a b", "", "no-scheme", "/bin/true"})
    EXPECT_FALSE(platform::openUrl(text)) << text;
}

}  // namespace
