// Appends lines to a file that other processes append to as well.
//
// - Not thread-safe. Used while the caller holds the file's `BinaryLock`.
// - Detects an unfinished last line. If only this object writes to the file, that costs one `lseek`.
// - A file that cannot be read counts as ending with a newline.

#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "platform/OwnersFolder.h"
#include "platform/UniqueFd.h"

namespace tarn {

// Opens a log file for appending, write-only if it cannot be read. Creates a missing file with mode 0666 less the
// umask.
//
// - Fails for a named pipe, without waiting for a reader.
// - If another user may replace the file, it must be a regular file with one link, and its owner that of the folder or
//   the super-user.
platform::UniqueFd openLog(const platform::OwnersFolder& folder);

class AppendFile {
 public:
  // Opens an existing file, write-only if it cannot be read. Returns false if it cannot be opened.
  bool open(const std::string& path);

  // Uses a file that `openLog` opened.
  bool use(platform::UniqueFd file);
  void close();

  // Returns whether the file is the one that the folder's path leads to.
  bool isAt(const platform::OwnersFolder& folder) const;

  bool isOpen() const { return static_cast<bool>(file_); }
  int get() const { return file_.get(); }

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
