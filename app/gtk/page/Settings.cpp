#include "app/gtk/page/Settings.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "app/gtk/PrivateFolder.h"

namespace {

void disableFeature(WebKitSettings* settings, const char* name) {
  const Owned<WebKitFeatureList, webkit_feature_list_unref> features(webkit_settings_get_all_features());
  for (gsize i = 0; i < webkit_feature_list_get_length(features.get()); ++i) {
    WebKitFeature* const feature = webkit_feature_list_get(features.get(), i);
    if (g_strcmp0(webkit_feature_get_identifier(feature), name) != 0) continue;
    webkit_settings_set_feature_enabled(settings, feature, FALSE);
  }
}

Owned<WebKitSettings> newSettings() {
  Owned<WebKitSettings> owned(webkit_settings_new());
  WebKitSettings* const settings = owned.get();
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS  // current WebKit has neither; older versions do
      webkit_settings_set_enable_java(settings, FALSE);
  webkit_settings_set_enable_plugins(settings, FALSE);
  G_GNUC_END_IGNORE_DEPRECATIONS
  webkit_settings_set_enable_javascript(settings, TRUE);
  webkit_settings_set_auto_load_images(settings, TRUE);
  webkit_settings_set_enable_tabs_to_links(settings, TRUE);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);

  // Without the GPU the window needs a fifth less memory and avoids drivers that leave it blank.
  webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);

  webkit_settings_set_enable_developer_extras(settings, FALSE);
  webkit_settings_set_enable_fullscreen(settings, FALSE);
  webkit_settings_set_enable_media_stream(settings, FALSE);
  webkit_settings_set_enable_page_cache(settings, FALSE);  // a page from it would not report that it has painted
  disableFeature(settings, "DataListElement");             // its list could cover the strip
  return owned;
}

// Returns the BCP 47 tag of a locale's name. Empty if the name has no language, and for names with a codeset or a
// modifier, which GLib lists without these too.
//   "de_DE"        => "de-DE"
//   "de_DE.UTF-8"  => ""
//   "C", "_DE", "" => ""
std::string languageTag(const std::string& locale) {
  if (locale == "C" || locale == "POSIX" || locale.find_first_of(".@") != std::string::npos) return {};
  std::array<char, ULOC_FULLNAME_CAPACITY> tag{};
  UErrorCode error = U_ZERO_ERROR;
  const int length = uloc_toLanguageTag(locale.c_str(), tag.data(), static_cast<int>(tag.size()), TRUE, &error);
  const bool hasLanguage = U_SUCCESS(error) && length > 0 && std::strncmp(tag.data(), "und", 3) != 0;
  return hasLanguage ? std::string(tag.data(), static_cast<std::size_t>(length)) : std::string();
}

// Reads the environment. WebKit would use the C library, which knows only installed locales, and report names such as
// "C", for which `Intl` throws.
std::vector<std::string> preferredLanguages() {
  std::vector<std::string> languages;
  for (const char* const* locale = g_get_language_names(); *locale != nullptr; ++locale) {
    const std::string tag = languageTag(*locale);
    if (!tag.empty() && std::find(languages.begin(), languages.end(), tag) == languages.end()) languages.push_back(tag);
  }
  if (languages.empty()) languages.emplace_back("en-US");
  return languages;
}

void setLanguages(WebKitWebContext* context) {
  const std::vector<std::string> languages = preferredLanguages();
  std::vector<const char*> list;
  list.reserve(languages.size() + 1);
  for (const std::string& each : languages)
    list.push_back(each.c_str());
  list.push_back(nullptr);
  webkit_web_context_set_preferred_languages(context, list.data());
}

// WebKit has no Negotiate authentication in an ephemeral session.
Owned<WebKitWebContext> newContextIn(const std::string& folder) {
  const Owned<WebKitWebsiteDataManager> manager(webkit_website_data_manager_new(
      "base-data-directory", folder.c_str(), "base-cache-directory", folder.c_str(), nullptr));
  webkit_website_data_manager_set_persistent_credential_storage_enabled(manager.get(), FALSE);
  return Owned<WebKitWebContext>(webkit_web_context_new_with_website_data_manager(manager.get()));
}

}  // namespace

Owned<WebKitWebContext> newContext(bool sandboxed) {
  Owned<WebKitWebContext> owned(privateFolder().empty() ? Owned<WebKitWebContext>(webkit_web_context_new_ephemeral())
                                                        : newContextIn(privateFolder()));
  WebKitWebContext* const context = owned.get();
  webkit_web_context_set_sandbox_enabled(context, sandboxed);
  setLanguages(context);
  webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  return owned;
}

WebKitWebView* newWebView(WebKitWebContext* context, WebKitUserContentManager* content) {
  return WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager", content,
                                      "settings", newSettings().get(), "expand", TRUE, nullptr));
}

StyleSheet newStyleSheetWithoutScrolling() {
  // A body that fills the window scrolls instead of the root element. It may scroll, but shows no scroll bars.
  constexpr char kStyle[] =
      ":root { overflow: hidden !important; } "
      ":root::-webkit-scrollbar, :root > body::-webkit-scrollbar { display: none !important; }";
  return StyleSheet(webkit_user_style_sheet_new(kStyle, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                                WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr));
}
