// The system's proxy: every request goes through it, and its rejections are final.

#include <fstream>

#include "tests/endtoend/Accessibility.h"
#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Proxy.h"
#include "tests/tools/support/ClosedPort.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ProxyTest : public EndToEndTest {
 protected:
  ProxyTest() {
    options.environment.merge(proxy.environment());
    options.signIn = "http://shop.example/signin";
    options.redirect = "http://shop.example/done";
    options.enterprise = "http://shop.example/start";
  }

  Proxy proxy{site};
};

TEST_F(ProxyTest, EveryRequestGoesThroughTheSystemsProxy) {
  site.serve("/signin", pageThatGoesTo("http://other.example/frame"));
  site.serve("/frame", page("<img src='/image'><script>fetch('/data').then("
                            "() => { location.href = 'http://shop.example/done?code=1' })</script>"));
  EXPECT_EQ(messageOfARun(), result("http://shop.example/done?code=1"));
  EXPECT_THAT(proxy.requestLines(),
              testing::UnorderedElementsAre("GET http://shop.example/signin", "GET http://other.example/frame",
                                            "GET http://other.example/image", "GET http://other.example/data",
                                            "GET http://shop.example/done?code=1"));
}

TEST_F(ProxyTest, RedirectsGoThroughTheProxy) {
  site.serve("/signin", redirectTo("http://shop.example/done?code=1"));
  EXPECT_EQ(messageOfARun(), result("http://shop.example/done?code=1"));
  EXPECT_THAT(proxy.requestLines(),
              ElementsAre("GET http://shop.example/signin", "GET http://shop.example/done?code=1"));
}

TEST_F(ProxyTest, AnExemptedHostIsConnectedDirectly) {
  options.environment["no_proxy"] = "127.0.0.1";
  options.signIn = site.address("/signin");
  site.serve("/signin", redirectTo("http://shop.example/done?code=1"));
  EXPECT_EQ(messageOfARun(), result("http://shop.example/done?code=1"));
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /done?code=1"));
  EXPECT_THAT(proxy.requestLines(), ElementsAre("GET http://shop.example/done?code=1"));
}

TEST_F(ProxyTest, AGnomeSessionUsesItsOwnSettings) {
  const tools::ClosedPort closedPort;
  options.environment["http_proxy"] = closedPort.address();
  options.environment["XDG_CURRENT_DESKTOP"] = "ubuntu:GNOME";
  options.environment["GSETTINGS_BACKEND"] = "keyfile";
  options.environment["XDG_CONFIG_HOME"] = temporary("config");
  std::filesystem::create_directories(temporary("config/glib-2.0/settings"));
  std::ofstream(temporary("config/glib-2.0/settings/keyfile"))
      << "[system/proxy]\nmode='manual'\n[system/proxy/http]\nhost='127.0.0.1'\nport="
      << proxy.address().substr(proxy.address().rfind(':') + 1) << "\n";
  site.serve("/signin", redirectTo("http://shop.example/done?code=1"));
  EXPECT_EQ(messageOfARun(), result("http://shop.example/done?code=1"));
}

TEST_F(ProxyTest, ARefusedProxyConnectionEndsTheRun) {
  const tools::ClosedPort closedPort;
  options.environment["http_proxy"] = closedPort.address();
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError Error code -1004"));
  EXPECT_THAT(proxy.requestLines(), IsEmpty());
}

// The proxy's response must neither be shown nor run under the site's name.
TEST_F(ProxyTest, ARefusedTunnelEndsTheRun) {
  options.signIn = "https://shop.example/done";
  options.redirect = "https://shop.example/done";
  EXPECT_EQ(messageOfARun(), kLoadFailed);
  EXPECT_THAT(logMessages(), Contains("didFailProvisionalLoadWithError Error code 102"));
  EXPECT_THAT(proxy.requestLines(), Contains("CONNECT shop.example:443"));
}

TEST_F(ProxyTest, AProxysPromptDoesNotBlockClosing) {
  proxy.requireCredentials("ada", "Correct-Horse-7");
  start();
  until("the proxy's question", [&] { return proxy.rejected() > 0; });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(site.requestLines(), IsEmpty());
}

TEST_F(ProxyTest, TheUserEntersTheProxysPassword) {
  if (!Accessibility::isPossible()) GTEST_SKIP() << "no D-Bus or no accessibility service here";
  const Accessibility accessibility(temporary("bus"));
  options.environment.merge(accessibility.environment());
  proxy.requireCredentials("ada", "Correct-Horse-7");
  site.serve("/signin", redirectTo("http://shop.example/done?code=1"));
  start();
  until("the question", [&] {
    const auto accept = accessibility.find(ATSPI_ROLE_PUSH_BUTTON, "OK");
    return accept && accessibility.isSensitive(*accept);
  });
  screen.focus(window().id);
  screen.type("ada");
  screen.press(XK_Tab);
  screen.type("Correct-Horse-7");
  screen.press(XK_Return);
  EXPECT_EQ(message(), result("http://shop.example/done?code=1"));
  EXPECT_EQ(proxy.rejected(), 1);
}

}  // namespace
}  // namespace endtoend
