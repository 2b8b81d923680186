#include "nativeutils/Base64.h"

#include <functional>
#include <string_view>
#include <utility>

#include "applog/Logger.h"
#include "nativeutils/Base64Text.h"
#include "nativeutils/Component.h"

using nativeutils::appendBase64;
using nativeutils::appendDecoded;
using nativeutils::kComponent;

namespace {

// The iterator keeps its string to its heirs.
struct Inserter : std::back_insert_iterator<std::string> {
  static std::string& stringOf(const std::back_insert_iterator<std::string>& iterator) {
    return *(iterator.*&Inserter::container);
  }
};

std::string_view view(std::string::const_iterator begin, std::string::const_iterator end) {
  return begin == end ? std::string_view() : std::string_view(&*begin, static_cast<std::size_t>(end - begin));
}

bool liesIn(const std::string& text, const char* place) {
  const std::less<> isBefore;
  return !isBefore(place, text.data()) && !isBefore(text.data() + text.size(), place);
}

}  // namespace

template <>
std::back_insert_iterator<std::string> Base64Encode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out) {
  appendBase64(view(begin, end), Inserter::stringOf(out));
  return out;
}

template <>
std::back_insert_iterator<std::string> Base64Decode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out, bool& ok) {
  ok = appendDecoded(view(begin, end), Inserter::stringOf(out));
  return out;
}

bool utilEncodeDataInBase64(const char* data, int length, std::string& out) {
  if (data == nullptr || length == 0) {
    Logger::getInstance()->logInfo(kComponent, "Invalid arguments to utilEncodeDataInBase64.");
    return false;
  }
  if (liesIn(out, data)) {
    appendBase64(std::string(data), out);
  } else {
    appendBase64(data, out);
  }
  return true;
}

bool utilDecodeBase64Data(const char* base64, int length, std::string& out) {
  if (base64 == nullptr || length == 0) {
    Logger::getInstance()->logInfo(kComponent, "Invalid arguments to utilDecodeBase64Data.");
    return false;
  }
  std::string bytes;
  if (!appendDecoded(base64, bytes)) {
    Logger::getInstance()->logInfo(kComponent, "Failed to decode from base 64.");
    return false;
  }
  out = std::move(bytes);
  return true;
}
