// The pages of the example site.

#pragma once

#include <string>

namespace tools {

// Colors that identify parts of a page in a screenshot, 0xRRGGBB. Nothing else on a page has them.
constexpr unsigned kSignInButton = 0x1f6feb;
constexpr unsigned kOrganizationLink = 0xe6e0f4;
constexpr unsigned kEnterpriseButton = 0x6f42c1;
constexpr unsigned kFocusRing = 0xf0a020;  // around the focused button or link

// A form for user name and password, posted with `state` to the page's own address, and a link to `enterpriseAddress`.
std::string signInPage(const std::string& state, const std::string& enterpriseAddress);

// The organization's form, for the larger window.
std::string enterprisePage();

// A page with a title and a text.
std::string notePage(const std::string& title, const std::string& text);

}  // namespace tools
