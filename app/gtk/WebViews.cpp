#include "app/gtk/WebViews.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "app/gtk/GtkHandles.h"

namespace {

void disableFeature(WebKitSettings* settings, const char* name) {
  WebKitFeatureList* const features = webkit_settings_get_all_features();
  for (gsize i = 0; i < webkit_feature_list_get_length(features); ++i) {
    WebKitFeature* const feature = webkit_feature_list_get(features, i);
    if (g_strcmp0(webkit_feature_get_identifier(feature), name) != 0) continue;
    webkit_settings_set_feature_enabled(settings, feature, FALSE);
  }
  webkit_feature_list_unref(features);
}

WebKitSettings* newSettings() {
  WebKitSettings* const settings = webkit_settings_new();
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS  // both are off for good in current WebKit; they stay here for an older one
      webkit_settings_set_enable_java(settings, FALSE);
  webkit_settings_set_enable_plugins(settings, FALSE);
  G_GNUC_END_IGNORE_DEPRECATIONS
  webkit_settings_set_enable_javascript(settings, TRUE);
  webkit_settings_set_auto_load_images(settings, TRUE);
  webkit_settings_set_enable_tabs_to_links(settings, TRUE);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);

  // A sign-in page gains nothing from the GPU; without it the window needs a fifth less memory and keeps clear of the
  // drivers that leave it blank.
  webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);

  webkit_settings_set_enable_developer_extras(settings, FALSE);
  webkit_settings_set_enable_fullscreen(settings, FALSE);
  webkit_settings_set_enable_media_stream(settings, FALSE);
  disableFeature(settings, "DataListElement");  // its list could come down over the strip
  return settings;
}

// Not earlier: from WebKitGTK 2.52 on, many downloads that are cancelled at their start crash the network process.
gboolean cancelDownload(WebKitDownload* download, char*, gpointer) {
  webkit_download_cancel(download);
  return TRUE;
}

void onDownloadStarted(WebKitWebContext*, WebKitDownload* download) {
  g_signal_connect(download, "decide-destination", G_CALLBACK(cancelDownload), nullptr);
}

// A BCP 47 tag for a locale's name; empty when there is none, or none that tells more than another name in the list.
//   "de_DE"        => "de-DE"
//   "de_DE.UTF-8"  => ""   (the list also has "de_DE")
//   "C"            => ""
std::string languageTag(const std::string& locale) {
  if (locale == "C" || locale == "POSIX" || locale.find_first_of(".@") != std::string::npos) return {};
  std::array<char, ULOC_FULLNAME_CAPACITY> tag{};
  UErrorCode error = U_ZERO_ERROR;
  const int length = uloc_toLanguageTag(locale.c_str(), tag.data(), static_cast<int>(tag.size()), TRUE, &error);
  return U_SUCCESS(error) ? std::string(tag.data(), static_cast<std::size_t>(length)) : std::string();
}

// From the environment: WebKit asks the C library, which knows only the locales that are installed, and hands a page
// names like "C", for which `Intl` throws.
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

}  // namespace

WebKitWebContext* newContext(bool sandboxed) {
  WebKitWebContext* const context = webkit_web_context_new_ephemeral();
  webkit_web_context_set_sandbox_enabled(context, sandboxed);
  setLanguages(context);
  webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  g_signal_connect(context, "download-started", G_CALLBACK(onDownloadStarted), nullptr);
  return context;
}

WebKitWebView* newWebView(WebKitWebContext* context, WebKitUserContentManager* content) {
  const ObjectRef<WebKitSettings> settings(newSettings());
  return WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "user-content-manager", content,
                                      "settings", settings.get(), "expand", TRUE, nullptr));
}
