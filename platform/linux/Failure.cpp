#include "platform/Failure.h"

#include <cstring>
#include <system_error>

namespace platform {

std::string errorText(int error) {
  const char* const text = ::strerrordesc_np(error);
  return text != nullptr ? text : std::generic_category().message(error);
}

}  // namespace platform
