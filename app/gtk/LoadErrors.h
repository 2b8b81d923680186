// The error codes of the Cocoa URL loading system for WebKitGTK's errors, so that the log and the flow read the same on
// every platform. Plain C++.

#pragma once

#include <string>

#include "app/gtk/LoadEvents.h"

// Codes of NSURLError that the shell itself hands out.
constexpr int kLoadTimedOut = -1001;
constexpr int kLoadUnsupportedAddress = -1002;
constexpr int kLoadRestrictedPort = 103;  // WebKitErrorDomain's, as in WebKitPolicyError
constexpr int kLoadUnknownError = -1;

// The code for `error` of a load of `address`. WebKit gives two failures neither a domain nor a code, a redirect to a
// scheme that it cannot load and a redirect too many: the scheme of `address` tells them apart. An error that is not in
// the table is -1, unknown.
//   {"g-io-error-quark", 39}, any                 => -1004, cannot connect
//   {"WebKitPolicyError", 102}, any               => 102, numbers of this domain are the same on both sides
//   {"", 0}, "cb:/done"                           => -1002, unsupported address
//   {"", 0}, "http://host/"                       => -1007, too many redirects
int cocoaErrorCode(const LoadError& error, const std::string& address);

// A number that stands for an error domain in the log, the same for the same domain within a build.
int domainNumber(const std::string& domain);
