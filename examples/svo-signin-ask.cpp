// Shows the sign-in window and prints the address at which the sign-in ended. Installed as `svo-signin-ask`, and the
// launcher to copy: one file that needs only the C++ library and Linux.
//
// - The window is the program svo-signin in the folder of this program, or else in PATH.
// - SIGTERM, SIGINT, SIGHUP, the timeout, and a reader that closes standard output close the window. It is killed if it
//   has not ended 10 seconds later, or 20 seconds after its message.
// - Two processes, each of which removes the folder of the pipe when the other one is killed. The second one does the
//   work. The window is closed when the process that has started it ends.

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr char kUsage[] = R"(usage: svo-signin-ask OPTION...

Shows a window in which a user signs in, and prints the address at which the sign-in ended.
  --zelURL=ADDRESS            the sign-in page
  --redirectURL=ADDRESS       the beginning of the addresses that end the sign-in
  --redirectType3URL=ADDRESS  the beginning of the addresses of enterprise pages
  --productName=TITLE         the window's title (optional)
  --type3WindowTitle=TITLE    its title from the first enterprise page on (optional)
  --timeout=SECONDS           close the window after this time
  --json                      print {"code":STATUS,"url":ADDRESS} at every end; null without an address
  --help                      print this text

Exit status: 0 signed in, 1 closed, 2 a page failed to load, 255 wrong option or no display, 3 no message from the window
)";

enum ExitStatus { kSignedIn = 0, kClosed = 1, kNoMessage = 3, kWrongOption = 255 };

constexpr std::chrono::seconds kTimeToEnd = 10s;
constexpr std::chrono::milliseconds kLongestPoll = 1h;  // poll() takes an int

// The default of /proc/sys/fs/pipe-max-size. The window writes its message at once: what exceeds the pipe is lost.
constexpr int kPipeSize = 1024 * 1024;

using WrongOption = std::invalid_argument;

struct Options {
  bool isJson = false;
  Clock::time_point deadline = Clock::time_point::max();
  std::vector<std::string> command = {"svo-signin"};
};

struct Outcome {
  int status = kNoMessage;
  std::string address;
};

void complain(const std::string& text) {
  std::fprintf(stderr, "svo-signin-ask: %s\n", text.c_str());
}

int checked(int result, const std::string& what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

struct Descriptor {
  ~Descriptor() { close(fd); }
  const int fd;
};

// A new folder for the pipe, in the first place where it can be created. Its mode is 0700: other users cannot reach the
// pipe, to which the window gives the mode 0644.
class PrivateFolder {
 public:
  PrivateFolder() {
    const char* const places[] = {std::getenv("TMPDIR"), std::getenv("XDG_RUNTIME_DIR"), "/tmp"};
    for (const char* const place : places) {
      if (place == nullptr || *place == '\0') continue;
      path_ = std::string(place) + "/svo-signin-ask.XXXXXX";
      if (mkdtemp(path_.data()) != nullptr) return;
    }
    checked(-1, path_);
  }
  ~PrivateFolder() {
    unlink(pipe().c_str());
    rmdir(path_.c_str());
  }
  PrivateFolder(const PrivateFolder&) = delete;
  std::string pipe() const { return path_ + "/message"; }

 private:
  std::string path_;
};

Clock::time_point deadlineAfter(const std::string& seconds) {
  unsigned count = 0;
  const char* const end = seconds.data() + seconds.size();
  const auto [rest, error] = std::from_chars(seconds.data(), end, count);
  if (error != std::errc() || rest != end || count == 0) throw WrongOption("--timeout needs a number of seconds");
  return Clock::now() + std::chrono::seconds(count);
}

// `arguments` without the program's name. Sets `options.isJson` also if it throws WrongOption.
void readOptions(const std::vector<std::string>& arguments, Options& options) {
  options.isJson = std::count(arguments.begin(), arguments.end(), "--json") != 0;
  std::map<std::string, std::string> values = {{"--zelURL", ""},           {"--redirectURL", ""},
                                               {"--redirectType3URL", ""}, {"--productName", ""},
                                               {"--type3WindowTitle", ""}, {"--timeout", ""}};
  for (const std::string& argument : arguments) {
    if (argument == "--json") continue;
    const std::size_t equals = argument.find('=');
    const auto option = values.find(argument.substr(0, equals));
    if (option == values.end()) throw WrongOption("unknown option " + argument + "; --help lists the options");
    if (equals == std::string::npos) throw WrongOption(argument + " needs a value, after '='");
    if (!option->second.empty()) throw WrongOption(option->first + " is given twice");
    option->second = argument.substr(equals + 1);
    if (option->first != "--timeout")
      options.command.push_back(argument);
    else
      options.deadline = deadlineAfter(option->second);
  }
  for (const char* const needed : {"--zelURL", "--redirectURL", "--redirectType3URL"}) {
    if (values[needed].empty()) throw WrongOption(std::string(needed) + " is missing");
  }
}

// Returns "" if `text` does not start with `head` and end with `tail`.
std::string_view between(std::string_view head, std::string_view tail, std::string_view text) {
  if (text.size() < head.size() + tail.size() || text.substr(0, head.size()) != head) return "";
  if (text.substr(text.size() - tail.size()) != tail) return "";
  return text.substr(head.size(), text.size() - head.size() - tail.size());
}

//   "a&amp;lt;b"  => "a&lt;b"
std::string unescaped(std::string_view text) {
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}};
  std::string plain;
  while (!text.empty()) {
    const auto* const entity = std::find_if(std::begin(kEntities), std::end(kEntities), [text](const auto& each) {
      return text.substr(0, each.first.size()) == each.first;
    });
    const bool isEntity = entity != std::end(kEntities);
    plain += isEntity ? entity->second : text.front();
    text.remove_prefix(isEntity ? entity->first.size() : 1);
  }
  return plain;
}

