#include <systemd/sd-login.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "platform/UserFolders.h"

namespace platform {
namespace {

struct Free {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

// A login screen is a session too, of a user who is nobody's; so is a screen that waits for an unlocking.
bool isSomebodys(const char* session) {
  char* answer = nullptr;
  if (::sd_session_get_class(session, &answer) < 0) return false;
  const Text kind(answer);
  return std::strncmp(kind.get(), "user", 4) == 0;
}

}  // namespace

std::optional<uid_t> consoleUser() {
  char* answer = nullptr;
  uid_t user = 0;
  if (::sd_seat_get_active("seat0", &answer, &user) < 0) return std::nullopt;
  const Text session(answer);
  if (!session || !isSomebodys(session.get())) return std::nullopt;
  return user;
}

}  // namespace platform
