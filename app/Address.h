// Decides what the sign-in window may do with an address, and what of it may be logged.
//
// - Schemes are compared without regard to case (RFC 3986, section 3.1).
// - Any bytes are accepted. Plain C++, does not throw.

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// `scheme` is lower-case and has no colon.
//   hasScheme("HTTPS://host/", "https") => true
//   hasScheme("httpx://host/", "http")  => false
bool hasScheme(const std::string& address, std::string_view scheme);

// http and https.
bool isWebAddress(const std::string& address);

// mailto and tel: a click on such a link opens another program, the page stays.
bool isContactAddress(const std::string& address);

// Web and contact addresses may be opened with the user's default programs. Other schemes could start any installed
// program.
bool mayOpenOutside(const std::string& address);

// Whether an enterprise page may send the main frame to `address`. Refused is what runs or is read inside the web
// engine: script, inline documents, the engine's own pages and, unless `page` is a file itself, files. An address of
// any other scheme is a request to another place, even if it fails. Control characters and spaces that the engine would
// remove (URL Standard, section 4.4) do not hide a scheme.
//   "https://host/", "https://host/start"           => true
//   "corp:/host", "https://host/start"              => true
//   "java\tscript:alert(1)", "https://host/start"   => false
//   "file:///etc/hosts", "file:///opt/start.html"   => true
bool mayFollow(const std::string& address, const std::string& page);

// Whether the address belongs to the web engine: resources and pages that are compiled into it. No site needs them.
bool isEngineAddress(const std::string& address);

// Percent-encodes a byte with upper-case digits (RFC 3986, section 2.1).
//   '#' => "%23"
std::string percentEncoded(char byte);

// Returns the form of an address that may be logged.
//
// - The password of a user info (RFC 3986, section 3.2.1) is written as "…".
// - The value of a parameter that carries a credential is written as "…", in the query and in the fragment. The names
//   are those of OAuth 2.0 (RFC 6749, 7521, 7523, 7636, 8628), OpenID Connect (Core, RP-Initiated and Back-Channel
//   Logout), SAML 2.0 bindings, CAS and common session, password and signature parameters. They are compared
//   percent-decoded and without regard to case. `state` and `nonce` are kept: they connect a response with its request
//   and grant nothing.
// - Of an address that begins with one of `redirects` the whole query and fragment are written as "…". An empty element
//   of `redirects` is ignored; case is ignored.
// - A value that contains an address with such a part, percent-encoded any number of times, is written as "…". So is a
//   value that is encoded more than eight times.
// - Control characters are percent-encoded.
// - An address with a JSON Web Token is returned with its credentials: the log replaces a line with such a token.
//
//   "https://user:pw@host/?CODE=1&state=2#id_token=3"  => "https://user:…@host/?CODE=…&state=2#id_token=…"
//   "https://host/?next=http%3A%2F%2Fi%2F%3Fcode%3D1"  => "https://host/?next=…"
//   "cb:/done?x=1", {"cb:/done"}                       => "cb:/done?…"
std::string loggableAddress(const std::string& address, std::initializer_list<std::string> redirects);
