#include "app/gtk/Environment.h"

#include <glib.h>

#include "app/gtk/Glib.h"

void prepareEnvironment() {
  for (const char* const name : kDebuggingVariables)
    g_unsetenv(name);
  const Owned<char*, g_strfreev> names(g_listenv());
  for (char** name = names.get(); *name != nullptr; ++name) {
    if (g_str_has_prefix(*name, kEngineOptionPrefix)) g_unsetenv(*name);
  }

  // Otherwise written to disk: compiled shaders, the list of media plug-ins and, without a runtime folder, settings.
  g_setenv("MESA_SHADER_CACHE_DISABLE", "true", TRUE);
  g_setenv("__GL_SHADER_DISK_CACHE", "0", TRUE);
  g_setenv("GST_REGISTRY", "/proc/none/registry", TRUE);
  if (g_getenv("XDG_RUNTIME_DIR") == nullptr) g_setenv("GSETTINGS_BACKEND", "memory", TRUE);

  // Otherwise WebKit prepares to paint through the GPU, although its settings rule that out. This delays the sign-in
  // page by a tenth.
  g_setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", TRUE);
}
