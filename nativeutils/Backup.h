#pragma once

#include <string>

bool utilBackupFolderIfExits(const std::string& pathToBkp, std::string& backupPath, bool unused);
bool util_renameFolderToFolder(const std::string& from, const std::string& to);
bool utilRestoreFolder(const std::string& backupPath, const std::string& targetPath);
bool utilCreateSymlinkFromPathToPath(const std::string& target, const std::string& linkPath);
