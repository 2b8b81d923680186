#include "app/gtk/page/MainFrame.h"

#include "app/gtk/Glib.h"
#include "app/gtk/page/Site.h"

namespace {

// WebKit leaves out the default port of an address, but not that of a request for a password.
int portOf(WebKitSecurityOrigin* origin) {
  const int port = webkit_security_origin_get_port(origin);
  if (port != 0) return port;
  return g_strcmp0(webkit_security_origin_get_protocol(origin), "https") == 0 ? 443 : 80;
}

bool isOriginOf(const std::string& address, WebKitSecurityOrigin* origin) {
  const Owned<WebKitSecurityOrigin, webkit_security_origin_unref> own(
      webkit_security_origin_new_for_uri(address.c_str()));
  const std::string host = bracketed(orEmpty(webkit_security_origin_get_host(own.get())));
  return !host.empty() && host == bracketed(orEmpty(webkit_security_origin_get_host(origin))) &&
         g_strcmp0(webkit_security_origin_get_protocol(own.get()), webkit_security_origin_get_protocol(origin)) == 0 &&
         portOf(own.get()) == portOf(origin);
}

}  // namespace

bool MainFrame::isAt(WebKitSecurityOrigin* origin) const {
  return isOriginOf(shown_, origin) || isOriginOf(requested_, origin);
}
