// Recognizes the script dialogs of the page's own site. WebKit does not report which frame shows a dialog.
//
// - A script in the page and in every frame of its origin puts a secret text in front of the message of each dialog.
// - The script does not do that in a frame of another origin, and such a frame has no access to the secret. Its dialogs
//   carry no mark, nor do those of a document in which the script has not run.
// - A page can read the secret: it may replace `alert` in a frame before the script runs there. So each page has its
//   own secret, and a page that was shown before cannot give it to a frame.
//
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

#include <optional>
#include <string>

#include "app/gtk/Glib.h"

class DialogMark {
 public:
  // Adds the script to `content`, which must outlive this object. Call before the first page is loaded.
  explicit DialogMark(WebKitUserContentManager* content);

  // The server has responded with another page: it gets a new secret. Call before WebKit commits the page.
  void renew();

  // The page is committed: the secret of the page before is no longer valid.
  void committed() { shown_ = next_; }

  // Returns the message without the mark; nothing if it has none.
  std::optional<std::string> unmarked(const std::string& message) const;

 private:
  WebKitUserContentManager* content_;
  Owned<WebKitUserScript, webkit_user_script_unref> script_;
  std::string shown_;  // the secret of the page that is shown
  std::string next_;   // of documents that are loaded from now on
};
