// Lets a page write the clipboard only when the user copies.
//
// - WebKit writes the clipboard for a page after any click, and the primary selection at any time. It has neither a
//   setting nor a signal to prevent that. It calls gtk_clipboard_set_with_data, which this module defines in place of
//   GTK's function; GTK itself keeps calling its own.
// - A page never writes the primary selection, not even for text that the user selects.
// Main thread.

#pragma once

// The user copies: the page may write the clipboard once, within five seconds.
void permitCopy();
