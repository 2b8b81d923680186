// A log target that records its messages.

#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "logging/Helpers.h"
#include "logging/LogTargetBase.h"

struct Record {
  tarn::Log_Level level;
  std::vector<std::string> texts;  // session id, domain, sub-domain, component, extra 1, extra 2
  std::string message;
  unsigned long long timeMs;
};

class RecordingTarget : public tarn::LogTargetBase {
 public:
  explicit RecordingTarget(const char* identifier, std::vector<RecordingTarget*>* order = nullptr)
      : LogTargetBase(identifier), order_(order) {}

  bool SetStreamHandle(std::fstream&) override { return true; }
  bool onRegisterTarget() override {
    ++registrations;
    return result;
  }
  bool onUnregisterTarget() override {
    ++unregistrations;
    return result;
  }
  bool writeLog(tarn::Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                const char* component, const char* extra1, const char* extra2, const char* format, va_list* arguments,
                unsigned long long timeMs) override {
    char text[200] = "";
    tarn::getLogMessage(text, sizeof text, format, arguments);
    records.push_back({level,
                       {sessionId, domain, subDomain, component, extra1, extra2},
                       arguments == nullptr ? format : text,
                       timeMs});
    if (order_ != nullptr) order_->push_back(this);
    return false;
  }

  bool result = true;
  int registrations = 0;
  int unregistrations = 0;
  std::vector<Record> records;

 private:
  std::vector<RecordingTarget*>* order_;
};
