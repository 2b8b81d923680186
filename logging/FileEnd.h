// Appends to a shared file, and knows whether it ends with a whole line, at the cost of one cheap call for a file that
// only we write.
//
// Used while the file's lock is held, by one thread at a time. A file that cannot be read counts as ending well.

#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "platform/UniqueFd.h"

namespace tarn {

class FileEnd {
 public:
  // The file must exist; one that may only be written is appended to all the same. False when it cannot be opened.
  bool open(const std::string& path);
  void close();

  // Whether the last byte is something other than a newline.
  //   "a\n" => false   "a\nb" => true   "" => false
  bool isInsideLine();

  // Appends text that ends with a newline, in one write and right after an `isInsideLine`. False when it did not become
  // whole; nothing is tried again.
  bool append(std::string_view text);

 private:
  static constexpr off_t unknown = -1;

  platform::UniqueFd file_;
  off_t endOfLine_ = unknown;  // where the file ended when it was last known to end with a whole line
};

}  // namespace tarn
