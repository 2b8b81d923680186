#include "logging/LineFormat.h"

#include <langinfo.h>
#include <sys/time.h>

#include <charconv>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "logging/Helpers.h"
#include "logging/LogTargetDefault.h"
#include "platform/Machine.h"

namespace tarn {
namespace {

constexpr std::size_t kTimeSize = 256;  // of the buffer that `getTimeStr` fills
constexpr std::size_t kMaxDigits = std::numeric_limits<std::uint64_t>::digits10 + 1;

std::string_view bracketedName(Log_Level level) {
  switch (level) {
    case TRACE:
      return "[TRACE]";
    case DEBUG:
      return "[DEBUG]";
    case INFO:
      return "[INFO]";
    case WARN:
      return "[WARN]";
    case ERROR:
      return "[ERROR]";
    case FATAL:
      return "[FATAL]";
    case NONE:
      return "[NONE]";
    default:
      return "[ALL]";
  }
}

// Not `std::to_string`, which fills a string twice for each line.
std::string_view currentThreadIdText(char (&digits)[kMaxDigits]) {
  const char* const end = std::to_chars(digits, std::end(digits), platform::currentThreadId()).ptr;
  return {digits, static_cast<std::size_t>(end - digits)};
}

char* copyText(std::string_view text, char* to) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// Resizes `out` once: appending the many short fields one by one is slower.
void appendJoined(std::initializer_list<std::string_view> fields, std::string_view separator, std::string& out) {
  std::size_t size = separator.size() * (fields.size() - 1);
  for (const std::string_view field : fields)
    size += field.size();

  const std::size_t position = out.size();
  out.resize(position + size);
  char* to = &out[position];
  for (const std::string_view& field : fields) {
    if (&field != fields.begin()) to = copyText(separator, to);
    to = copyText(field, to);
  }
}

}  // namespace

bool containsToken(const char* message) {
  const char* first = std::strstr(message, "eyJ");
  return first != nullptr && std::strstr(first, ".eyJ") != nullptr;
}

const std::string& TimestampCache::at(std::time_t second) {
  if (isValidFor(second)) return text_;

  char text[251];
  std::tm local{};
  ::tzset();
  ::localtime_r(&second, &local);
  text_.assign(text, std::strftime(text, sizeof text, "%x %X", &local));
  second_ = second;
  settings_ = currentSettings();
  return text_;
}

TimestampCache::Settings TimestampCache::currentSettings() {
  return {::nl_langinfo(D_FMT), ::tzname[0], ::tzname[1], ::timezone};
}

bool TimestampCache::isValidFor(std::time_t second) const {
  const Settings now = currentSettings();
  return second == second_ && now.dateFormat == settings_.dateFormat && now.zoneName == settings_.zoneName &&
         now.daylightZoneName == settings_.daylightZoneName && now.secondsWest == settings_.secondsWest &&
         !text_.empty();
}

void LogTargetDefault::formatLog(unsigned long long timeMs, Log_Level level, const char* sessionId, const char* domain,
                                 const char* subDomain, const char* component, const char* extra1, const char* extra2,
                                 const char* message, std::string& out) {
  char time[kTimeSize];
  getTimeStr(timeMs, time);
  message = orEmpty(message);
  if (containsToken(message)) {
    message = "Found access/device token. Log skipped.";
    level = WARN;
  }

  char digits[kMaxDigits];
  const std::string_view threadId = threadIdEnabled ? currentThreadIdText(digits) : "";
  appendJoined({time, bracketedName(level), orEmpty(sessionId), orEmpty(domain), orEmpty(subDomain), orEmpty(component),
                orEmpty(extra1), orEmpty(extra2), threadId, message},
               separator, out);
}

void LogTargetDefault::getTimeStr(unsigned long long timeMs, char* buffer) {
  timeval time{};
  if (timeMs != 0) {
    time.tv_sec = static_cast<time_t>(timeMs / 1000);
    time.tv_usec = static_cast<suseconds_t>(timeMs % 1000 * 1000);
  } else {
    getCurrentTime(time);
  }
  lastLineTime = time.tv_sec;

  const std::string& text = timestamps_.at(time.tv_sec);
  const auto milliseconds = static_cast<unsigned>(time.tv_usec / 1000);
  buffer = copyText(text, buffer);
  *buffer++ = ':';
  for (const unsigned divisor : {100u, 10u, 1u})
    *buffer++ = static_cast<char>('0' + milliseconds / divisor % 10);
  *buffer = '\0';
}

std::string LogTargetDefault::getCurrentThreadID() const {
  char digits[kMaxDigits];
  return std::string(threadIdEnabled ? currentThreadIdText(digits) : "");
}

std::string LogTargetDefault::getLogLevelString(Log_Level level) const {
  const std::string_view text = bracketedName(level);
  return std::string(text.substr(1, text.size() - 2));
}

}  // namespace tarn
