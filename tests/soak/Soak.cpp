// Runs the sign-in window many times, with one ending after the other, and counts the errors that its processes report.
//
//   soak [RUNS [COMMAND...]]     1000 runs by default
//   soak 30 valgrind -q          the COMMAND must exec the window's program
//
// - Without a COMMAND every process of the window runs under glibc's checking allocator. A program built with ASan has
//   an allocator of its own: `soak 30 env`, with ASAN_OPTIONS=fast_unwind_on_malloc=0 for the suppressions to apply.
// - An error is a line on standard error that reports heap corruption, a crash or a critical warning.
// - Run it through tests/support/in-own-home: no window may touch the home folder of a user.
// - Exits with 1 if a run reported errors, or sent another message than the one of its ending.

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/endtoend/Certificate.h"
#include "tests/endtoend/Processes.h"
#include "tests/endtoend/PromptTest.h"
#include "tests/endtoend/Proxy.h"
#include "tests/endtoend/SessionBus.h"
#include "tests/endtoend/SystemRoots.h"
#include "tests/tools/support/ClosedPort.h"

namespace {

using namespace endtoend;

using Command = std::vector<std::string>;

constexpr std::chrono::minutes kSlowEnd{5};  // under valgrind

constexpr char kAllocator[] = "libc_malloc_debug.so.0";

// Keeps every part of WebKit at work: workers, storage, pictures, sound, timers, and requests that get no response.
// Requests "/busy" once it has loaded.
constexpr char kBusyPage[] = R"(<canvas id=c></canvas><iframe src=/start></iframe><script>
  document.cookie = 'visit=1; max-age=99999';
  localStorage.setItem('visit', '1');
  indexedDB.open('visit').onupgradeneeded = (event) => event.target.result.createObjectStore('visit');
  for (const request of ['a', 'b']) fetch('/held?' + request).catch(() => 0);
  new WebSocket('ws' + location.origin.slice(4) + '/held');
  new Worker('/worker.js');
  navigator.serviceWorker?.register('/worker.js').catch(() => 0);
  try { new AudioContext().createOscillator().start() } catch (none) {}
  try { c.getContext('webgl').clear(0) } catch (none) {}
  setInterval(() => { c.title += 'word '; localStorage.setItem('visit', Math.random()) }, 10);
  addEventListener('load', () => fetch('/busy'));
</script>)";

class Run : public PromptTest {
 public:
  explicit Run(const Command& command) {
    options.wrapper = command;
    if (!command.empty()) return;
    const std::filesystem::path report = SVO_CRASH_REPORT;
    options.environment["GLIBC_TUNABLES"] = "glibc.malloc.check=3:glibc.malloc.perturb=165";
    options.environment["LD_PRELOAD"] =
        std::string(std::getenv("LD_PRELOAD")) + " " + kAllocator + " " + report.filename().string();
    options.environment["LD_LIBRARY_PATH"] = report.parent_path();  // WebKit's sandbox allows these folders
    options.environment["Malloc"] = "1";                            // WebKit uses the system's allocator
  }

  // Waits for the end, then returns the message.
  //   "<errorNo>...</errorNo>"              with exit status 0
  //   "<errorNo>...</errorNo>, status 1"
  //   ", no status"                         a signal ended it without a message, or it does not end
  std::string outcome() {
    (void)tools::waitUntil([this] { return run->ended(); }, kSlowEnd);
    const std::optional<int> status = run->exitStatus();
    if (!status) return pipe.text() + ", no status";
    return *status == 0 ? pipe.text() : pipe.text() + ", status " + std::to_string(*status);
  }

  // Waits for the end of every process of the window, then returns what they have written.
  std::string standardError() {
    bus_.reset();
    while (!lastProcesses().empty()) {
      const pid_t last = lastProcesses().front();
      if (!waitForExit(last)) return run->standardError() + "soak: process " + std::to_string(last) + " does not end\n";
    }
    return run->standardError() + unchecked_;
  }

  // Each ends the window in one way and returns the expected message.

  std::string signIn() {
    site.serve("/signin", page("<form method=post action=/post><input name=a></form><script>onload = () => "
                               "document.forms[0].submit()</script>"));
    site.serve("/post", redirectTo(site.address("/done?code=1")));
    start();
    return result(site.address("/done?code=1"));
  }

  std::string signInOverTls() {
    const Authority organization(temporary("organization.crt"));
    const Certificate certificate = organization.sign("signin.example", temporary("signin.crt"));
    const auto roots = withSystemRoots(organization.file());
    if (!roots) throw std::runtime_error("no mount namespace or no root certificates available");
    options.wrapper.insert(options.wrapper.begin(), roots->begin(), roots->end());
    secure_ = std::make_unique<LoopbackServer>(certificate.get());
    proxy_ = std::make_unique<Proxy>(site);
    proxy_->tunnelTo(*secure_);
    options.environment.merge(proxy_->environment());
    options.signIn = "https://signin.example/signin";
    options.redirect = "https://signin.example/done";
    serveBusyPage(*secure_, navigatingTo("https://signin.example/done?code=1"));
    start();
    return result("https://signin.example/done?code=1");
  }

