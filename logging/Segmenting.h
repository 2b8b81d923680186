// The steps of cutting a log file that stand by themselves.

#pragma once

#include <string>

namespace tarn {

// Copies a file; what `to` held is lost. On failure no unfinished copy stays behind.
bool copyContentOfFileToFile(const std::string& from, const std::string& to);

// Puts the present date and time before the extension, which is what follows the last "." of the whole path; always
// true.
//   "/logs/Kelvo.log" => "/logs/Kelvo 03-07-2014 16-05-09.log"   "/logs/Kelvo" => "/logs/Kelvo 03-07-2014 16-05-09."
bool appendTimeStampToFile(std::string& path);

}  // namespace tarn
