// Maps WebKitGTK's errors to the error codes of the Cocoa URL loading system, which the log and the flow use on every
// platform. Plain C++.

#pragma once

#include <string>

#include "app/gtk/load/LoadEvent.h"

// Codes that `LoadTracker` reports itself.
constexpr int kLoadTimedOut = -1001;
constexpr int kLoadUnsupportedAddress = -1002;
constexpr int kLoadRestrictedPort = 103;  // of WebKitErrorDomain, as in WebKitPolicyError
constexpr int kLoadUnknownError = -1;

// Returns the code for `error` of a load of `address`. An error that is not in the table has the code -1.
//
// WebKit gives two failures an empty domain and the code 0. The scheme of `address` tells them apart.
//   {"g-io-error-quark", 39}, any    => -1004 (cannot connect)
//   {"WebKitPolicyError", 102}, any  => 102   (same numbers in both systems)
//   {"", 0}, "cb:/done"              => -1002 (redirect to an unsupported scheme)
//   {"", 0}, "http://host/"          => -1007 (too many redirects)
int cocoaErrorCode(const LoadError& error, const std::string& address);

// Returns the number that is logged for an error domain. It is the same for the same domain within a build.
int domainNumber(const std::string& domain);
