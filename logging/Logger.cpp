#include "logging/Logger.h"

#include <cstdarg>
#include <string>

#include "logging/Helpers.h"
#include "logging/LoggingCore.h"

namespace tarn {
namespace {

bool assignText(std::string& field, const char* text) {
  if (text == nullptr) return false;
  field = text;
  return true;
}

}  // namespace

Logger::Logger(const char* targetIdentifier, const char* sessionId, const char* domain, const char* subDomain,
               const char* component)
    : core_(LoggingCore::getInstance()),
      sessionId(orEmpty(sessionId)),
      domain(orEmpty(domain)),
      subDomain(orEmpty(subDomain)),
      component(orEmpty(component)),
      targetIdentifier(orEmpty(targetIdentifier)) {}

Logger::Logger(const char* targetIdentifier) : Logger(targetIdentifier, nullptr, nullptr, nullptr, nullptr) {}

bool Logger::setTargetIdentifier(const char* text) {
  return assignText(targetIdentifier, text);
}
bool Logger::setSessionId(const char* text) {
  return assignText(sessionId, text);
}
bool Logger::setDomain(const char* text) {
  return assignText(domain, text);
}
bool Logger::setSubDomain(const char* text) {
  return assignText(subDomain, text);
}
bool Logger::setComponent(const char* text) {
  return assignText(component, text);
}

void Logger::trace(const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(TRACE, "", "", format, arguments);
  va_end(arguments);
}

void Logger::debug(const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(DEBUG, "", "", format, arguments);
  va_end(arguments);
}

void Logger::info(const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(INFO, "", "", format, arguments);
  va_end(arguments);
}

void Logger::warn(const char* code, const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(WARN, orEmpty(code), "", format, arguments);
  va_end(arguments);
}

void Logger::error(const char* code, const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(ERROR, orEmpty(code), "", format, arguments);
  va_end(arguments);
}

void Logger::fatal(const char* code, const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(FATAL, orEmpty(code), "", format, arguments);
  va_end(arguments);
}

void Logger::log(Log_Level level, const char* extra1, const char* extra2, const char* format, ...) {
  if (format == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  logit(level, orEmpty(extra1), orEmpty(extra2), format, arguments);
  va_end(arguments);
}

void Logger::logit(Log_Level level, const char* extra1, const char* extra2, const char* format, va_list arguments) {
  // A va_list parameter may have decayed to a pointer, so that its address has the wrong type. The copy has not.
  va_list copy;
  va_copy(copy, arguments);
  core_->log(targetIdentifier.c_str(), level, sessionId.c_str(), domain.c_str(), subDomain.c_str(), component.c_str(),
             extra1, extra2, format, &copy, 0);
  va_end(copy);
}

}  // namespace tarn
