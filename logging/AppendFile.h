// Appends lines to a file that other processes append to as well.
//
// - Not thread-safe. Used while the caller holds the file's `BinaryLock`.
// - Detects an unfinished last line. If only this object writes to the file, that costs one `lseek`.
// - A file that cannot be read counts as ending with a newline.

#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "platform/UniqueFd.h"

namespace tarn {

class AppendFile {
 public:
  // Opens an existing file, write-only if it cannot be read. Returns false if it cannot be opened.
  bool open(const std::string& path);
  void close();

  // Returns whether the file's last byte is not a newline.
  //   "a\n"  => false
  //   "a\nb" => true
  //   ""     => false
  bool isInsideLine();

  // Appends `text` in one write. Does not retry; returns false if not all of it was written.
  // `text` ends with a newline, and `isInsideLine` was called right before.
  bool append(std::string_view text);

 private:
  static constexpr off_t kUnknown = -1;

  platform::UniqueFd file_;
  off_t lineEnd_ = kUnknown;  // file size when the file was last known to end with a newline
};

}  // namespace tarn
