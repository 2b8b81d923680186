// The texts of the example site's pages.

#pragma once

#include <string>

namespace tools {

// Colours by which a page and its parts can be found by eye, 0xRRGGBB: nothing else on a page has them.
constexpr unsigned kSignInButton = 0x1f6feb;
constexpr unsigned kOrganisationLink = 0xe6e0f4;
constexpr unsigned kEnterpriseButton = 0x6f42c1;
constexpr unsigned kFocusRing = 0xf0a020;  // around the button or link that the Tab key has reached

// A form for user name and password that is posted to the page's own address, together with `state`. Below it a link,
// drawn as a button, leads to `enterpriseAddress`.
std::string signInPage(const std::string& state, const std::string& enterpriseAddress);

// The form of the organisation, on a page that is made for the larger window.
std::string enterprisePage();

// A page that says one thing.
std::string notePage(const std::string& title, const std::string& text);

}  // namespace tools
