// What may be done with an address, by its scheme alone. Plain C++.

#pragma once

#include <string>
#include <string_view>

// `scheme` in lower case and without its colon; the address may write it either way.
//   hasScheme("HTTPS://host/", "https")  => true
bool hasScheme(const std::string& address, std::string_view scheme);

// Whether an address may leave the window for the person's own programs: to read in a browser, to write a mail, to call
// a number. Others could start anything that is installed (RFC 3986, section 3.1, leaves schemes open to everybody).
bool mayOpenOutside(const std::string& address);
