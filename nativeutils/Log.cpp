#include "nativeutils/Log.h"

#include "applog/Logger.h"

void utilSetLogLevel(int level, const char* component, const char* context) {
  Logger::getInstance()->setLogLevel(static_cast<Log_Level>(level), component, context);
}
