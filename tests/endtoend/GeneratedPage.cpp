#include "tests/endtoend/GeneratedPage.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace endtoend {
namespace {

constexpr int kWidth = 680;
constexpr int kHeight = 550;

// `%` instead of the standard distributions, whose results differ between libraries.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  unsigned below(std::size_t count) { return static_cast<unsigned>(engine_() % count); }
  bool oneIn(unsigned count) { return below(count) == 0; }

 private:
  std::mt19937 engine_;
};

// `run` repeats a step at intervals, or with each input of the user if `period` is 0.
constexpr char kHelpers[] =
    R"(<style>html { background: #204060 } body { margin: 0; height: 550px }</style><body><script>
let state = SEED, elements = [];
const otherSite = `http://${location.hostname === 'localhost' ? '127.0.0.1' : 'localhost'}:${location.port}/signin`;
const none = () => 0;
const below = (count) => (state = (Math.imul(state, 1664525) + 1013904223) >>> 0, (state >>> 8) % count);
const one = (...all) => all[below(all.length)];
const blob = (text, type) => URL.createObjectURL(new Blob([text], {type}));
const bytes = (count) => new Uint8Array(count).fill(1);
const add = (tag, properties = {}) => {
  const element = Object.assign(document.createElement(tag), properties);
  element.style.cssText = `position: fixed; left: ${below(700) - 20}px; top: ${below(600) - 40}px;
    width: ${20 + below(300)}px; height: ${20 + below(200)}px`;
  document.body.append(element);
  elements.push(element);
  if (elements.length > 60) elements.shift().remove();
  return element;
};
const frame = (src) => add('iframe', {src});
const run = (period, step) => {
  let n = 0;
  const next = (event) => { try { step(n++, event)?.catch?.(none) } catch {} };
  if (period) return setInterval(next, period);
  for (const each of ['mousedown', 'mouseup', 'mousemove', 'wheel', 'keydown']) addEventListener(each, next, true);
};
// A page may cancel its own requests.
const late = (start) => fetch('/late').then(start, () => setTimeout(late, 100, start));
onload = () => fetch('/go').then(() => {
)";

constexpr char kFrame[] = R"(<script>
  const next = () => { try { [() => focus(), () => alert('frame'), () => parent.postMessage('x'.repeat(1000), '*'),
    () => top.focus(), () => { top.location.hash = Math.random() }, () => open('/popup')][Math.random() * 6 | 0]() }
    catch {} };
  setInterval(next, 50);
</script>)";

std::string callOf(const Primitive& primitive, unsigned period) {
  const std::string call = "run(" + std::to_string(period) + ", async (n, event) => { " + primitive.script + " })";
  return (primitive.ends ? "late(() => " + call + ")" : call) + ";\n";
}

std::string htmlOf(unsigned seed, const std::string& calls) {
  std::string html = kHelpers;
  html.replace(html.find("SEED"), 4, std::to_string(seed));
  return html + calls + "});</script>";
}

HandAction nextAction(Random& random, bool clicksRight, bool drags) {
  using Kind = HandAction::Kind;
  static constexpr Kind kKinds[] = {Kind::kMove,        Kind::kMove,       Kind::kClick,     Kind::kClick, Kind::kClick,
                                    Kind::kDoubleClick, Kind::kDrag,       Kind::kWheel,     Kind::kKey,   Kind::kKey,
                                    Kind::kText,        Kind::kEditingKey, Kind::kRightClick};
  HandAction action{kKinds[random.below(std::size(kKinds))]};
  if (action.kind == Kind::kRightClick && !clicksRight) action.kind = Kind::kClick;
  if (action.kind == Kind::kMove && drags) action.kind = Kind::kDrag;
  action.x = static_cast<int>(random.below(kWidth));
  action.y = static_cast<int>(random.below(kHeight));
  action.toX = static_cast<int>(random.below(kWidth));
  action.toY = static_cast<int>(random.below(kHeight + 20)) - 20;  // also onto the strip
  action.choice = random.below(1000);
  return action;
}

