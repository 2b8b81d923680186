#pragma once

#include <cstdint>
#include <string>

bool utilGetStringFromNativeString(const char* nativeStr, std::string& out);
bool utilGetNativeStringFromString(const std::string& in, std::string& out);
bool utilGetNativeStringFromArray(const char* array, std::string& out);
bool utilGetNFCNativeStringFromArray(const char* array, std::string& out);
bool utilGetNativeStringFromInt(int value, std::string& out);
bool utilGetNativeStringFromLong(long value, std::string& out);
bool utilGetStringFromLongLong(long long value, std::string& out);
int utilGetIntFromString(const std::string& text);
long long utilGetLongLongFromString(const std::string& text);
bool utilStrCpy(char* dst, int dstSize, const char* src, int srcLen);
bool utilGetUUIDString(std::string& out);
bool utilGetFilePathBaseName(const std::string& path, std::string& baseName);
bool utilRemoveFileSpec(std::string& path);
int utilStringCompareCaseInsensitive(const char* lhs, const char* rhs);
std::uint64_t utilGetCurrTime();
bool utilPathExists(const std::string& path);
void* utilGetPool();
void utilReleasePool(void* pool);
