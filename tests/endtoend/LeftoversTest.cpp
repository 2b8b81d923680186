// After a run only the log is left.

#include "tests/tools/support/ClosedPort.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/endtoend/Processes.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

class LeftoversTest : public EndToEndTest {
 protected:
  LeftoversTest() { adoptOrphans(); }
};

constexpr char kPageThatStoresData[] = R"(<script>
  document.cookie = 'session=secret; max-age=99999';
  localStorage.setItem('session', 'secret');
  indexedDB.open('session').onsuccess = () =>
    caches.open('session').catch(() => 0).then(() => { location.href = '/done' });
</script>)";

TEST_F(LeftoversTest, NothingThatAPageStoresIsKept) {
  tools::Response response = page(kPageThatStoresData);
  response.headers["Cache-Control"] = "max-age=99999";
  response.headers["Set-Cookie"] = "visit=secret; Max-Age=99999";
  site.serve("/signin", response);
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  EXPECT_THAT(filesInHome(), ElementsAre("Library", "Library/Logs", "Library/Logs/Kelvo.log"));
}

TEST_F(LeftoversTest, RunsShareNoState) {
  site.serve("/signin", [this](const Request&) {
    tools::Response response = pageThatGoesTo("/done?' + document.cookie + '");
    response.headers["Set-Cookie"] = "visit=" + std::to_string(site.requests().size()) + "; Max-Age=99999";
    return response;
  });
  messageOfARun();
  messageOfARun();
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /done?visit=0", "GET /signin", "GET /done?visit=2"));
}

TEST_F(LeftoversTest, NoProcessOutlivesTheRun) {
  site.serve("/signin", redirectTo(site.address("/done")));
  const std::vector<pid_t> before = childrenOfThisProcess();
  messageOfARun();
  for (const pid_t child : childrenOfThisProcess()) {
    const bool isOurs = std::find(before.begin(), before.end(), child) != before.end();
    EXPECT_TRUE(isOurs || waitForExit(child)) << child;
  }
}

class EndingsTest : public LeftoversTest, public testing::WithParamInterface<const char*> {};

TEST_P(EndingsTest, LeavesNoSemaphoreSet) {
  const tools::ClosedPort closedPort;
  const std::string ending = GetParam();
  if (ending == "Failed") options.signIn = closedPort.address();
  if (ending == "SignedIn") site.serve("/signin", redirectTo(site.address("/done")));
  if (ending == "Missing") options.redirect.reset();
  const std::vector<int> before = semaphoreSets();
  start();
  if (ending == "Closed") {
    untilRequested("/signin");
    screen.close(window().id);
  }
  EXPECT_NE(message(), "");
  EXPECT_EQ(semaphoreSets(), before);
}

INSTANTIATE_TEST_SUITE_P(Endings, EndingsTest, testing::Values("SignedIn", "Closed", "Failed", "Missing"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
}  // namespace endtoend
