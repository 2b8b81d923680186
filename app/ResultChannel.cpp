#include "app/ResultChannel.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* entityFor(char c) {
  switch (c) {
    case '"':
      return "&quot;";
    case '&':
      return "&amp;";
    case '\'':
      return "&apos;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    default:
      return nullptr;
  }
}

// A device is never changed: if the super-user names /dev/null, a new mode of it would break every user's programs.
bool isPipeOrFile(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 && (S_ISFIFO(item.st_mode) || S_ISREG(item.st_mode));
}

}  // namespace

void EncodeXMLData(std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    if (const char* entity = entityFor(c)) {
      escaped += entity;
    } else {
      escaped += c;
    }
  }
  text.swap(escaped);
}

std::string ConstructOutputString(int code, std::string& url) {
  EncodeXMLData(url);
  if (code == kLoadFailed) return "<errorNo><error>2</error></errorNo>";
  if (code == kWindowClosed) return "<errorNo><error>1</error></errorNo>";
  if (code != kSignedIn) return "<errorNo><error>255</error></errorNo>";
  return "<result><URL>" + url + "</URL></result>";
}

bool WriteFIFO(const std::string& pipePath, const std::string& message) {
  if (!isPipeOrFile(pipePath) || ::chmod(pipePath.c_str(), 0644) != 0) return false;

  const int pipe = ::open(pipePath.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (pipe < 0) return false;

  const ssize_t written = ::write(pipe, message.data(), message.size());
  (void)::close(pipe);  // a pipe has no buffered data that could fail to be written
  return written == static_cast<ssize_t>(message.size());
}
