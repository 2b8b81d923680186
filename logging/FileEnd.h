// Knows whether a shared file ends with a whole line, at the cost of one cheap call for a file that only we write.
//
// Used while the file's lock is held, by one thread at a time. A file that cannot be read counts as ending well.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "platform/UniqueFd.h"

namespace tarn {

class FileEnd {
 public:
  void open(const std::string& path);

  // Whether the last byte is something other than a newline.
  //   "a\n" => false   "a\nb" => true   "" => false
  bool isInsideLine();

  // We appended `bytes` since the last `isInsideLine`, a newline last.
  void movedBy(std::size_t bytes) { endOfLine_ += static_cast<off_t>(bytes); }

  // We may have appended something, and nobody knows what.
  void forget() { endOfLine_ = unknown; }

 private:
  static constexpr off_t unknown = -1;

  platform::UniqueFd file_;
  off_t endOfLine_ = unknown;  // where the file ended when it was last known to end with a whole line
};

}  // namespace tarn
