// The peer: an independent logger that writes the same line under its own file lock and flushes it.
//
// A process that writes loads this module, never one that forks: the library starts threads when it is loaded.

#include <log4cplus/fileappender.h>
#include <log4cplus/helpers/property.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <memory>
#include <string>

extern "C" void openLockedPeer(const char* path) {
  static log4cplus::Initializer library;
  log4cplus::helpers::Properties settings;
  settings.setProperty("File", path);
  settings.setProperty("Append", "true");
  settings.setProperty("ImmediateFlush", "true");
  settings.setProperty("UseLockFile", "true");
  settings.setProperty("LockFile", std::string(path) + ".lock");
  log4cplus::SharedAppenderPtr appender(new log4cplus::FileAppender(settings));
  appender->setLayout(std::make_unique<log4cplus::PatternLayout>(
      "%D{%m/%d/%y %H:%M:%S:%q} | [%p] |  | QSU | SVO | %c |  |  | %t | %m%n"));

  log4cplus::Logger logger = log4cplus::Logger::getInstance("SVO");
  logger.setAdditivity(false);
  logger.addAppender(appender);
  logger.setLogLevel(log4cplus::INFO_LOG_LEVEL);
}

extern "C" void logWithLockedPeer(const char* message) {
  static const log4cplus::Logger logger = log4cplus::Logger::getInstance("SVO");
  LOG4CPLUS_INFO_FMT(logger, "%s", message);
}
