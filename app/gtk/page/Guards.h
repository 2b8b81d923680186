// Restricts what a page may do: no access to the machine, nothing outside its own area.
//
// - Denied without a prompt: every permission (location, camera, microphone, notifications and others), file and color
//   choosers, full screen, and printing, whose dialog would outlive the run.
// - The context menu has only editing commands.
// - Nothing that WebKit draws for a page can cover the strip: no tooltips, no large cursors; bubbles stay below the
//   strip, and are hidden while the page is disabled for a prompt.
// - Nothing can be dragged out of a page or dropped on it.
// Main thread.

#pragma once

#include <webkit2/webkit2.h>

// Call once, before `view` is realized.
void connectGuards(WebKitWebView* view);

// Cancels each drag that starts at `widget`. After connectGuards() nothing of it is drawn.
void refuseDrags(GtkWidget* widget);
