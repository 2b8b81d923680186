#include "platform/Failure.h"

#include <system_error>

namespace platform {

std::string errorText(int error) {
  return std::generic_category().message(error);
}

}  // namespace platform
