#include "logging/SecondText.h"

#include <langinfo.h>

namespace tarn {

const std::string& SecondText::at(std::time_t second) {
  if (isStillTrue(second)) return text_;

  char text[251];
  std::tm local{};
  ::tzset();
  ::localtime_r(&second, &local);
  text_.assign(text, std::strftime(text, sizeof text, "%x %X", &local));
  second_ = second;
  setting_ = presentSetting();
  return text_;
}

SecondText::Setting SecondText::presentSetting() {
  return {::nl_langinfo(D_FMT), ::tzname[0], ::tzname[1], ::timezone};
}

bool SecondText::isStillTrue(std::time_t second) const {
  const Setting now = presentSetting();
  return second == second_ && now.dateForm == setting_.dateForm && now.zoneName == setting_.zoneName &&
         now.summerZoneName == setting_.summerZoneName && now.secondsWest == setting_.secondsWest && !text_.empty();
}

}  // namespace tarn
