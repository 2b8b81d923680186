// The texts of the example site's pages.

#pragma once

#include <string>

namespace examples {

// The colour of a page's button, 0xRRGGBB. Nothing else on the page has it, so that a button can be found by eye.
constexpr unsigned kSignInColour = 0x1f6feb;
constexpr unsigned kEnterpriseColour = 0x6f42c1;

// A form for user name and password that is posted to the page's own address, together with `state`. Below it a link
// leads to `enterpriseAddress`.
std::string signInPage(const std::string& state, const std::string& enterpriseAddress);

// The form of the organisation, on a page that is made for the larger window.
std::string enterprisePage();

// A page that says one thing.
std::string notePage(const std::string& title, const std::string& text);

}  // namespace examples
