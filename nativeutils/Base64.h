#pragma once

#include <iterator>
#include <string>

template <typename InputIterator, typename OutputIterator>
OutputIterator Base64Encode(InputIterator begin, InputIterator end, OutputIterator out);
template <typename InputIterator, typename OutputIterator>
OutputIterator Base64Decode(InputIterator begin, InputIterator end, OutputIterator out, bool& ok);

bool utilEncodeDataInBase64(const char* data, int length, std::string& out);
bool utilDecodeBase64Data(const char* base64, int length, std::string& out);
bool utilCreateFileWithData(const void* data, int length, const std::string& filePath);
bool utilFlushFileBuffers(const std::string& filePath);
bool utilDecodeBase64AndCreateFileWithData(const char* base64, int length, const std::string& filePath);
bool utilCreateTempFileAtFolderWithBase64Data(const void* base64, int length, std::string& folderPath,
                                              const char* fileName, std::string& outFilePath);
bool utilGetDataFromFileAndEncodeBase64(const std::string& filePath, std::string& out);
bool utilCreateAndGetTempFolderPath(std::string& outFolderPath);