  std::string signInAcrossSites() {
    const std::string other = "http://localhost" + site.address().substr(site.address().rfind(':'));
    serveBusyPage(site, navigatingTo(other + "/staff"));
    site.serve("/staff", page(kBusyPage + navigatingTo(site.address("/done?code=1"))));
    start();
    return result(site.address("/done?code=1"));
  }

  std::string redirectWhileLoading() {
    serveBusyPage(site, navigatingTo(site.address("/done?code=1")));
    start();
    return result(site.address("/done?code=1"));
  }

  std::string enterprise() {
    site.serve("/signin", pageThatGoesTo(site.address("/start?redirect_uri=" + site.address("/staff"))));
    site.serve("/staff", pageThatGoesTo(site.address("/done?code=1")));
    start();
    return result(site.address("/done?code=1"));
  }

  std::string failedLoad() {
    options.signIn = closedPort_.address("/signin");
    start();
    return kLoadFailed;
  }

  std::string failedFrame() {
    serveBusyPage(site, "<iframe src='" + closedPort_.address("/advert") + "'></iframe>");
    start();
    return kLoadFailed;
  }

  std::string untrustedCertificate() {
    const Certificate selfSigned(temporary("certificate.pem"));
    secure_ = std::make_unique<LoopbackServer>(selfSigned.get());
    options.signIn = secure_->address("/signin");
    start();
    return kLoadFailed;
  }

  std::string pageProcessKilled() {
    startBusy();
    kill(descendantNamed(run->pid(), "WebKitWebProces").value(), SIGKILL);
    return kLoadFailed;
  }

  std::string optionsMissing() {
    options.redirect.reset();
    start();
    return kOptionsMissing;
  }

  std::string controlW() {
    startBusy();
    screen.focus(window().id);
    screen.press(XK_w, {XK_Control_L});
    return kWindowClosed;
  }

  std::string closedWithSessionBus() {
    bus_ = std::make_unique<SessionBus>(temporary("bus"));
    options.environment.merge(bus_->environment());
    startBusy();
    screen.close(window().id);
    return kWindowClosed;
  }

  std::string closedOnTheSpinner() {
    site.hold("/signin");
    start();
    untilRequested("/signin");
    screen.close(window().id);
    return kWindowClosed;
  }

  std::string termination() {
    startBusy();
    run->signal(SIGTERM);
    return kWindowClosed;
  }

  std::string terminationAtTheStart() {
    start();
    untilLogSays("Build Version - 9.0.0.121");
    run->signal(SIGTERM);
    return kWindowClosed;
  }

  std::string displayGone() {
    auto session = std::make_unique<tools::VirtualDisplay>();
    options.environment["DISPLAY"] = session->name();
    startBusy();
    session.reset();
    return kWindowClosed + ", status 1";
  }

  std::string passwordPrompt() {
    site.serve("/signin", tools::Response{401, "", {{"WWW-Authenticate", "Basic realm=\"staff\""}}});
    start();
    untilPromptIsShown();
    screen.close(window().id);
    return kWindowClosed;
  }

  std::string openDialog() {
    startOn("<script>onload = async () => { await frames(3); await report('asking'); prompt('Your code?') }</script>");
    untilReported("asking");
    untilPromptIsShown();
    screen.close(window().id);
    return kWindowClosed;
  }

 private:
  void TestBody() override {}

  // Script that goes to an address while the page still loads.
  static std::string navigatingTo(const std::string& address) {
    return "<img src='/held?c'><script>fetch('/busy').then(() => { location.href = '" + address + "' })</script>";
  }

  static void serveBusyPage(LoopbackServer& server, const std::string& further = "") {
    server.serve("/signin", page(kBusyPage + further));
    server.serve("/start", page("/start"));
    server.serve("/done", page("<script>fetch('/held?d'); new Worker('/worker.js')</script>"));
    server.serve("/busy", page(""));
    server.serve("/worker.js", {200, "setInterval(() => postMessage(1), 10)", {{"Content-Type", "text/javascript"}}});
    server.hold("/held");
  }

  void startBusy() {
    serveBusyPage(site);
    start();
    untilRequested("/busy");
    checkAllocator();
  }

  // A process may lack the variables that load it.
  void checkAllocator() {
    if (options.environment.count("GLIBC_TUNABLES") == 0) return;
    for (const char* const name : {"svo-signin", "WebKitWebProces", "WebKitNetworkPr"}) {
      const pid_t process = descendantNamed(getpid(), name).value();
      std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
      const std::string text(std::istreambuf_iterator<char>(maps), {});
      if (text.find(kAllocator) == std::string::npos) unchecked_ += std::string("soak: unchecked: ") + name + "\n";
    }
  }

