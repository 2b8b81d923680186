// Serves the example sign-in site on the loopback until it is stopped.
//
// When it is ready, prints the addresses for the sign-in window's options, one per line:
//   sign-in http://127.0.0.1:40123/signin?state=7f3a
//   redirect http://127.0.0.1:40123/done
//   enterprise http://127.0.0.1:40123/enterprise/start

#include <glib.h>

#include <exception>
#include <iostream>

#include "tests/tools/site/SignInSite.h"

int main() try {
  const tools::SignInSite site;
  std::cout << "sign-in " << site.signInAddress() << "\nredirect " << site.redirectAddress() << "\nenterprise "
            << site.enterpriseAddress() << std::endl;
  while (true)
    g_main_context_iteration(nullptr, TRUE);
} catch (const std::exception& problem) {
  std::cerr << "signin-site: " << problem.what() << '\n';
  return 1;
}