// A page rarely loses a process, in the last third of its time.
std::vector<HandAction> handOf(Random& random, std::size_t actions, const std::vector<std::string>& primitives) {
  using Kind = HandAction::Kind;
  std::vector<HandAction> hand;
  const bool clicksRight = random.oneIn(4);
  const bool drags = std::find(primitives.begin(), primitives.end(), "Drags") != primitives.end();
  for (std::size_t i = 0; i < actions; ++i)
    hand.push_back(nextAction(random, clicksRight, drags));
  const std::size_t late = actions - 1 - random.below(actions / 3 + 1);
  if (random.oneIn(10)) hand[late].kind = Kind::kEndPage;
  if (random.oneIn(10)) hand[late].kind = Kind::kEndNetwork;
  return hand;
}

}  // namespace

void PrintTo(const Primitive& primitive, std::ostream* out) {
  *out << primitive.name;
}

const std::vector<Primitive>& primitives() {
  static const std::vector<Primitive> kAll = {
      {"Dialogs", "one(alert, confirm, prompt)('Call us! '.repeat(below(50)))"},
      {"Selects",
       "const field = add('select', {size: one(0, 0, 4)}); for (let i = one(3, 50, 2000); i > 0; --i)"
       " field.add(new Option('option ' + i)); field.focus();"
       " field.dispatchEvent(new MouseEvent('mousedown', {bubbles: true})); field.showPicker()"},
      {"DateFields", "add('input', {type: one('date', 'time', 'month', 'week', 'datetime-local')}).showPicker()"},
      {"ChooserFields", "const field = add('input', {type: one('color', 'file')}); field.click(); field.showPicker()"},
      {"Proposals",
       "add('datalist', {id: 'them', innerHTML: '<option>a<option>b'}); add('input').setAttribute('list', 'them')"},
      {"Bubbles",
       "const field = add('input'); field.setCustomValidity('wrong\\n'.repeat(below(20))); field.reportValidity()"},
      {"Popups",
       "open(one('/popup?' + n, 'about:blank', '', 'mailto:a@b'), one('', '_blank', 'other'), "
       "one('', 'popup,width=300,height=200,left=0,top=0', 'fullscreen=yes'))"},
      {"Drags",
       "if (n > 0) return;"
       "const image = document.body.appendChild(document.createElement('canvas')); image.width = image.height = 600;"
       "image.style.cssText = 'position: fixed; top: 560px';"  // only an element of the page becomes an image
       "const context = image.getContext('2d'); context.fillStyle = '#804020'; context.fillRect(0, 0, 600, 600);"
       "document.body.draggable = true; ondragstart = (event) => {"
       " event.dataTransfer.setData('text/uri-list', '/signin'); event.dataTransfer.setDragImage(image, 300, 300) }"},
      {"PasswordFrames", "frame('/password?' + n); fetch('/password?' + n)"},
      {"PasswordPage", "if (n % 40 === 5) location.href = '/password'"},
      {"RedirectedFrames", "frame('/redirect?left=3')", false, true},
      {"RedirectLoops", "(new Image).src = '/redirect?left=50'; await fetch('/redirect?left=99')"},
      {"RefreshingFrames", "frame('/refresh')"},
      {"Reloads", "if (n === 20) location.reload()"},
      {"OtherSite", "if (n === 25) location.href = otherSite"},
      {"HeldPage", "if (n % 20 === 9) location.href = '/held'; if (n % 20 === 15) stop()"},
      {"NoContent", "location.href = '/nothing?' + n", false, true},
      {"Downloads", "add('a', {href: '/file?' + n, download: 'x'}).click()"},
      {"DownloadFrame", "if (n === 6) frame('/file')", false, true},
      {"DownloadPage", "if (n === 5) location.href = '/file'", false, true},
      {"SignIn", "if (n === 7) location.href = '/done?code=1'", false, true},
      {"Schemes",
       "location.href = one('mailto:a@b', 'tel:1', 'file:///etc/passwd', 'resource:///x', 'javascript:1', "
       "'webkit://gpu', 'irc://x')",
       false, true},
      {"History",
       "one(() => history.pushState(n, '', '?' + n), () => history.replaceState(n, '', '?' + n), () => history.back(),"
       " () => history.forward(), () => history.go(-below(5)))()"},
      {"States", "for (let i = 0; i < 50; ++i) history.replaceState(bytes(1000), '', '?' + n + i)"},
      {"Fragments", "location.hash = n + 'x'.repeat(below(2000))"},
      {"LongFragments", "location.replace('#' + n + 'x'.repeat(60000))", false, true},
      {"Titles", "for (let i = 0; i < 20; ++i) document.title = 'x'.repeat(below(100000)) + i"},
      {"FullScreen",
       "document.documentElement.requestFullscreen?.().catch(none);"
       "document.documentElement.webkitRequestFullscreen?.(); await document.body.requestPointerLock?.()"},
      {"Windows", "moveTo(0, 0); resizeTo(900, 900); one(focus, blur, close, print, stop, find)()"},
      {"Focus", "for (const each of elements) each.focus(); one(focus, blur)(); document.activeElement.blur()"},
      {"Unload",
       "onbeforeunload = (event) => { event.preventDefault(); return event.returnValue = 'Stay!' };"
       "onpagehide = onunload = () => { navigator.sendBeacon('/beacon'); alert('Stay!') }"},
      {"BusyUnload", "onbeforeunload = () => { for (;;); }; if (n === 30) location.href = '/signin'"},
      {"Frames", "for (let i = 0; i < 10; ++i) frame(one('/frame', 'about:blank', 'data:text/html,x', ''))"},
      {"OtherFrames", "frame(otherSite.replace('signin', 'frame'))"},
      {"ForeverFrames", "frame('/signin?' + n)", true},
      {"Permissions",
       "navigator.geolocation.getCurrentPosition(none); Notification.requestPermission();"
       "navigator.mediaDevices?.getUserMedia({video: true}).catch(none); await navigator.credentials?.get({})"},
      {"Clipboard",
       "getSelection().selectAllChildren(document.body); document.execCommand(one('copy', 'cut', 'paste'));"
       "await navigator.clipboard.writeText('x')"},
      {"Cursors",
       "const image = document.createElement('canvas'); image.width = image.height = one(20, 64, 128);"
       "image.getContext('2d').fillRect(0, 0, 128, 128);"
       "document.body.style.cursor = one('none', `url(${image.toDataURL()}) 0 ${image.width}, auto`)"},
      {"Tooltips", "add('p', {title: 'Signed in to example.com', textContent: 'x'})"},
      {"Menus",
       "document.body.dispatchEvent(new MouseEvent('contextmenu', {bubbles: true, clientX: below(680), button: 2}))"},
      {"Keys", "event?.preventDefault(); event?.stopImmediatePropagation(); document.body.setPointerCapture(1)"},
      {"Editing",
       "document.designMode = one('on', 'off'); document.execCommand(one('insertText', 'bold', 'undo'), false, 'x')"},
      {"Scrolling", "document.body.style.height = '9000px'; scrollTo(below(99), below(9000))"},
      {"Covers",
       "const cover = add('div', {popover: 'manual', textContent: 'x'}); cover.style.cssText = 'position: fixed;"
       " inset: -100px; z-index: 99999; background: #804020; transform: rotate3d(1, 1, 1, 9deg) scale(3)';"
       "cover.showPopover?.(); add('dialog').showModal()"},
      {"Animations", "document.body.animate([{transform: 'scale(9)'}, {filter: 'blur(9px)'}], 300)"},
      {"Written", "document.write('<p>' + 'x'.repeat(below(5000)))"},
      {"Sounds",
       "new AudioContext().createOscillator().start(); speechSynthesis?.speak(new SpeechSynthesisUtterance('x'))"},
      {"Storage",
       "localStorage.setItem(n, 'x'.repeat(9999)); document.cookie = n + '=x; max-age=9999';"
       "indexedDB.open('x' + n); await caches.open('x' + n)"},
      {"Sockets",
       "new WebSocket('ws' + location.origin.slice(4) + '/held'); new EventSource('/nothing');"
       "for (let i = 0; i < 20; ++i) fetch('/held?' + n).catch(none)",
       true},
      {"Requests", "for (let i = 0; i < 20; ++i) fetch('/nothing?' + n + i).catch(none)", true},
      {"BlockingRequest",
       "if (n !== 30) return; const request = new XMLHttpRequest; request.open('GET', '/held', false); request.send()",
       true},
      {"Messages",
       "for (let i = 0; i < 500; ++i) postMessage(bytes(1000), '*'); onmessage = (event) =>"
       " postMessage(event.data, '*')",
       true},
      {"Workers", "if (n < 8) new Worker(blob('for (;;) postMessage(1)', 'text/javascript')).onmessage = none"},
      {"Elements",
       "const all = document.createDocumentFragment(); for (let i = 0; i < 20000; ++i)"
       " all.append(document.createElement('p')); document.body.append(all)",
       true},
      {"Memory", "if (n < 300) (window.kept = window.kept ?? []).push(bytes(2e6))"},
      {"BusyLoop", "if (n === 40) for (;;);"},
      {"Microtasks", "if (n === 40) for (;;) await 0", true},
      {"Recursion", "const deeper = () => deeper() + deeper(); deeper()", true},
      {"Pattern", "if (n === 30) /^(a+)+$/.test('a'.repeat(40) + 'b')", true},
      {"Images",
       "(new Image).src = blob(`<svg xmlns='http://www.w3.org/2000/svg' width='9000' height='9000'><rect width='9' "
       "height='9'/></svg>`, 'image/svg+xml'); const image = add('img', {src: '/image?' + n})",
       true},
      {"Canvases",
       "const canvas = add('canvas', {width: 4000, height: 4000}); const context = canvas.getContext(one('2d', "
       "'webgl'));"
       "context.fillRect?.(0, 0, 4000, 4000); context.clear?.(0x4000)",
       true},
      {"Vectors",
       "let text = '<g id=\"a0\"><rect width=\"9\" height=\"9\"/></g>'; for (let i = 1; i < 16; ++i) text +="
       " `<g id=\"a${i}\">` + `<use href=\"#a${i - 1}\"/>`.repeat(4) + '</g>'; if (n === 20) add('div', {innerHTML:"
       " `<svg>${text}</svg>`})",
       true},
      {"Entities",
       "let text = '<!ENTITY e0 \"xxxxxxxxxx\">'; for (let i = 1; i < 12; ++i) text += `<!ENTITY e${i} \"` +"
       " `&e${i - 1};`.repeat(10) + '\">'; new DOMParser().parseFromString(`<!DOCTYPE a [${text}]><a>&e11;</a>`,"
       " 'text/xml')",
       true},
      {"Styles",
       "add('style', {textContent: Array.from({length: 2000}, (_, i) => `:has(> :nth-child(${i}n)) * * * { box-shadow:"
       " 0 0 ${i}px red, 0 0 9999px 999px blue }`).join('')})",
       true},
      {"Fonts",
       "for (let i = 0; i < 100; ++i) { const font = new FontFace('f' + n + i, bytes(1000)); document.fonts.add(font);"
       " font.load().catch(none) }",
       true},
  };
  return kAll;
}

