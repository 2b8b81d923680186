// The spinner page: the built-in page that the window shows until the sign-in page loads, and its address.
//
// - One line of HTML without a document type: quirks mode accepts its unit-less sizes.
// - Its image is spinner.gif, embedded at build time: an animated GIF of 64 x 64 pixels and 1,949 bytes.

#pragma once

#include <string>

extern const std::string spinnerHTMLSource;

// The address that the spinner page reports when it has finished loading. Empty until `SignInFlow::launch` sets it. A
// shell whose platform writes the address differently replaces it.
extern std::string spinnerHTMLBaseURL;

// Returns the path of the page. No file needs to exist there. The file name is appended without a separator.
//   "/opt/kelvo"  => "/opt/kelvospinner_html.html"
std::string spinnerPagePath(const std::string& bundlePath);

// Returns "file://" and the percent-encoded path (RFC 3986, section 2.1).
//
// - Letters, digits and the other characters that a path may contain (section 3.3) are unchanged.
// - Every other byte is encoded with upper-case digits, including "?", "#", "%" and brackets. A web view then parses
//   the whole text as a path and reports it unchanged.
//
//   "/a b#1"  => "file:///a%20b%231"
std::string spinnerPageURL(const std::string& path);
