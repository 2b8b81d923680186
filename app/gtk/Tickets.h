// Decides which servers may get a Kerberos ticket of the user (RFC 4559).
//
// - Only with a ticket-granting ticket that is valid now, in a credential cache of the user.
// - Only servers of the ticket's realm, over https: the pages that the launcher names, and the hosts that the section
//   [domain_realm] of krb5.conf lists without a leading dot. Its longest match decides on the realm of a host; without
//   one, a host below the realm's name in lower case belongs to the realm.
// - libsoup compares host and port literally. It has no form for "every host of a domain", so a server that is neither
//   named nor listed gets no ticket.
// - A server that is reached through a proxy is left out: libsoup would also send the proxy a ticket, unencrypted.
// Main thread.

#pragma once

#include <string>
#include <vector>

// Returns the addresses of the servers, each once. Empty without a ticket. Reads the system's proxy settings for at
// most ten seconds: a configuration script may have to be fetched, on which WebKit would wait too.
//   {"https://sso.example.com/start"}, realm EXAMPLE.COM   => {"https://sso.example.com:443"}
//   {"https://evilexample.com/"}, realm EXAMPLE.COM        => {}
//   {"http://sso.example.com/"}, realm EXAMPLE.COM         => {}
std::vector<std::string> serversForTickets(const std::vector<std::string>& pages);

// Sets the environment of WebKit's network process: libsoup sends tickets to these servers and to no other, and SPNEGO
// offers only the mechanisms that are compiled into the Kerberos library. Call before WebKit starts a process.
void permitTickets(const std::vector<std::string>& servers);
