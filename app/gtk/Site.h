// Whom a page belongs to, in words that a person can trust.
//
// The host alone speaks for a page: user info and port of an address are never shown, and an international name is
// shown in its own script only where it cannot be taken for another (Unicode Technical Standard #39, sections 4
// and 5.2; otherwise its labels stay in the ASCII form of RFC 5890). Main thread; needs no display.

#pragma once

#include <string>

struct Site {
  enum class Kind {
    kNone,       // no page but the program's own
    kEncrypted,  // from `host`, over TLS
    kLoopback,   // from this machine, over plain HTTP
    kPlain,      // from `host`, over plain HTTP
    kFile,       // a file of this machine, which the launcher has named
    kNowhere,    // a page that belongs to no host: "about:blank", "data:…"
  };

  Kind kind = Kind::kNone;
  std::string host;  // as it may be shown
};

// `address` is that of a page that has arrived, as WebKit writes it; `overTls` whether it came under a valid
// certificate.
//   "https://user@xn--bcher-kva.example:8443/", true   => kEncrypted, "bücher.example"
//   "http://[::1]/", false                             => kLoopback, "[::1]"
Site siteOf(const std::string& address, bool overTls);

// A host as it stands in an address: an IPv6 address goes in brackets (RFC 3986, section 3.2.2).
//   "2001:db8::1"  => "[2001:db8::1]"
std::string bracketed(const std::string& host);

// A host in the form that may be shown; any it cannot vouch for comes back as it is.
//   "xn--bcher-kva.example"   => "bücher.example"
//   "xn--80ak6aa92e.com"      => "xn--80ak6aa92e.com"   (Cyrillic letters that look like a Latin word)
std::string displayHost(const std::string& host);

// What the strip says of a site. `warning` is empty where there is nothing to warn of; `spoken` is all of it as one
// sentence, for a screen reader.
struct SiteWords {
  const char* icon = nullptr;
  std::string host;
  std::string warning;
  std::string spoken;
};

SiteWords wordsFor(const Site& site);

// The host with its labels kept in their order from left to right, whatever their letters' direction (Unicode Standard
// Annex #9, section 4.3, HL4): a right-to-left label must not move the end of the name, which says whose it is.
std::string leftToRight(const std::string& host);