// The status is kNoMessage if the message is truncated.
Outcome meaningOf(std::string_view message) {
  const std::string address = unescaped(between("<result><URL>", "</URL></result>", message));
  if (!address.empty()) return {kSignedIn, address};
  const std::string_view error = between("<errorNo><error>", "</error></errorNo>", message);
  for (const int status : {1, 2, 255}) {
    if (error == std::to_string(status)) return {status, ""};
  }
  return {};
}

// Returns the length of the UTF-8 character at the start of `text` (RFC 3629, section 3); 0 if it is not one.
std::size_t characterLength(std::string_view text) {
  const auto byte = [text](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  if (byte(0) < 0x80) return 1;
  if (byte(0) < 0xC0 || byte(0) > 0xF7) return 0;
  const std::size_t length = byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
  unsigned code = byte(0) & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    code = code << 6 | (byte(i) & 0x3F);
  }
  const unsigned shortest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < shortest || code > 0x10FFFF || isSurrogate ? 0 : length;
}

// Returns a JSON string (RFC 8259, section 7). JSON is UTF-8, so any other byte is percent-encoded, which keeps the
// meaning of an address.
//   a"b\<newline>é<byte FF>  => "a\"b\\\u000aé%FF"
std::string jsonString(std::string_view text) {
  std::string json = "\"";
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const auto first = static_cast<unsigned char>(text.front());
    char escaped[8] = "";
    if (length == 0) std::snprintf(escaped, sizeof escaped, "%%%02X", first);
    if (length == 1 && (first < 0x20 || first == '"' || first == '\\'))
      std::snprintf(escaped, sizeof escaped, "\\u%04x", first);
    json += *escaped != '\0' ? escaped : text.substr(0, length);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return json + '"';
}

bool printed(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return true;
  complain(std::string("standard output: ") + std::generic_category().message(errno));
  return false;
}

// Prints the outcome. Returns the exit status.
int report(const Options& options, const Outcome& outcome) {
  const bool isSignedIn = outcome.status == kSignedIn;
  if (!options.isJson && !isSignedIn) return outcome.status;
  const std::string url = isSignedIn ? jsonString(outcome.address) : "null";
  const std::string json = "{\"code\":" + std::to_string(outcome.status) + ",\"url\":" + url + "}";
  return printed((options.isJson ? json : outcome.address) + "\n") || !isSignedIn ? outcome.status : kNoMessage;
}

sigset_t signalSet(std::initializer_list<int> numbers) {
  sigset_t set;
  sigemptyset(&set);
  for (const int number : numbers)
    sigaddset(&set, number);
  return set;
}

// The end of a child process, and what closes the window.
const sigset_t kAwaitedSignals = signalSet({SIGCHLD, SIGTERM, SIGINT, SIGHUP});

// Blocks the awaited signals, which are read. A caller's own settings, such as an ignored SIGCHLD, do not count.
void prepareSignals() {
  (void)sigprocmask(SIG_SETMASK, &kAwaitedSignals, nullptr);
  (void)std::signal(SIGCHLD, SIG_DFL);
  (void)std::signal(SIGPIPE, SIG_IGN);
}

// Opens /dev/null for each closed standard descriptor, so that nothing is printed into a file opened later. Printing
// the result to a closed standard output fails.
void prepareDescriptors() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(standard, F_GETFD) == -1) (void)open("/dev/null", standard == STDERR_FILENO ? O_WRONLY : O_RDONLY);
  }
}

