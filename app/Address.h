// Decides by an address's scheme what the sign-in window may do with it.
//
// Schemes are compared without regard to case (RFC 3986, section 3.1). Plain C++.

#pragma once

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
