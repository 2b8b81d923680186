#pragma once

#include <string>
#include <vector>

bool utilCreateProcessWithReturnCode(const std::string& path, const std::vector<std::string>& args,
                                     unsigned long& status, bool wait, unsigned long& returnCode, bool unused);
bool utilCreateProcess(const std::string& path, const std::vector<std::string>& args, bool bringToFront,
                       void* (*watcher)(void*));
bool utilLaunchApplication(const std::string& path);
bool utilOpenURL(const std::string& url);
bool utilCloseAllNotificationWorkflows();
