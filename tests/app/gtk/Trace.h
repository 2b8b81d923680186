// The text form of load events, in which traces are recorded and replayed. One event per line.
//
//   {kCommitted, "http://site/"}                          => "committed http://site/"
//   {kResourceStarted, "http://site/frame", 2}            => "resource 2 http://site/frame"
//   {kFailed, "http://site/", 0, {"g-io-error-quark", 39}} => "failed http://site/ g-io-error-quark 39"
//   {kFailed, "cb:/done", 0, {"", 0}}                     => "failed cb:/done - 0"

#pragma once

#include <string>

#include "app/gtk/load/LoadEvent.h"

std::string lineOf(const LoadEvent& event);

// Throws std::invalid_argument if the line is not an event.
LoadEvent eventOf(const std::string& line);
