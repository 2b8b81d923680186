// The built-in page that the window shows until the sign-in page arrives, and the address that it is loaded under.
//
// The page is one line of HTML without a document type: quirks mode accepts its unit-less sizes. Its image, a 64 x 64
// animated GIF of 1,949 bytes, is made at build time by spinner/MakeSpinner.cpp.

#pragma once

#include <string>

extern const std::string spinnerHTMLSource;

// The address under which the spinner page finishes, empty until `SignInFlow::launch` sets it. A shell whose platform
// has a form of its own for the address puts that in its place.
extern std::string spinnerHTMLBaseURL;

// The path of the page, which need not exist: a sibling of the bundle, since no separator is put between them.
//   "/opt/kelvo"  => "/opt/kelvospinner_html.html"
std::string spinnerPagePath(const std::string& bundlePath);

// "file://" and the percent-escaped path (RFC 3986, section 2.1). Letters, digits and the marks that may stand in a
// path (section 3.3) are kept; everything else is escaped byte for byte in capitals, "?", "#", "%" and brackets
// included, so that a web view takes the whole text as a path and gives it back unchanged.
//   "/a b#1"  => "file:///a%20b%231"
std::string spinnerPageURL(const std::string& path);
