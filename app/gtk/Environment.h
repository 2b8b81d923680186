// What the program settles with its surroundings before it does anything else. Call once each, first thing, in this
// order; only the third needs an open display.

#pragma once

#include <functional>

// Opens /dev/null for each closed standard descriptor, so that no file opened later takes its number and receives what
// a library prints; and ignores SIGPIPE, so that printing to a reader who is gone does not end the program.
void settleStandardStreams();

// Keeps libraries from leaving files behind and from opening the pages to others, and the locale from changing numbers
// and times: the log file is shared, and its lines read the same whoever writes them. Letters and words are as the
// person has them.
void settleLibraries();

// Calls `onLost` when the X server goes away, as at the end of a session, and then ends the process in order, with
// status 1. GTK would end it on the spot. Nothing to do elsewhere.
void settleDisplay(std::function<void()> onLost);
