#include "tests/tools/site/Pages.h"

#include <glib.h>

#include <cstdio>

#include "platform/linux/Glib.h"

namespace tools {
namespace {

constexpr char kStyle[] = R"(
* { box-sizing: border-box; }
body { margin: 0; height: 100vh; display: flex; align-items: center; justify-content: center;
       font: 15px/1.5 "DejaVu Sans", sans-serif; color: #1f2733; background: #eef1f6; }
main { width: 360px; padding: 36px 40px; background: #fff; border-radius: 14px;
       box-shadow: 0 1px 2px #0002, 0 12px 32px #1f273318; }
h1 { margin: 0 0 4px; font-size: 22px; }
p { margin: 0 0 22px; color: #667082; }
label { display: block; margin-bottom: 16px; font-size: 13px; color: #455061; }
label input { display: block; width: 100%; margin-top: 5px; padding: 9px 12px; font: inherit; color: inherit;
              border: 1px solid #c6cdd8; border-radius: 8px; outline: none; }
label input:focus { border-color: #45506a; }
button, a { display: block; width: 100%; margin-top: 6px; padding: 11px; font: inherit; font-weight: bold;
            text-align: center; text-decoration: none; color: #fff; background: var(--color);
            border: 0; border-radius: 8px; }
button:focus, a:focus { outline: 3px solid var(--focus); outline-offset: 2px; }
a { margin-top: 12px; font-weight: normal; color: #3b2a68; }
.wide { display: flex; width: 680px; padding: 0; overflow: hidden; }
.wide aside { width: 260px; padding: 40px 32px; color: #fff; background: #32245a; }
.wide aside p { color: #d5cbee; }
.wide section { flex: 1; padding: 40px; }
)";

constexpr char kFields[] = R"(
<label>User name <input name="user" autocomplete="username" autofocus required></label>
<label>Password <input name="password" type="password" autocomplete="current-password" required></label>
)";

std::string escaped(const std::string& text) {
  return platform::Owned<char, g_free>(g_markup_escape_text(text.c_str(), static_cast<gssize>(text.size()))).get();
}

std::string notation(unsigned color) {
  char text[8];
  std::snprintf(text, sizeof text, "#%06x", color & 0xffffffu);
  return text;
}

std::string style(unsigned color) {
  return " style=\"--color: " + notation(color) + "\"";
}

std::string document(const std::string& title, const std::string& body) {
  return "<!DOCTYPE html><html lang=\"en\"><head><meta charset=\"utf-8\"><title>" + title + "</title><style>" + kStyle +
         ":root { --focus: " + notation(kFocusRing) + "; }</style></head><body>" + body + "</body></html>";
}

std::string button(const char* text, unsigned color) {
  return "<button" + style(color) + ">" + text + "</button>";
}

std::string link(const char* text, unsigned color, const std::string& address) {
  return "<a" + style(color) + " href=\"" + escaped(address) + "\">" + text + "</a>";
}

}  // namespace

std::string signInPage(const std::string& state, const std::string& enterpriseAddress) {
  return document("Sign in", "<main><h1>Welcome back</h1><p>Sign in to go on.</p><form method=\"post\">" +
                                 std::string(kFields) + "<input type=\"hidden\" name=\"state\" value=\"" +
                                 escaped(state) + "\">" + button("Sign in", kSignInButton) + "</form>" +
                                 link("Sign in with your organization", kOrganizationLink, enterpriseAddress) +
                                 "</main>");
}

std::string enterprisePage() {
  return document("Enterprise sign-in",
                  "<main class=\"wide\"><aside>"
                  "<h1>Northwind Mills</h1><p>Your organization signs you in.</p></aside>"
                  "<section><h1>Staff sign-in</h1><p>Use the account of your workplace.</p><form method=\"post\">" +
                      std::string(kFields) + button("Go on", kEnterpriseButton) + "</form></section></main>");
}

std::string notePage(const std::string& title, const std::string& text) {
  return document(title, "<main><h1>" + title + "</h1><p>" + text + "</p></main>");
}

}  // namespace tools
