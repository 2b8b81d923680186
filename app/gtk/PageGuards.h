// What a page may not do in this window, whoever it is: no way in to the machine, no way out of its own area.
//
// Denied without asking: place, camera, microphone, notifications and every other permission; choosing files and
// colours, for a sign-in needs neither; full screen; printing, whose dialog would outlive the run. The context menu
// keeps its editing commands and nothing else. What WebKit draws outside the page's area on a page's behalf cannot
// reach the strip: tips are not shown, large mouse pointers are replaced by the arrow, and bubbles and lists stay below
// it. Main thread.

#pragma once

#include <webkit2/webkit2.h>

// `view` must have been realized.
void guardPage(WebKitWebView* view);
