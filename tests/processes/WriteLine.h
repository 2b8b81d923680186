// Logs a message of any length through the application logger.

#pragma once

#include <string>

#include "applog/Logger.h"

namespace processes {

// `logInfo` cuts a message after 1022 characters, `sendMessageToTARNLogger` does not.
inline void writeLine(const std::string& message) {
  Logger& logger = *Logger::getInstance();
  if (message.size() < 1000) {
    logger.logInfo("SVO", "%s", message.c_str());
  } else {
    logger.sendMessageToTARNLogger(tarn::INFO, "", "QSU", "SVO", "SVO", "", "", message.c_str());
  }
}

}  // namespace processes
