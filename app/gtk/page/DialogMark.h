// Recognizes the script dialogs of the page's own site. WebKit does not report which frame shows a dialog.
//
// - A script in the page and in every frame of its origin puts a secret text in front of the message of each dialog.
// - The script does not do that in a frame of another origin, and such a frame has no access to the secret. Its dialogs
//   carry no mark, nor do those of a document in which the script has not run.
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <optional>
#include <string>

class DialogMark {
 public:
  // Adds the script to `content`. Call before the first page is loaded.
  explicit DialogMark(WebKitUserContentManager* content);

  // Returns the message without the mark; nothing if it has none.
  std::optional<std::string> unmarked(const std::string& message) const;

 private:
  std::string mark_;
};
