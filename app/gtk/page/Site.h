// The site that a page belongs to, and the text that names it to the user.
//
// - Only the host identifies a page. User info and port are never shown.
// - An international name is shown in its own script only if it cannot be confused with another name. Otherwise it
//   keeps its ASCII form (RFC 5890). It is shown if each label
//   - has only letters that Unicode Technical Standard #39 recommends for identifiers (section 3.1),
//   - is of one script (section 5.2) and does not look like an ASCII word (section 4; "ĸ" and the Cyrillic
//     "к" count as k),
//   - has no mark at a Latin letter that is easily missed and without which it would be another label: a mark below or
//     through the letter, or a single dot above it ("bạnk", "faceboøk"). Other marks above a letter are shown
//     ("bücher", "café").
// Main thread; needs no display.

#pragma once

#include <string>

struct Site {
  enum class Kind {
    kNone,       // no page but the program's own
    kEncrypted,  // from `host`, over TLS
    kLoopback,   // from this machine, over plain HTTP without a proxy
    kPlain,      // from `host`, over plain HTTP
    kFile,       // a file of this machine, named by the launcher
    kNowhere,    // a page without a host: "about:blank", "data:…"
  };

  Kind kind = Kind::kNone;
  std::string host;  // in the form to show
};

// `address` is the address of a committed page, as WebKit writes it. `overTls`: it has a valid certificate. Queries the
// system's proxy settings for a page of this machine.
//   "https://user@xn--bcher-kva.example:8443/", true   => kEncrypted, "bücher.example"
//   "http://[::1]/", false                             => kLoopback, "[::1]"
Site siteOf(const std::string& address, bool overTls);

// Puts an IPv6 address in brackets (RFC 3986, section 3.2.2). Other hosts are returned unchanged.
//   "2001:db8::1"  => "[2001:db8::1]"
std::string bracketed(const std::string& host);

// Returns a host in the form to show. A host that could be confused with another is returned unchanged.
//   "xn--bcher-kva.example"   => "bücher.example"
//   "xn--80ak6aa92e.com"      => "xn--80ak6aa92e.com"      (Cyrillic letters that look like a Latin word)
//   "xn--paypa-o7a.example"   => "xn--paypa-o7a.example"   ("paypał")
std::string displayHost(const std::string& host);

// Keeps the labels of a host in order from left to right, whatever their script's direction (Unicode Standard Annex #9,
// section 4.3, HL4). A right-to-left label must not move the end of the name, which identifies the owner.
std::string leftToRight(const std::string& host);

// Returns a host as the text of a prompt contains it: as leftToRight(), and only the last 80 characters of a longer
// one. Its end identifies the owner, and a prompt must have room for its other texts.
std::string inPrompt(const std::string& host);
