#include <SystemConfiguration/SystemConfiguration.h>

#include <cstring>
#include <optional>

#include "platform/UserFolders.h"
#include "platform/macos/Owned.h"

namespace platform {
namespace {

using Text = Owned<CFStringRef>;

// While nobody is logged in the login window may have the screen, in the super-user's name.
bool isLoginWindow(const Text& name) {
  constexpr char kLoginWindow[] = "loginwindow";
  char text[sizeof kLoginWindow];  // what does not fit is another name
  return CFStringGetCString(name.get(), text, sizeof text, kCFStringEncodingUTF8) &&
         std::strcmp(text, kLoginWindow) == 0;
}

}  // namespace

std::optional<uid_t> consoleUser() {
  uid_t user = 0;
  const Text name(SCDynamicStoreCopyConsoleUser(nullptr, &user, nullptr));
  if (!name || isLoginWindow(name)) return std::nullopt;
  return user;
}

}  // namespace platform
