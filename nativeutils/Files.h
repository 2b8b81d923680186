#pragma once

#include <string>
#include <vector>

// Any `int` may be passed in one.
enum PermissionType : int {
  PermissionType_Read = 1,
  PermissionType_Write = 2,
};

bool utilCreateDirectoryPath(const std::string& path, bool unused);
bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode);
bool utilFileExitsAtPath(const std::string& path);
bool utilFolderExitsAtPath(const std::string& path);
bool utilRenamePathToPath(const std::string& from, const std::string& to);
bool utilDeleteFolder(const std::string& path, bool unused1, bool unused2);
bool utilDeleteFolderIfEmpty(const std::string& path);
bool utilFolderHasPermission(const std::string& path, const PermissionType& type);
bool utilDeleteFileIfExitsAtPath(const std::string& path, bool unused);
bool utilCopySrcFileToDstFolder(const std::string& srcFile, const std::string& dstFolder, bool unused);
bool utilChown(const std::string& path);
bool utilGetSubFolderList(const std::string& path, std::vector<std::string>& names);
bool utilGetDisplayNameForFolderPath(const std::string& path, std::string& displayName);
bool utilIsCreatableWritablePath(const char* path, std::string& existingPath);
