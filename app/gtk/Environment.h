// The environment of the window and of its child processes.

#pragma once

#include <array>

// Variables of the libraries that write keys, requests or pages to a file or a stream, open them to another process,
// or weaken what protects them.
inline constexpr std::array kDebuggingVariables = {
    // GLib
    "DEBUG_INVOCATION", "G_DBUS_DEBUG", "G_MESSAGES_DEBUG", "G_TLS_GNUTLS_PRIORITY",
    // GTK
    "GDK_DEBUG", "GTK_DEBUG",
    // Kerberos
    "KRB5_TRACE",
    // Token modules
    "OPENSC_DEBUG", "P11_KIT_DEBUG", "PKCS11SPY_OUTPUT",
    // libfido2
    "FIDO_DEBUG",
    // GStreamer
    "GST_DEBUG", "GST_DEBUG_DUMP_DOT_DIR", "GST_DEBUG_FILE", "GST_DEBUG_OPTIONS", "GST_TRACERS",
    // libsoup
    "SOUP_NTLM_AUTH_DEBUG",
    // GnuTLS
    "GNUTLS_DEBUG_LEVEL", "SSLKEYLOGFILE",
    // Wayland: prints every key that is pressed
    "WAYLAND_DEBUG",
    // WebKit
    "WEBKIT_DEBUG", "WEBKIT_DEBUG_OUTPUT", "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS",
    "WEBKIT_ENABLE_A11Y_DBUS_PROXY_LOGGING", "WEBKIT_ENABLE_DBUS_PROXY_LOGGING",
    "WEBKIT_ENABLE_DEBUG_PERMISSIONS_IN_SANDBOX", "WEBKIT_FORCE_SANDBOX", "WEBKIT_GST_HARNESS_DUMP_DIR",
    "WEBKIT_INJECTED_BUNDLE_PATH", "WEBKIT_INSPECTOR_HTTP_SERVER", "WEBKIT_INSPECTOR_SERVER"};

// The options of WebKit's JavaScript engine; some print or record the scripts of pages.
inline constexpr char kEngineOptionPrefix[] = "JSC_";

// Removes these variables, and sets those that keep libraries from leaving files behind and from preparing the GPU.
// Call before other threads start.
void prepareEnvironment();
