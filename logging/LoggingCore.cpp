#include "logging/LoggingCore.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "logging/Helpers.h"
#include "logging/LogTargetBase.h"

namespace tarn {
namespace {

int randomDigit() {
  return std::rand() % 10;
}

int randomLeadingDigit() {
  int digit = randomDigit();
  for (int redraws = 0; digit == 0 && redraws < 10; ++redraws)
    digit = randomDigit();
  return digit == 0 ? 2 : digit;
}

}  // namespace

// Never destroyed: threads and other static objects may log until the process has ended.
LoggingCore* LoggingCore::getInstance() {
  static LoggingCore* const instance = new LoggingCore;
  return instance;
}

bool LoggingCore::registerTarget(LogTargetBase* target) {
  if (target == nullptr || !target->onRegisterTarget()) return false;

  std::vector<LogTargetBase*>& registered = targets_[target->getIdentifier()];
  if (std::find(registered.begin(), registered.end(), target) != registered.end()) return true;
  target->incrementRefCount();
  registered.push_back(target);
  return true;
}

bool LoggingCore::unregisterTarget(LogTargetBase* target) {
  if (target == nullptr) return false;

  const auto entry = targets_.find(target->getIdentifier());
  if (entry == targets_.end()) return true;
  std::vector<LogTargetBase*>& registered = entry->second;
  const auto position = std::find(registered.begin(), registered.end(), target);
  if (position == registered.end()) return false;

  registered.erase(position);
  target->decrementRefCount();
  return target->getRefCount() == 0 ? target->onUnregisterTarget() : true;
}

void LoggingCore::log(const char* identifier, Log_Level level, const char* sessionId, const char* domain,
                      const char* subDomain, const char* component, const char* extra1, const char* extra2,
                      const char* format, va_list* arguments, unsigned long long timeMs) {
  if (identifier == nullptr) return;
  const auto entry = targets_.find(std::string_view(identifier));
  if (entry == targets_.end()) return;

  for (LogTargetBase* target : entry->second) {
    if (arguments == nullptr) {
      target->writeLog(level, sessionId, domain, subDomain, component, extra1, extra2, format, nullptr, timeMs);
      continue;
    }
    va_list copy;
    va_copy(copy, *arguments);
    target->writeLog(level, sessionId, domain, subDomain, component, extra1, extra2, format, &copy, timeMs);
    va_end(copy);
  }
}

std::string LoggingCore::generateSessionId() {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  int number = 0;
  int digit = randomLeadingDigit();
  for (int place = 0; place < 5; ++place) {
    number = number * 10 + digit;
    digit = randomDigit();
  }
  return getStringFromInt(number);
}

}  // namespace tarn