  std::vector<pid_t> lastProcesses() const {
    std::vector<pid_t> last = childrenOfThisProcess();
    last.erase(
        std::remove_if(last.begin(), last.end(),
                       [this](pid_t each) { return std::find(before_.begin(), before_.end(), each) != before_.end(); }),
        last.end());
    return last;
  }

  const tools::ClosedPort closedPort_;
  std::unique_ptr<LoopbackServer> secure_;
  std::unique_ptr<Proxy> proxy_;
  std::unique_ptr<SessionBus> bus_;
  std::vector<pid_t> before_ = childrenOfThisProcess();
  std::string unchecked_;
};
struct Ending {
  const char* name;
  std::string (Run::*run)();
  int runs = 0;
  int rightMessages = 0;
  int errors = 0;
  double seconds = 0;
};

std::vector<Ending> allEndings() {
  return {{"signed in", &Run::signIn},
          {"signed in over TLS, page busy", &Run::signInOverTls},
          {"signed in across sites", &Run::signInAcrossSites},
          {"redirect while loading", &Run::redirectWhileLoading},
          {"enterprise", &Run::enterprise},
          {"failed load", &Run::failedLoad},
          {"failed sub-frame", &Run::failedFrame},
          {"untrusted certificate", &Run::untrustedCertificate},
          {"page process killed", &Run::pageProcessKilled},
          {"options missing", &Run::optionsMissing},
          {"Ctrl+W, page busy", &Run::controlW},
          {"closed, page busy, session bus", &Run::closedWithSessionBus},
          {"closed on the spinner", &Run::closedOnTheSpinner},
          {"SIGTERM, page busy", &Run::termination},
          {"SIGTERM at the start", &Run::terminationAtTheStart},
          {"display gone", &Run::displayGone},
          {"password prompt open", &Run::passwordPrompt},
          {"dialog open", &Run::openDialog}};
}

bool isError(const std::string& line) {
  static const std::vector<const char*> kErrorMarks = {
      "double free", "corrupt",    "invalid pointer", "invalid size",    "invalid next size", "free():",
      "malloc():",   "realloc():", "calloc():",       "munmap_chunk():", "crash: ",           "soak: ",
      "-CRITICAL",   "ERROR **",   "ld.so",           "Sanitizer",       "runtime error"};
  return line.rfind("==", 0) == 0 ||  // as every line of valgrind does
         std::any_of(kErrorMarks.begin(), kErrorMarks.end(),
                     [&](const char* mark) { return line.find(mark) != std::string::npos; });
}

int errorsIn(const std::string& text) {
  std::istringstream lines(text);
  int count = 0;
  for (std::string line; std::getline(lines, line);)
    count += isError(line) ? 1 : 0;
  return count;
}

void runOnce(Ending& ending, const Command& command) {
  const auto begin = std::chrono::steady_clock::now();
  std::string details;
  bool matches = false;
  try {
    Run run(command);
    const std::string expected = (run.*ending.run)();
    const std::string outcome = run.outcome();
    matches = outcome == expected;
    if (!matches) details = "the message is \"" + outcome + "\" instead of \"" + expected + "\"\n";
    const std::string standardError = run.standardError();
    const int errors = errorsIn(standardError);
    ending.errors += errors;
    if (!matches || errors > 0) details += standardError;
  } catch (const std::exception& problem) {
    details = std::string(problem.what()) + "\n";
    ending.errors += errorsIn(details);
  }
  ++ending.runs;
  ending.rightMessages += matches ? 1 : 0;
  ending.seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (!details.empty()) std::printf("-- %s, run %d:\n%s\n", ending.name, ending.runs, details.c_str());
  std::fflush(stdout);
}

bool print(const std::vector<Ending>& endings) {
  bool passed = true;
  std::printf("%-32s %6s %14s %11s %8s\n", "ending", "runs", "right message", "errors", "seconds");
  for (const Ending& each : endings) {
    std::printf("%-32s %6d %14d %11d %8.0f\n", each.name, each.runs, each.rightMessages, each.errors, each.seconds);
    passed = passed && each.rightMessages == each.runs && each.errors == 0;
  }
  return passed;
}

}  // namespace

int main(int argc, char** argv) try {
  (void)homeFolder();
  adoptOrphans();
  const int runs = argc > 1 ? std::atoi(argv[1]) : 1000;
  if (runs < 1) {
    std::fprintf(stderr, "usage: soak [RUNS [COMMAND...]]\n");
    return 64;
  }
  const Command command(argv + std::min(argc, 2), argv + argc);
  std::vector<Ending> endings = allEndings();
  for (int i = 0; i < runs; ++i) {
    runOnce(endings[static_cast<std::size_t>(i) % endings.size()], command);
    if ((i + 1) % 100 == 0) std::fprintf(stderr, "soak: %d of %d runs\n", i + 1, runs);
  }
  return print(endings) ? 0 : 1;
} catch (const std::exception& problem) {
  std::fprintf(stderr, "soak: %s\n", problem.what());
  return 1;
}
