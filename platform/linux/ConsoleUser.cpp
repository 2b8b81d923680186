#include <systemd/sd-login.h>

#include "platform/UserFolders.h"

namespace platform {

std::optional<uid_t> consoleUser() {
  uid_t user = 0;
  if (::sd_seat_get_active("seat0", nullptr, &user) < 0) return std::nullopt;
  return user;
}

}  // namespace platform
