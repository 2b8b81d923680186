#include "app/gtk/page/Site.h"

#include <gio/gio.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/uspoof.h>
#include <webkit2/webkit2.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "app/Address.h"
#include "app/gtk/Glib.h"

namespace {

constexpr char kLeftToRightMark[] = "\u200E";
constexpr glong kMaxCharactersInPrompt = 80;

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char each) { return static_cast<unsigned char>(each) < 0x80; });
}

// Created once: creating one takes milliseconds.
const USpoofChecker* spoofChecker() {
  static USpoofChecker* const checker = [] {
    UErrorCode error = U_ZERO_ERROR;
    USpoofChecker* const made = uspoof_open(&error);
    if (U_FAILURE(error)) return static_cast<USpoofChecker*>(nullptr);
    uspoof_setRestrictionLevel(made, USPOOF_SINGLE_SCRIPT_RESTRICTIVE);
    uspoof_setAllowedChars(made, uspoof_getRecommendedSet(&error), &error);
    uspoof_setChecks(made, USPOOF_CHAR_LIMIT | USPOOF_RESTRICTION_LEVEL | USPOOF_INVISIBLE | USPOOF_MIXED_NUMBERS,
                     &error);
    return U_SUCCESS(error) ? made : nullptr;
  }();
  return checker;
}

UScriptCode scriptOf(gunichar character) {
  UErrorCode error = U_ZERO_ERROR;
  const UScriptCode script = uscript_getScript(static_cast<UChar32>(character), &error);
  return U_SUCCESS(error) ? script : USCRIPT_COMMON;
}

// Marks that belong to no script look like dots, dashes and underlines. The Japanese long vowel mark is part of kana.
bool isMarkOfNoScript(gunichar character) {
  constexpr gunichar kLongVowel = 0x30FC;
  if (character < 0x80 || character == kLongVowel) return false;
  const UScriptCode script = scriptOf(character);
  return script == USCRIPT_COMMON || script == USCRIPT_INHERITED;
}

bool isLatin(gunichar character) {
  return scriptOf(character) == USCRIPT_LATIN;
}

// The combining class (Unicode Standard, section 4.3) is 1 for a stroke through the letter and at least 200 for a mark
// around it; 230 is above it.
bool isEasilyMissed(gunichar character) {
  constexpr gunichar kDotAbove = 0x307;
  constexpr int kOverlay = 1;
  constexpr int kFirstAround = 200;
  constexpr int kAbove = 230;
  const int place = u_getCombiningClass(static_cast<UChar32>(character));
  return character == kDotAbove || place == kOverlay || (place >= kFirstAround && place != kAbove);
}

bool hasAny(const std::string& text, bool (*predicate)(gunichar)) {
  for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
    if (predicate(g_utf8_get_char(at))) return true;
  }
  return false;
}

// Returns the skeleton of UTS #39: equal for labels that look alike. Its letters are separate from their marks, and a
// stroke through a letter is a mark. Empty on failure.
//   "paypał"  => "paypal\u0338"
std::string skeletonOf(const std::string& label) {
  char skeleton[1024];
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t length = uspoof_getSkeletonUTF8(
      spoofChecker(), 0, label.c_str(), static_cast<std::int32_t>(label.size()), skeleton, sizeof skeleton, &error);
  if (U_FAILURE(error) || length > static_cast<std::int32_t>(sizeof skeleton)) return {};
  return {skeleton, static_cast<std::size_t>(length)};
}

// UTS #39 does not count kra, which is also the skeleton of the Cyrillic ka, as a letter k.
bool looksLikeAscii(std::string skeleton) {
  constexpr std::string_view kKra = "\u0138";
  for (std::size_t at = 0; (at = skeleton.find(kKra, at)) != std::string::npos;)
    skeleton.replace(at, kKra.size(), "k");
  return isAscii(skeleton);
}

