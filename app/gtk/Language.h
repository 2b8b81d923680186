// The language of the texts that the user sees: gettext with the domain "svo-signin".
//
// - The user's locale for messages selects it: LANGUAGE, LC_ALL, LC_MESSAGES and LANG. A text without a translation is
//   shown in English.
// - Log lines, messages to the launcher and lines on standard error are English in every locale.
// - The placeholders of a text are "%1" to "%9". `msgfmt --check` compares those of a translation with those of its
//   text. Whatever a catalogue contains, nothing else is replaced.
// - Main thread.

#pragma once

#include <libintl.h>

#include <string>
#include <vector>

inline constexpr char kTextDomain[] = "svo-signin";

// Returns the folder of the catalogues of a program in `programFolder`: "../share/locale" from there, in the build
// folder as in an installation. Empty if another user than the one who controls the program may have written them.
//   "/usr/bin"  => "/usr/share/locale"
std::string catalogueFolder(const std::string& programFolder);

// Selects the catalogues. Without a folder of the program's own they are those of the system. Call after the locale has
// been set.
void selectCatalogues(const std::string& programFolder);

// Lays out widgets from right to left if the texts are written so, even if GTK has no catalogue of the language. Call
// after GTK has been initialized.
void selectDirection();

// Returns a text in the user's language. `po/extract` finds the texts by this name: give it a literal.
inline const char* _(const char* text) {
  return dgettext(kTextDomain, text);
}

// Replaces the placeholders of a text that is not displayed, such as the name of a widget for a screen reader.
//   ("Site: %1", {"a.example"})  => "Site: a.example"
std::string filled(const char* text, const std::vector<std::string>& values);

// Replaces the placeholders of a text that is displayed as a paragraph of its own. The values may come from a page or a
// server. Each is isolated (Unicode Standard Annex #9, section 2.4), so that right-to-left characters in it do not
// reorder the text.
std::string displayed(const char* text, std::vector<std::string> values);
