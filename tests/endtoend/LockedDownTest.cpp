// Access that every page is denied, as reported by the page and as shown on the screen.

#include <gio/gio.h>

#include <cstddef>
#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class LockedDownTest : public PageTest {
 protected:
  // A page that reports each request for a context menu, shortly after it.
  void startOnWithMenus(const std::string& body) {
    startOn(body +
            "<script>oncontextmenu = (event) => {"
            "  const name = event.target.localName; frames(5).then(() => report('menu of ' + name)) }</script>");
    untilPainted();
  }
};

// Each needs a click. A rejected promise and a thrown error are denials. Before a page has requested the location, its
// permission state is "prompt".
constexpr char kPageWithRequests[] = R"(<body style='height: 550px'><script>
  const refuse = () => { throw 0 };
  const requests = {
    location: () => new Promise((yes, no) => navigator.geolocation.getCurrentPosition(yes, no)),
    locationState: () => navigator.permissions.query({ name: 'geolocation' }).then((it) => it.state === 'denied' && refuse()),
    notifications: () => Notification.requestPermission().then((it) => it === 'denied' && refuse()),
    camera: () => navigator.mediaDevices.getUserMedia({ video: true }),
    microphone: () => navigator.mediaDevices.getUserMedia({ audio: true }),
    screenCapture: () => navigator.mediaDevices.getDisplayMedia({ video: true }),
    clipboard: () => navigator.clipboard.readText(),
    paste: () => document.execCommand('paste') || refuse(),
    pointer: () => new Promise((yes, no) => {
      document.onpointerlockchange = yes; document.onpointerlockerror = no; document.body.requestPointerLock() }),
    screenWakeLock: () => navigator.wakeLock.request('screen'),
    fullscreen: () => document.documentElement.requestFullscreen(),
    videoFullscreen: () => document.createElement('video').webkitEnterFullscreen(),
    file: () => showOpenFilePicker(),
  };
  const names = Object.keys(requests);
  onclick = async () => {
    const name = names.shift();
    let result = 'granted';
    try { await requests[name]() } catch { result = 'refused' }
    await frames(3);
    report(name + ' ' + result);
  };
</script>)";

TEST_F(LockedDownTest, EveryPermissionIsDenied) {
  startOn(kPageWithRequests);
  for (const char* const name :
       {"location", "locationState", "notifications", "camera", "microphone", "screenCapture", "clipboard", "paste",
        "pointer", "screenWakeLock", "fullscreen", "videoFullscreen", "file"}) {
    const std::size_t before = reports().size();
    click();
    until("the result", [&] { return reports().size() > before; });
    EXPECT_EQ(reports().back(), std::string(name) + " refused");
    EXPECT_THAT(screen.windows(), SizeIs(1));
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LockedDownTest, AFileFieldOpensNoChooser) {
  startOn("<input type='file' style='position: fixed; inset: 0' oncancel='report(`files: ` + files.length)'>");
  untilPainted();
  clickAt(20, 275);
  untilReported("files: 0");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LockedDownTest, AColorFieldOpensNoChooser) {
  startOn(
      "<input type='color' style='position: fixed; inset: 0; width: 680px; height: 550px'"
      " onclick='frames(5).then(() => report(value))'>");
  click();
  untilReported("#000000");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LockedDownTest, PlainTextHasNoContextMenu) {
  startOnWithMenus(
      "<style>body > :not(script) { display: block; height: 100px; margin: 0 }</style>"
      "<a href='/help'>help</a>"
      "<img src='data:image/svg+xml,<svg xmlns=\"http://www.w3.org/2000/svg\"/>' width=200>"
      "<video src='/video' controls></video><p>words</p><main></main>");
  int y = 50;
  for (const char* const part : {"a", "img", "video", "p", "main"}) {
    clickRightAt(20, y);
    untilReported(std::string("menu of ") + part);
    EXPECT_THAT(screen.windows(), SizeIs(1)) << part;
    y += 100;
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The last command of the menu selects all.
TEST_F(LockedDownTest, AFieldsMenuHasEditingCommandsOnly) {
  startOnWithMenus(
      "<input value='words' style='position: fixed; inset: 0; width: 680px; height: 500px'>"
      "<script>document.onselectionchange = () => {"
      "  const it = document.activeElement;"
      "  report('selected ' + it.value?.slice(it.selectionStart, it.selectionEnd)) }</script>");
  clickRightAt(100, 50);
  untilReported("menu of input");
  until("the menu", [&] { return screen.windows().size() > 1; });
  screen.press(XK_Up);
  screen.press(XK_Return);
  untilReported("selected words");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LockedDownTest, PrintingOpensNoDialog) {
  startOn("<script>onkeydown = async () => { print(); await frames(5); report('printed') }</script>");
  screen.press(XK_g);
  untilReported("printed");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(LockedDownTest, NoKeyOpensAnything) {
  startOn(
      "<p>words</p><script>onkeydown = (event) => { if (event.key === 'z') frames(5).then(() => report('the last')) }"
      "</script>");
  for (const KeySymbol key : std::initializer_list<KeySymbol>{XK_F1, XK_F5, XK_F7, XK_F11, XK_F12, XK_Menu})
    screen.press(key);
  for (const KeySymbol key : std::initializer_list<KeySymbol>{XK_i, XK_c, XK_j, XK_d, XK_k})
    screen.press(key, {XK_Control_L, XK_Shift_L});
  for (const KeySymbol key :
       std::initializer_list<KeySymbol>{XK_u, XK_s, XK_p, XK_o, XK_n, XK_t, XK_l, XK_f, XK_j, XK_h})
    screen.press(key, {XK_Control_L});
  screen.press(XK_z);
  untilReported("the last");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_THAT(reports(), ElementsAre("loaded", "the last"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// On a loopback address of its own: another process may take the port on 127.0.0.1.
std::string freeAddress() {
  const platform::Owned<GSocketListener> listener(g_socket_listener_new());
  const guint16 port = g_socket_listener_add_any_inet_port(listener.get(), nullptr, nullptr);
  g_socket_listener_close(listener.get());
  return "127.83.86.79:" + std::to_string(port);
}

bool acceptsConnections(const std::string& address) {
  const platform::Owned<GSocketClient> client(g_socket_client_new());
  const platform::Owned<GSocketConnection> connection(
      g_socket_client_connect_to_host(client.get(), address.c_str(), 0, nullptr, nullptr));
  return connection != nullptr;
}

class InspectorTest : public LockedDownTest, public testing::WithParamInterface<const char*> {};

TEST_P(InspectorTest, OpensNoPort) {
  const std::string address = freeAddress();
  options.environment[GetParam()] = address;
  startOn("");
  EXPECT_FALSE(acceptsConnections(address));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Variables, InspectorTest,
                         testing::Values("WEBKIT_INSPECTOR_SERVER", "WEBKIT_INSPECTOR_HTTP_SERVER"),
                         [](const auto& each) { return std::string(each.param); });

}  // namespace
}  // namespace endtoend
