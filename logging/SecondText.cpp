#include "logging/SecondText.h"

#include <langinfo.h>

#include <cstdlib>

namespace tarn {

const std::string& SecondText::at(std::time_t second) {
  const char* zone = std::getenv("TZ");
  if (isStillTrue(second, zone)) return text_;

  char text[256];
  std::tm local{};
  ::tzset();
  ::localtime_r(&second, &local);
  text_.assign(text, std::strftime(text, sizeof text, "%x %X", &local));

  second_ = second;
  zoneIsSet_ = zone != nullptr;
  zone_ = zoneIsSet_ ? zone : "";
  dateForm_ = ::nl_langinfo(D_FMT);
  return text_;
}

bool SecondText::isStillTrue(std::time_t second, const char* zone) const {
  if (text_.empty() || second != second_ || dateForm_ != ::nl_langinfo(D_FMT)) return false;
  return zone == nullptr ? !zoneIsSet_ : zoneIsSet_ && zone_ == zone;
}

}  // namespace tarn
