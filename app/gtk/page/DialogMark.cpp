#include "app/gtk/page/DialogMark.h"

#include "app/gtk/Glib.h"

namespace {

// A frame of another origin cannot replace `top`, and reading a document through it throws. Only the page's own origin
// gets past that line, so nothing of another site can read the mark.
constexpr char kScript[] = R"(((mark) => {
  'use strict';
  try {
    void window.top.document;
  } catch {
    return;
  }
  const { alert, confirm, prompt } = window;
  window.alert = (...texts) => alert(texts.length === 0 ? mark : `${mark}${texts[0]}`);
  window.confirm = (text = '') => confirm(`${mark}${text}`);
  window.prompt = (text = '', initial = '') => prompt(`${mark}${text}`, initial);
})('%s');)";

std::string newMark() {
  return std::string(Owned<char, g_free>(g_uuid_string_random()).get());
}

}  // namespace

DialogMark::DialogMark(WebKitUserContentManager* content) : mark_(newMark()) {
  const Owned<char, g_free> source(g_strdup_printf(kScript, mark_.c_str()));
  const Owned<WebKitUserScript, webkit_user_script_unref> script(
      webkit_user_script_new(source.get(), WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(content, script.get());
}

std::optional<std::string> DialogMark::unmarked(const std::string& message) const {
  if (message.rfind(mark_, 0) != 0) return std::nullopt;
  return message.substr(mark_.size());
}
