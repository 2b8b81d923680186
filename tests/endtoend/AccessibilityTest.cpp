// The accessibility tree of the window and its pages.

#include "tests/endtoend/Accessibility.h"

#include <memory>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Proxy.h"

namespace endtoend {
namespace {

class AccessibilityTest : public EndToEndTest {
 protected:
  void SetUp() override {
    if (!Accessibility::isPossible()) GTEST_SKIP() << "no D-Bus or no accessibility service here";
    accessibility = std::make_unique<Accessibility>(temporary("bus"));
    options.environment.merge(accessibility->environment());
  }

  // Waits until the object exists.
  AccessibleObject find(AtspiRole role, const std::string& name) {
    std::optional<AccessibleObject> found;
    until("the object " + name, [&] { return (found = accessibility->find(role, name)).has_value(); });
    return *found;
  }

  std::unique_ptr<Accessibility> accessibility;
};

TEST_F(AccessibilityTest, TheWindowHasTheProductName) {
  start();
  find(ATSPI_ROLE_FRAME, "Example Product");
}

TEST_F(AccessibilityTest, PageFieldsAreFoundByTheirLabels) {
  site.serve("/signin",
             pageThatReportsItsLoad("<title>Welcome</title><label>User name <input></label>"
                                    "<label>Password <input type='password'></label><button>Go on</button>"));
  start();
  untilRequested("/loaded");
  const AccessibleObject document = find(ATSPI_ROLE_DOCUMENT_WEB, "Welcome");
  EXPECT_TRUE(accessibility->find(document, ATSPI_ROLE_ENTRY, "User name"));
  EXPECT_TRUE(accessibility->find(document, ATSPI_ROLE_PASSWORD_TEXT, "Password"));
  EXPECT_TRUE(accessibility->find(document, ATSPI_ROLE_PUSH_BUTTON, "Go on"));
}

TEST_F(AccessibilityTest, TheStripNamesTheSite) {
  start();
  find(ATSPI_ROLE_STATUS_BAR, "Site: 127.0.0.1, this computer");
}

TEST_F(AccessibilityTest, TheStripSaysThatAPartIsHidden) {
  site.serve("/signin", pageThatReportsItsLoad("<div style='height: 1500px'></div>"));
  start();
  find(ATSPI_ROLE_STATUS_BAR,
       "Site: 127.0.0.1, this computer. Part of the page is hidden: zoom with Ctrl and +, then scroll");
  screen.focus(window().id);
  screen.press(XK_plus, {XK_Control_L});
  find(ATSPI_ROLE_STATUS_BAR, "Site: 127.0.0.1, this computer");
}

TEST_F(AccessibilityTest, TheStripNamesALookAlikeInAscii) {
  const Proxy proxy(site);
  options.environment.merge(proxy.environment());
  options.signIn = "http://xn--paypa-o7a.example/signin";  // a stroke through the last letter
  start();
  find(ATSPI_ROLE_STATUS_BAR,
       "Warning: the connection to xn--paypa-o7a.example is not encrypted: others can read what you type");
}

}  // namespace
}  // namespace endtoend
