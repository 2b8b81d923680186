// The texts of the example site's pages.

#pragma once

#include <string>

namespace examples {

// The colours of the buttons, 0xRRGGBB. Nothing else on a page has them, so that a button can be found by eye.
constexpr unsigned kSignInColour = 0x1f6feb;
constexpr unsigned kOrganisationColour = 0xe6e0f4;
constexpr unsigned kEnterpriseColour = 0x6f42c1;

// A form for user name and password that is posted to the page's own address, together with `state`. Below it a link,
// drawn as a button, leads to `enterpriseAddress`.
std::string signInPage(const std::string& state, const std::string& enterpriseAddress);

// The form of the organisation, on a page that is made for the larger window.
std::string enterprisePage();

// A page that says one thing.
std::string notePage(const std::string& title, const std::string& text);

}  // namespace examples
