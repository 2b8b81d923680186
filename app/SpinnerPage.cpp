#include "app/SpinnerPage.h"

#include <string>
#include <string_view>

#include "app/Address.h"

namespace {

constexpr char kImageBase64[] =
#include "SpinnerImage.inc"
    ;

bool isPathCharacter(char c) {
  constexpr std::string_view kPunctuation = "-._~!$&'()*+,;=:@/";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kPunctuation.find(c) != std::string_view::npos;
}

}  // namespace

// Text fixed by the interface, including the repeated "center", the sizes without units and the empty container rule.
const std::string spinnerHTMLSource =
    std::string(
        R"(<html><head><style type="text/css">body{overflow: hidden;margin: 0px!important;padding: 0px!important;})"
        R"(div.image {width: 680;height: 550;background-repeat: no-repeat;right: 0px;)"
        R"(background-position: center; center;background-image: url('data:image/gif;base64,)") +
    kImageBase64 + "');}.container{\t}</style></head><body><div class=\"image\"></div></body></html>";

std::string spinnerHTMLBaseURL;

std::string spinnerPagePath(const std::string& bundlePath) {
  return bundlePath + "spinner_html.html";
}

std::string spinnerPageURL(const std::string& path) {
  std::string url = "file://";
  for (const char c : path) {
    if (isPathCharacter(c)) {
      url += c;
    } else {
      url += percentEncoded(c);
    }
  }
  return url;
}
