// Starts the sign-in window, waits for its message and prints what it means. An example to copy from.
//
//   launcher WINDOW SIGN_IN REDIRECT ENTERPRISE
//
// - WINDOW is the path of the sign-in window's program. The other arguments are addresses.
// - SIGINT and SIGTERM close the window.
// - Exit status: 0 signed in, 1 the user closed the window, 2 a page failed to load, 255 an option is missing,
//   3 the window ended without a message.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
extern "C" {  // missing in some versions of the header
#include <sys/pidfd.h>
}

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

int checked(int result, const std::string& what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

// mkdtemp sets the mode 0700: other users cannot reach the files of the folder, whatever their own modes.
struct PrivateFolder {
  PrivateFolder() { checked(mkdtemp(path.data()) == nullptr ? -1 : 0, path); }
  ~PrivateFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  PrivateFolder(const PrivateFolder&) = delete;

  std::string path = std::filesystem::temp_directory_path() / "sign-in.XXXXXX";
};

volatile sig_atomic_t window = 0;  // its process id while it runs
volatile sig_atomic_t isStopRequested = 0;

void onStop(int) {
  isStopRequested = 1;
  if (window != 0) kill(window, SIGTERM);
}

void startWindow(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command)
    arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  pid_t process = 0;
  errno = posix_spawn(&process, arguments[0], nullptr, nullptr, arguments.data(), environ);
  checked(errno == 0 ? 0 : -1, command[0]);
  window = process;
  if (isStopRequested) kill(process, SIGTERM);
}

void readAvailable(int pipe, std::string& message) {
  char block[4096];
  for (ssize_t count = 0; (count = read(pipe, block, sizeof block)) > 0;)
    message.append(block, static_cast<std::size_t>(count));
}

// Returns the message when the window has ended; "" without a message.
std::string waitForWindow(int pipe) {
  const pid_t process = window;
  const int end = checked(pidfd_open(process, 0), "pidfd_open");
  std::string message;
  pollfd events[] = {{end, POLLIN, 0}, {pipe, POLLIN, 0}};
  while (events[0].revents == 0) {
    if (poll(events, 2, -1) < 0) continue;  // interrupted by a signal
    readAvailable(pipe, message);
    if (events[1].revents & POLLHUP) events[1].fd = -1;  // closed by the window
  }
  window = 0;  // before waitpid frees the process id for other processes
  waitpid(process, nullptr, 0);
  close(end);
  return message;
}

// Returns "" if `text` does not start with `head` and end with `tail`.
std::string between(const std::string& head, const std::string& tail, const std::string& text) {
  if (text.size() < head.size() + tail.size()) return "";
  const std::string inner = text.substr(head.size(), text.size() - head.size() - tail.size());
  return text == head + inner + tail ? inner : "";
}

std::string unescaped(std::string text) {
  // "&amp;" is the last one, so that "&amp;lt;" becomes "&lt;" and not "<".
  const std::pair<std::string, char> entities[] = {
      {"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}};
  for (const auto& [entity, character] : entities) {
    for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1))
      text.replace(at, entity.size(), 1, character);
  }
  return text;
}

// Prints the message and its meaning. Returns the exit status.
int report(const std::string& message) {
  const std::string address = unescaped(between("<result><URL>", "</URL></result>", message));
  const int error = std::atoi(between("<errorNo><error>", "</error></errorNo>", message).c_str());
  const std::string meaning = !address.empty() ? "signed in; the result is the query of " + address
                              : error == 1     ? "the user closed the window"
                              : error == 2     ? "a page failed to load"
                              : error != 0     ? "the window was started without a required option"
                                               : "the window ended without a message";
  std::printf("message: %s\nmeaning: %s\n", message.c_str(), meaning.c_str());
  return !address.empty() ? 0 : error != 0 ? error : 3;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 5) {
    std::fprintf(stderr, "usage: launcher WINDOW SIGN_IN REDIRECT ENTERPRISE\n");
    return 64;
  }
  signal(SIGINT, onStop);
  signal(SIGTERM, onStop);

  // The pipe must be open before the window starts: a message is lost if its writer closes a pipe that no other process
  // has open.
  const PrivateFolder folder;
  const std::string path = folder.path + "/message";
  checked(mkfifo(path.c_str(), 0600), path);
  const int pipe = checked(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC), path);
  startWindow({argv[1], std::string("--zelURL=") + argv[2], std::string("--redirectURL=") + argv[3],
               std::string("--redirectType3URL=") + argv[4], "--productName=Example Product",
               "--type3WindowTitle=Example Product for Enterprises", "--pipeName=" + path});
  const std::string message = waitForWindow(pipe);
  close(pipe);
  return report(message);
} catch (const std::exception& error) {
  std::fprintf(stderr, "launcher: %s\n", error.what());
  return 3;
}
