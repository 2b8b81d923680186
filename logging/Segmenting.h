// Helpers of log rotation: the archives' names and contents.
//
// `Segmenting.cpp` also defines the members of `LogTargetDefault` that rotate the log.

#pragma once

#include <chrono>
#include <ctime>
#include <string>

#include "platform/OwnersFolder.h"

namespace tarn {

// Copies a file and replaces `to`. On failure removes the incomplete copy and returns false.
bool copyContentOfFileToFile(const std::string& from, const std::string& to);

// Inserts the current local date and time before the extension. The extension follows the last "." of the whole path.
// Always returns true.
//   "/logs/Kelvo.log" => "/logs/Kelvo 03-07-2014 16-05-09.log"
//   "/logs/Kelvo"     => "/logs/Kelvo 03-07-2014 16-05-09."
bool appendTimeStampToFile(std::string& path);

// Chooses the names of a log's archives.
//
// - A second rotation of this object in the same second gets the same name, and replaces the archive.
// - A name that is taken by any other archive is not used. The clock may have been set back, or the hour may be that
// after
//   the end of the summer time.
class ArchiveNames {
 public:
  // Returns a name for the functions of `folder`. Waits at most 1.5 seconds for a second whose name is free; returns ""
  // if there is none, and if the archive would be in another folder.
  std::string next(const std::string& log, const platform::OwnersFolder& folder);

 private:
  using Clock = std::chrono::steady_clock;

  bool isLast(const std::string& archive) const;

  std::string last_;
  std::time_t lastSecond_ = 0;
  Clock::time_point lastTime_{};
};

}  // namespace tarn