// From now on this process gets SIGTERM when its parent ends. Returns false if `parent` has already ended.
bool endWithParent(pid_t parent) {
  (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
  return getppid() == parent;
}

pid_t startWindow(std::vector<std::string> command) {
  const pid_t parent = getpid();
  const pid_t window = checked(fork(), "fork");
  if (window != 0) return window;

  if (!endWithParent(parent)) _exit(kNoMessage);
  (void)dup2(STDERR_FILENO, STDOUT_FILENO);  // only the result goes to standard output
  (void)std::signal(SIGPIPE, SIG_DFL);
  const sigset_t none = signalSet({});
  (void)sigprocmask(SIG_SETMASK, &none, nullptr);
  std::vector<char*> arguments(command.size() + 1);  // the last one is null
  std::transform(command.begin(), command.end(), arguments.begin(), [](std::string& each) { return each.data(); });
  std::error_code unknown;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  (void)execv((program.parent_path() / command[0]).c_str(), arguments.data());
  if (errno == ENOENT) (void)execvp(arguments[0], arguments.data());
  complain("cannot start " + command[0] + ": " + std::generic_category().message(errno));
  _exit(kNoMessage);
}

// The window while it runs.
class Window {
 public:
  Window(pid_t process, int pipe, Clock::time_point deadline) : process_(process), pipe_(pipe), deadline_(deadline) {}

  // Waits for the end of the window. Returns what its message says.
  Outcome wait() {
    const Descriptor signals{checked(signalfd(-1, &kAwaitedSignals, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd")};
    pollfd events[] = {{signals.fd, POLLIN, 0}, {pipe_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
    while (!hasEnded_) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
      (void)poll(events, std::size(events), static_cast<int>(std::clamp(left, 0ms, kLongestPoll).count()));
      readPipe();
      if (!message_.empty()) deadline_ = std::min(deadline_, Clock::now() + kTimeToEnd);
      if (std::exchange(events[2].revents, 0) != 0) {
        events[2].fd = -1;
        stop();
      }
      readSignals(signals.fd);
      if (!hasEnded_ && Clock::now() >= deadline_) end();
    }
    readPipe();
    return outcome();
  }

 private:
  void readPipe() {
    char block[4096];
    for (ssize_t count = 0; (count = read(pipe_, block, sizeof block)) > 0;)
      message_.append(block, static_cast<std::size_t>(count));
  }

  void readSignals(int signals) {
    for (signalfd_siginfo next{}; read(signals, &next, sizeof next) == sizeof next;) {
      if (next.ssi_signo != SIGCHLD) stop();
    }
    hasEnded_ = waitpid(process_, &status_, WNOHANG) == process_;
  }

  void stop() {
    if (!isClosing_) deadline_ = Clock::now();
    isClosing_ = true;
  }

  void end() {
    kill(process_, nextSignal_);
    nextSignal_ = SIGKILL;
    isClosing_ = true;
    deadline_ = Clock::now() + kTimeToEnd;
  }

  Outcome outcome() const {
    if (message_.empty() && isClosing_) return {kClosed, ""};
    Outcome outcome = meaningOf(message_);
    const std::string end = WIFSIGNALED(status_) ? "which was ended by signal " + std::to_string(WTERMSIG(status_))
                                                 : "whose exit status is " + std::to_string(WEXITSTATUS(status_));
    if (outcome.status == kNoMessage) complain("no complete message from the window, " + end);
    return outcome;
  }

  pid_t process_;
  int pipe_;
  Clock::time_point deadline_;
  int nextSignal_ = SIGTERM;
  bool isClosing_ = false;
  bool hasEnded_ = false;
  int status_ = 0;
  std::string message_;
};

// The pipe must be open before the window starts: a message is lost if its writer closes a pipe that no other process
// has open.
Outcome ask(Options& options, const PrivateFolder& folder) {
  const std::string path = folder.pipe();
  checked(mkfifo(path.c_str(), 0600), path);
  const Descriptor pipe{checked(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC), path)};
  (void)fcntl(pipe.fd, F_SETPIPE_SZ, kPipeSize);
  options.command.push_back("--pipeName=" + path);
  return Window(startWindow(options.command), pipe.fd, options.deadline).wait();
}

// Passes signals on to the second process until it ends. Returns its exit status.
int waitFor(pid_t worker) {
  int status = 0;
  while (waitpid(worker, &status, WNOHANG) != worker) {
    const int number = sigwaitinfo(&kAwaitedSignals, nullptr);
    if (number > 0 && number != SIGCHLD) kill(worker, SIGTERM);
  }
  if (WIFSIGNALED(status)) throw std::runtime_error("ended by signal " + std::to_string(WTERMSIG(status)));
  return WEXITSTATUS(status);
}

int run(Options& options) {
  const PrivateFolder folder;
  const pid_t first = getpid();
  const pid_t worker = checked(fork(), "fork");
  if (worker != 0) return waitFor(worker);
  return endWithParent(first) ? report(options, ask(options, folder)) : kNoMessage;
}

}  // namespace

int main(int argc, char** argv) {
  prepareDescriptors();
  prepareSignals();
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (std::count(arguments.begin(), arguments.end(), "--help") != 0) return printed(kUsage) ? 0 : kNoMessage;

  Options options;
  try {
    readOptions(arguments, options);
    return run(options);
  } catch (const std::exception& error) {
    complain(error.what());
    const bool isWrongOption = dynamic_cast<const WrongOption*>(&error) != nullptr;
    return report(options, {isWrongOption ? kWrongOption : kNoMessage, ""});
  }
}
