// Covers the page's area from the commit of a page of another origin until that page has painted.
//
// - Until then WebKit shows the pixels of the page before, which the strip would attribute to the new site.
// - While the area is covered, the page gets no input.
// - A page that never paints stays covered.
// - The program's own page needs no cover: nothing on it can mislead.
// Main thread.

#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <string>

class Cover {
 public:
  // Puts `view`, which loads with `content`, into a new container. Both must outlive this object.
  Cover(WebKitWebView* view, WebKitUserContentManager* content);
  ~Cover();

  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;

  // The container: the page's area of the window.
  GtkOverlay* area() const { return area_; }

  // A page has been committed. `isOwn`: it is the program's own page.
  void committed(const std::string& address, bool isOwn);

 private:
  static void onPainted(WebKitUserContentManager*, WebKitJavascriptResult* result, Cover* self);
  void setVisible(bool visible);

  GtkWidget* view_;
  WebKitUserContentManager* content_;
  GtkOverlay* area_;
  GtkWidget* cover_;
  std::string origin_;  // of the page that is shown or covered
  bool isOwn_ = true;   // it is the program's own page
};