// Whether a label cannot be taken for another one; Site.h has the conditions.
bool isUnambiguous(const std::string& label) {
  if (isAscii(label)) return true;
  if (hasAny(label, isMarkOfNoScript)) return false;
  const USpoofChecker* const checker = spoofChecker();
  if (checker == nullptr) return false;

  UErrorCode error = U_ZERO_ERROR;
  const auto size = static_cast<std::int32_t>(label.size());
  if (uspoof_check2UTF8(checker, label.c_str(), size, nullptr, &error) != 0 || U_FAILURE(error)) return false;

  const std::string skeleton = skeletonOf(label);
  return !looksLikeAscii(skeleton) && !(hasAny(label, isLatin) && hasAny(skeleton, isEasilyMissed));
}

template <typename Visit>
void forEachLabel(const std::string& host, Visit visit) {
  std::string::size_type begin = 0;
  while (true) {
    const std::string::size_type end = host.find('.', begin);
    visit(host.substr(begin, end - begin));
    if (end == std::string::npos) return;
    begin = end + 1;
  }
}

bool isLoopback(const std::string& host) {
  constexpr std::string_view kLocal = ".localhost";
  if (host == "localhost" || host == "[::1]") return true;
  if (host.size() > kLocal.size() && host.compare(host.size() - kLocal.size(), kLocal.size(), kLocal) == 0) return true;
  return host.rfind("127.", 0) == 0 && g_hostname_is_ip_address(host.c_str());
}

// The default resolver is the one that WebKit's network process uses. Without an answer the page is treated as one that
// others can read.
bool goesThroughProxy(const std::string& address) {
  const Owned<char*, g_strfreev> proxies(
      g_proxy_resolver_lookup(g_proxy_resolver_get_default(), address.c_str(), nullptr, nullptr));
  return !proxies || !g_strv_contains(proxies.get(), "direct://") || g_strv_length(proxies.get()) != 1;
}

// Parsed by WebKit, so that the host shown is the host that WebKit connected to.
std::string hostOf(const std::string& address) {
  const Owned<WebKitSecurityOrigin, webkit_security_origin_unref> origin(
      webkit_security_origin_new_for_uri(address.c_str()));
  const char* const host = webkit_security_origin_get_host(origin.get());
  if (host == nullptr) return {};
  return bracketed(host);
}

}  // namespace

std::string bracketed(const std::string& host) {
  return host.find(':') != std::string::npos && host.front() != '[' ? "[" + host + "]" : host;
}

Site siteOf(const std::string& address, bool overTls) {
  if (hasScheme(address, "file")) return {Site::Kind::kFile, {}};
  if (!isWebAddress(address)) return {Site::Kind::kNowhere, {}};

  const std::string host = hostOf(address);
  if (host.empty()) return {Site::Kind::kNowhere, {}};
  if (overTls) return {Site::Kind::kEncrypted, displayHost(host)};
  const bool isHere = isLoopback(host) && !goesThroughProxy(address);
  return {isHere ? Site::Kind::kLoopback : Site::Kind::kPlain, displayHost(host)};
}

std::string displayHost(const std::string& host) {
  constexpr std::string_view kScheme = "http://";
  const Owned<char, g_free> shown(webkit_uri_for_display((std::string(kScheme) + host).c_str()));
  if (!shown) return host;

  std::string name = std::string(shown.get()).substr(kScheme.size());
  if (!name.empty() && name.back() == '/') name.pop_back();
  bool unambiguous = true;
  forEachLabel(name, [&](const std::string& label) { unambiguous = unambiguous && isUnambiguous(label); });
  return unambiguous ? name : host;
}

std::string leftToRight(const std::string& host) {
  std::string result = kLeftToRightMark;
  bool first = true;
  forEachLabel(host, [&](const std::string& label) {
    if (!first) result += std::string(kLeftToRightMark) + "." + kLeftToRightMark;
    result += label;
    first = false;
  });
  return result;
}

std::string inPrompt(const std::string& host) {
  const glong excess = g_utf8_strlen(host.c_str(), -1) - kMaxCharactersInPrompt;
  if (excess <= 0) return leftToRight(host);
  return leftToRight(std::string("\u2026") + g_utf8_offset_to_pointer(host.c_str(), excess));
}
