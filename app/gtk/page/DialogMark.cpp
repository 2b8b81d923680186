#include "app/gtk/page/DialogMark.h"

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

DialogMark::DialogMark(WebKitUserContentManager* content) : content_(content) {
  renew();
  committed();
}

void DialogMark::renew() {
  if (script_) webkit_user_content_manager_remove_script(content_, script_.get());
  next_ = newMark();
  const Owned<char, g_free> source(g_strdup_printf(kScript, next_.c_str()));
  script_.reset(webkit_user_script_new(source.get(), WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                       WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
  webkit_user_content_manager_add_script(content_, script_.get());
}

std::optional<std::string> DialogMark::unmarked(const std::string& message) const {
  for (const std::string& mark : {shown_, next_}) {
    if (message.rfind(mark, 0) == 0) return message.substr(mark.size());
  }
  return std::nullopt;
}