GeneratedPage generatedPage(unsigned seed, std::size_t actions) {
  constexpr unsigned kPeriods[] = {0, 5, 20, 100, 500};
  Random random(seed);
  std::vector<Primitive> left = primitives();
  GeneratedPage page;
  std::string calls;
  for (std::size_t count = 3 + random.below(6); count > 0; --count) {
    const auto chosen = left.begin() + random.below(left.size());
    page.primitives.emplace_back(chosen->name);
    calls += callOf(*chosen, kPeriods[random.below(std::size(kPeriods))]);
    left.erase(chosen);
  }
  page.html = htmlOf(seed, calls);
  page.hand = handOf(random, actions, page.primitives);
  return page;
}

GeneratedPage pageOf(const Primitive& primitive, std::size_t actions) {
  Random random(0);
  return {{primitive.name}, htmlOf(0, callOf(primitive, 10)), handOf(random, actions, {primitive.name})};
}

void serveFiles(tools::LoopbackServer& site) {
  using tools::Response;
  site.serve("/frame", tools::page(kFrame));
  site.serve("/popup", tools::page("popup"));
  site.serve("/nothing", Response{204, "", {}});
  site.serve("/password", Response{401, "", {{"WWW-Authenticate", "Basic realm=\"staff\""}}});
  site.serve("/file", Response{200, "x", {{"Content-Disposition", "attachment; filename=x"}}});
  site.serve("/refresh", Response{200, "x", {{"Content-Type", "text/html"}, {"Refresh", "0"}}});
  site.serve("/redirect", [](const tools::Request& request) {
    const int left = std::stoi(request.query.at("left"));
    return left > 0 ? tools::redirectTo("/redirect?left=" + std::to_string(left - 1)) : tools::page("x");
  });
  site.hold("/held");
}

}  // namespace endtoend
