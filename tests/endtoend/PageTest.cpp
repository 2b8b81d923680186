#include "tests/endtoend/PageTest.h"

#include <algorithm>

namespace endtoend {
namespace {

constexpr char kBeginning[] = R"(<style>html { background: #204060 } body { margin: 0 }</style><script>
  const report = (what) => fetch('/report?what=' + encodeURIComponent(what));
  const frames = async (count) => { for (; count > 0; --count) await new Promise(requestAnimationFrame) };
  addEventListener('load', () => report('loaded'));
</script>)";

}  // namespace

void PrintTo(const Named& named, std::ostream* out) {
  *out << named.name;
}

std::string nameOf(const testing::TestParamInfo<Named>& info) {
  return info.param.name;
}

tools::Response PageTest::pageWith(const std::string& body) {
  return page(kBeginning + body);
}

void PageTest::startOn(const std::string& body) {
  site.serve("/signin", pageWith(body));
  start();
  screen.focus(window().id);
  untilReported("loaded");
}

void PageTest::untilPainted() {
  until("the page's color", [&] { return picture().find(kPageColor).has_value(); });
}

std::vector<std::string> PageTest::reportsTo(const LoopbackServer& server) {
  std::vector<std::string> texts;
  for (const Request& request : server.requests()) {
    const auto text = request.query.find("what");
    if (request.target.rfind("/report?", 0) == 0 && text != request.query.end()) texts.push_back(text->second);
  }
  return texts;
}

void PageTest::untilReported(const std::string& text) {
  until("the page to report " + text, [&] {
    const std::vector<std::string> all = reports();
    return std::find(all.begin(), all.end(), text) != all.end();
  });
}

void PageTest::clickAt(int x, int y) {
  const Area frame = window().frame;
  screen.click(frame.x + x, frame.y + kStripHeight + y);
}

void PageTest::clickRightAt(int x, int y) {
  const Area frame = window().frame;
  screen.clickRight(frame.x + x, frame.y + kStripHeight + y);
}

}  // namespace endtoend
