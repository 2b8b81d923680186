#include "applog/Logger.h"

#include <string>

#include "nativeutils/Component.h"
#include "nativeutils/Files.h"
#include "nativeutils/System.h"
#include "platform/EventLoop.h"
#include "platform/Path.h"
#include "platform/Text.h"
#include "platform/Users.h"

using nativeutils::kComponent;
using platform::findFolder;
using platform::FolderDomain;
using platform::FolderKind;
using platform::FolderSearch;
using Failure = platform::FolderSearch::Failure;

namespace {

bool getDataFolder(FolderDomain domain, std::string& path) {
  const FolderSearch folder = findFolder(domain, FolderKind::kApplicationSupport);
  Logger* const log = Logger::getInstance();
  // The messages name the first caller for both callers; they are fixed by the interface.
  switch (folder.failure) {
    case Failure::kFind:
      log->logWarn(kComponent, "Failed in finding location information  in utilGetUserAppDataFolder error:%d",
                   folder.status);
      return false;
    case Failure::kPath:
      log->logWarn(kComponent, "Failed in path conversion in utilGetUserAppDataFolder error:%d", folder.status);
      return false;
    case Failure::kText:
      log->logWarn(kComponent, "Error in allocating memory in utilGetUserAppDataFolder");
      return false;
    case Failure::kNone:
      break;
  }
  path = folder.path;
  return true;
}

}  // namespace

bool utilGetUserAppDataFolder(std::string& path) {
  const platform::AutoreleaseScope scope;
  return getDataFolder(FolderDomain::kUser, path);
}

bool utilGetSystemApplicationSupportFolderPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  return getDataFolder(FolderDomain::kSystem, path);
}

bool utilGetQRBPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  path = findFolder(FolderDomain::kLocal, FolderKind::kApplicationSupport).path + "/Orvane";
  return true;
}

bool utilGetApplicationsPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  path = findFolder(FolderDomain::kLocal, FolderKind::kApplications).path;
  return true;
}

bool utilGetVormInstallPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  const FolderSearch folder = findFolder(FolderDomain::kLocal, FolderKind::kUtilities);
  Logger* const log = Logger::getInstance();
  switch (folder.failure) {
    case Failure::kFind:
      log->logFatal(kComponent, "Error creating Application-Utilities install path for Kelvo, Error Code: %d",
                    folder.status);
      return false;
    case Failure::kPath:
      log->logFatal(kComponent, "Error in converting path into POSIX-style pathname, Error Code: %d", folder.status);
      return false;
    case Failure::kText:
      log->logFatal(kComponent, "Error converting Application-Utilities path as C string to string");
      return false;
    case Failure::kNone:
      break;
  }
  path = folder.path + "/Orvane Application Manager/";
  return true;
}

bool utilGetUSFPath(std::string& path) {
  const platform::AutoreleaseScope scope;
  const std::string home = platform::homeFolderOfConsoleUser();
  for (const std::string& place : {home + "/Applications", home + "/Library/Application Support",
                                   "/tmp/" + platform::randomUuidText(), home + "/" + platform::randomUuidText()}) {
    const std::string candidate = place + "/Orvane/TARN/Kelvo/";
    std::string existing;
    if (!utilIsCreatableWritablePath(candidate.c_str(), existing)) continue;
    path = candidate;
    return true;
  }
  return false;
}

bool utilGetUSfPathFromKelvoPath(const std::string& kelvoPath, std::string& usfPath) {
  const platform::AutoreleaseScope scope;
  usfPath = platform::deletingLastPathComponent(kelvoPath);
  return true;
}
