#include "app/gtk/LoadSignals.h"

#include <string>

namespace {

std::string text(const char* utf8) {
  return utf8 == nullptr ? std::string() : std::string(utf8);
}

std::string addressOf(WebKitWebView* view) {
  return text(webkit_web_view_get_uri(view));
}

LoadError errorOf(const GError* error) {
  return {text(g_quark_to_string(error->domain)), error->code};
}

LoadError errorOf(GTlsCertificateFlags flags) {
  return {"tls-certificate", static_cast<int>(flags)};
}

void onLoadChanged(WebKitWebView* view, WebKitLoadEvent step, LoadEvents* events) {
  switch (step) {
    case WEBKIT_LOAD_STARTED:
      return events->loadStarted(addressOf(view));
    case WEBKIT_LOAD_REDIRECTED:
      return events->loadRedirected(addressOf(view));
    case WEBKIT_LOAD_COMMITTED:
      return events->loadCommitted(addressOf(view));
    case WEBKIT_LOAD_FINISHED:
      return events->loadFinished(addressOf(view));
  }
}

// TRUE in both: otherwise WebKit shows an error page, which then finishes under the failed address.
gboolean onLoadFailed(WebKitWebView*, WebKitLoadEvent step, char* address, GError* error, LoadEvents* events) {
  events->loadFailed(step < WEBKIT_LOAD_COMMITTED, text(address), errorOf(error));
  return TRUE;
}

gboolean onLoadFailedWithTlsErrors(WebKitWebView*, char* address, GTlsCertificate*, GTlsCertificateFlags flags,
                                   LoadEvents* events) {
  events->loadFailed(true, text(address), errorOf(flags));
  return TRUE;
}

gboolean onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                        LoadEvents* events) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
    WebKitNavigationAction* const action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    events->navigationAsked(text(webkit_uri_request_get_uri(webkit_navigation_action_get_request(action))));
  }
  return FALSE;
}

constexpr char kResourceNumber[] = "svo-resource-number";

unsigned numberOf(WebKitWebResource* resource) {
  return GPOINTER_TO_UINT(g_object_get_data(G_OBJECT(resource), kResourceNumber));
}

void onResourceAnswered(WebKitWebResource* resource, GParamSpec*, LoadEvents* events) {
  events->resourceAnswered(numberOf(resource));
}

void onResourceFinished(WebKitWebResource* resource, LoadEvents* events) {
  events->resourceFinished(numberOf(resource));
}

void onResourceFailed(WebKitWebResource* resource, GError* error, LoadEvents* events) {
  events->resourceFailed(numberOf(resource), text(webkit_web_resource_get_uri(resource)), errorOf(error));
}

void onResourceFailedWithTlsErrors(WebKitWebResource* resource, GTlsCertificate*, GTlsCertificateFlags flags,
                                   LoadEvents* events) {
  events->resourceFailed(numberOf(resource), text(webkit_web_resource_get_uri(resource)), errorOf(flags));
}

void onResourceSent(WebKitWebResource* resource, WebKitURIRequest* request, WebKitURIResponse* redirect,
                    LoadEvents* events) {
  if (redirect == nullptr) return;
  events->resourceRedirected(numberOf(resource), text(webkit_uri_request_get_uri(request)));
}

void onResourceStarted(WebKitWebView* view, WebKitWebResource* resource, WebKitURIRequest* request,
                       LoadEvents* events) {
  static unsigned lastNumber = 0;
  g_object_set_data(G_OBJECT(resource), kResourceNumber, GUINT_TO_POINTER(++lastNumber));
  g_signal_connect(resource, "sent-request", G_CALLBACK(onResourceSent), events);
  g_signal_connect(resource, "notify::response", G_CALLBACK(onResourceAnswered), events);
  g_signal_connect(resource, "finished", G_CALLBACK(onResourceFinished), events);
  g_signal_connect(resource, "failed", G_CALLBACK(onResourceFailed), events);
  g_signal_connect(resource, "failed-with-tls-errors", G_CALLBACK(onResourceFailedWithTlsErrors), events);
  events->resourceStarted(lastNumber, text(webkit_uri_request_get_uri(request)),
                          webkit_web_view_get_main_resource(view) == resource);
}

void onDownloadStarted(WebKitWebContext*, WebKitDownload* download, LoadEvents* events) {
  events->downloadStarted(text(webkit_uri_request_get_uri(webkit_download_get_request(download))));
}

void onProgress(WebKitWebView*, GParamSpec*, LoadEvents* events) {
  events->progressed();
}

void onIsLoading(WebKitWebView* view, GParamSpec*, LoadEvents* events) {
  if (webkit_web_view_is_loading(view)) events->loadRequested(addressOf(view));
}

void onPageProcessEnded(WebKitWebView*, WebKitWebProcessTerminationReason, LoadEvents* events) {
  events->pageProcessEnded();
}

}  // namespace

void connectLoadSignals(WebKitWebView* view, LoadEvents& events) {
  g_signal_connect(view, "load-changed", G_CALLBACK(onLoadChanged), &events);
  g_signal_connect(view, "load-failed", G_CALLBACK(onLoadFailed), &events);
  g_signal_connect(view, "load-failed-with-tls-errors", G_CALLBACK(onLoadFailedWithTlsErrors), &events);
  g_signal_connect(view, "decide-policy", G_CALLBACK(onDecidePolicy), &events);
  g_signal_connect(view, "resource-load-started", G_CALLBACK(onResourceStarted), &events);
  g_signal_connect(view, "notify::estimated-load-progress", G_CALLBACK(onProgress), &events);
  g_signal_connect(view, "notify::is-loading", G_CALLBACK(onIsLoading), &events);
  g_signal_connect(webkit_web_view_get_context(view), "download-started", G_CALLBACK(onDownloadStarted), &events);
  g_signal_connect(view, "web-process-terminated", G_CALLBACK(onPageProcessEnded), &events);
}
