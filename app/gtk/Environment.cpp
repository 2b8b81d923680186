#include "app/gtk/Environment.h"

#include <fcntl.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <initializer_list>

void settleStandardStreams() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(standard, F_GETFD) == -1) (void)::open("/dev/null", O_RDWR);
  }
  (void)std::signal(SIGPIPE, SIG_IGN);
}

void settleLibraries() {
  // Compiled shaders, found media plug-ins and, where there is no runtime folder, read settings would be kept on disk.
  g_setenv("MESA_SHADER_CACHE_DISABLE", "true", TRUE);
  g_setenv("__GL_SHADER_DISK_CACHE", "0", TRUE);
  g_setenv("GST_REGISTRY", "/proc/none/registry", TRUE);
  if (g_getenv("XDG_RUNTIME_DIR") == nullptr) g_setenv("GSETTINGS_BACKEND", "memory", TRUE);

  // The first two open the pages to whoever connects to a port; the third takes their walls away without a word.
  g_unsetenv("WEBKIT_INSPECTOR_SERVER");
  g_unsetenv("WEBKIT_INSPECTOR_HTTP_SERVER");
  g_unsetenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");

  gtk_disable_setlocale();
  (void)std::setlocale(LC_CTYPE, "");
  (void)std::setlocale(LC_MESSAGES, "");
}
