// Helpers of log rotation: the archive's name and its contents.
//
// `Segmenting.cpp` also defines the members of `LogTargetDefault` that rotate the log.

#pragma once

#include <string>

namespace tarn {

// Copies a file and replaces `to`. On failure removes the incomplete copy and returns false.
bool copyContentOfFileToFile(const std::string& from, const std::string& to);

// Inserts the current local date and time before the extension. The extension follows the last "." of the whole path.
// Always returns true.
//   "/logs/Kelvo.log" => "/logs/Kelvo 03-07-2014 16-05-09.log"
//   "/logs/Kelvo"     => "/logs/Kelvo 03-07-2014 16-05-09."
bool appendTimeStampToFile(std::string& path);

}  // namespace tarn
