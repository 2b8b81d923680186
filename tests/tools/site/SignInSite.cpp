#include "tests/tools/site/SignInSite.h"

#include <glib.h>

#include <map>

#include "platform/linux/Glib.h"
#include "tests/tools/site/Pages.h"

namespace tools {
namespace {

std::string valueOf(const std::map<std::string, std::string>& values, const std::string& name) {
  const auto found = values.find(name);
  return found == values.end() ? "" : found->second;
}

std::string newCode() {
  return platform::Owned<char, g_free>(g_uuid_string_random()).get();
}

std::string percentEncoded(const std::string& text) {
  return platform::Owned<char, g_free>(g_uri_escape_string(text.c_str(), nullptr, FALSE)).get();
}

}  // namespace

SignInSite::SignInSite() {
  server_.serve("/signin", [this](const Request& request) { return signIn(request); });
  server_.serve("/enterprise/signin", [this](const Request& request) { return enterpriseSignIn(request); });
  server_.serve("/enterprise/start", page(notePage("One moment", "Your organization's sign-in opens.")));
  server_.serve("/done", page(notePage("Signed in", "You may close this window.")));
}

std::string SignInSite::enterpriseStartAddress() const {
  return enterpriseAddress() + "?redirect_uri=" + server_.address("/enterprise/signin");
}

Response SignInSite::signIn(const Request& request) const {
  if (request.method == "POST") return signedIn(valueOf(request.fields, "state"));
  return page(signInPage(valueOf(request.query, "state"), enterpriseStartAddress()));
}

Response SignInSite::enterpriseSignIn(const Request& request) const {
  if (request.method == "POST") return signedIn("enterprise");
  return page(enterprisePage());
}

Response SignInSite::signedIn(const std::string& state) const {
  return redirectTo(redirectAddress() + "?code=" + newCode() + "&state=" + percentEncoded(state));
}

}  // namespace tools
