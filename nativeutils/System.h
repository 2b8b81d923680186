#pragma once

#include <cstdint>
#include <string>

struct os_version {
  std::int64_t major;
  std::int64_t minor;
  std::int64_t bugFix;
};

bool utilIsUserAdmin();
bool utilIsUserRoot();
bool utilGetUserAppDataFolder(std::string& path);
bool utilGetSystemApplicationSupportFolderPath(std::string& path);
bool utilGetQRBPath(std::string& path);
bool utilGetApplicationsPath(std::string& path);
bool utilGetVormInstallPath(std::string& path);
bool utilGetUSFPath(std::string& path);
bool utilGetUSfPathFromKelvoPath(const std::string& kelvoPath, std::string& usfPath);
bool utilGetApplicationName(std::string& name);
bool utilGetSelfPath(std::string& path);
bool utilGetOSLanguage(std::string& language);
bool utilGetCurrentOSVersion(os_version& version);
bool utilGetOSVersionFromOSVersionString(std::string text, os_version& version);
int utilCompareOSVersion(os_version& a, os_version& b);
bool utilIs64Bit();
bool util_getVolumePath(const std::string& path, std::string& volumePath);
bool utilGetVolumeNameOfPath(const std::string& path, std::string& volumeName);
bool utilIsDriveCaseSensitive(std::string path, bool& caseSensitive);
