#include "app/gtk/Language.h"

#include <gtk/gtk.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "app/gtk/Glib.h"
#include "platform/Path.h"

namespace {

constexpr char kLeftToRightMark[] = "\u200E";
constexpr char kRightToLeftMark[] = "\u200F";
constexpr char kFirstStrongIsolate[] = "\u2068";
constexpr char kPopDirectionalIsolate[] = "\u2069";

// Whether only those who may write into `trusted` may write into the folder.
bool isAsTrusted(const std::string& folder, const struct stat& trusted) {
  struct stat item {};
  if (::lstat(folder.c_str(), &item) != 0 || !S_ISDIR(item.st_mode)) return false;
  const bool ownerFits = item.st_uid == 0 || item.st_uid == trusted.st_uid;
  const bool groupFits = (item.st_mode & S_IWGRP) == 0 || item.st_gid == trusted.st_gid;
  return ownerFits && groupFits && (item.st_mode & S_IWOTH) == 0;
}

bool isRightToLeft() {
  return gtk_widget_get_default_direction() == GTK_TEXT_DIR_RTL;
}

// Embeddings, overrides and isolates: an unpaired one could end the isolation.
bool changesDirection(gunichar character) {
  return (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

// A paragraph separator would end the isolation too.
bool endsParagraph(gunichar character) {
  return g_unichar_iscntrl(character) || g_unichar_type(character) == G_UNICODE_PARAGRAPH_SEPARATOR;
}

std::string isolated(const std::string& value) {
  const std::string valid = validUtf8(value);
  std::string result = kFirstStrongIsolate;
  for (const char* at = valid.c_str(); *at != '\0';) {
    const char* const next = g_utf8_next_char(at);
    const gunichar character = g_utf8_get_char(at);
    if (endsParagraph(character)) {
      result += ' ';
    } else if (!changesDirection(character)) {
      result.append(at, next);
    }
    at = next;
  }
  return result + kPopDirectionalIsolate;
}

}  // namespace

std::string catalogueFolder(const std::string& programFolder) {
  struct stat program {};
  if (::stat(programFolder.c_str(), &program) != 0) return {};
  const std::string share =
      platform::appendingPathComponent(platform::deletingLastPathComponent(programFolder), "share");
  const std::string locale = share + "/locale";
  return isAsTrusted(share, program) && isAsTrusted(locale, program) ? locale : std::string();
}

void selectCatalogues(const std::string& programFolder) {
  const std::string folder = catalogueFolder(programFolder);
  if (!folder.empty()) (void)bindtextdomain(kTextDomain, folder.c_str());
  (void)bind_textdomain_codeset(kTextDomain, "UTF-8");  // GTK's, whatever the locale's
}

void selectDirection() {
  // Translators: "default:RTL" if your language is written from right to left. Any other text means left to right.
  if (std::strcmp(_("default:LTR"), "default:RTL") == 0) gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);
}

// One pass: a value may contain a placeholder.
std::string filled(const char* text, const std::vector<std::string>& values) {
  std::string result;
  for (const char* at = text; *at != '\0'; ++at) {
    const auto number = static_cast<std::size_t>(*at == '%' && at[1] >= '1' && at[1] <= '9' ? at[1] - '0' : 0);
    if (number == 0 || number > values.size()) {
      result += *at;
    } else {
      result += values[number - 1];
      ++at;
    }
  }
  return result;
}

// The mark gives the paragraph the direction of the language: Pango takes it from the first letter, also of a value.
std::string displayed(const char* text, std::vector<std::string> values) {
  std::transform(values.begin(), values.end(), values.begin(), isolated);
  return (isRightToLeft() ? kRightToLeftMark : kLeftToRightMark) + filled(text, values);
}
