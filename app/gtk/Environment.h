// What the program settles with its surroundings before it does anything else. Call once each, first thing, in this
// order; neither needs a display.

#pragma once

// Opens /dev/null for each closed standard descriptor, so that no file opened later takes its number and receives what
// a library prints; and ignores SIGPIPE, so that printing to a reader who is gone does not end the program.
void settleStandardStreams();

// Keeps libraries from leaving files behind and from opening the pages to others, and the locale from changing numbers
// and times: the log file is shared, and its lines read the same whoever writes them. Letters and words are as the
// person has them.
void settleLibraries();
