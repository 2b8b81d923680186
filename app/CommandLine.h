// The six options that the launcher passes, parsed once before the application loop starts.
//
// An option is one argument: its name, "=" and the value. The form with the value in the next argument is not
// understood, an option that was not given equals one given with an empty value, and everything else on the command
// line is ignored.
//   --pipeName=/tmp/x              => pipe_name "/tmp/x"
//   --pipeName /tmp/x              => pipe_name ""
//   --zelURL=cb:/host/a?b=c&d=e    => zel_url "cb:/host/a?b=c&d=e"
//   --redirectURL=cb:/Host/Done    => redirect_url "cb:/host/done"
//
// Written on the main thread before the loop starts, only read afterwards; only the creation of the instance is
// guarded. Parsing never fails: what a missing value means is decided by its reader.

#pragma once

#include <string>

class CommandLine {
 public:
  static const char* const zel_url_param;
  static const char* const app_name_param;
  static const char* const redirect_url_param;
  static const char* const redirect_type3_url_param;
  static const char* const pipe_name_param;
  static const char* const type3_window_title_param;

  // The one instance of the process, built on the first call and owned by nobody who calls.
  static CommandLine* GetInstance();

  // Fills all six fields from `argv[1]` to `argv[argc - 1]`; null elements are skipped. The first argument that begins
  // with an option's name and holds a "=" gives its value. A second call replaces every field. Always true.
  bool InitCommandLine(unsigned long argc, const char** argv);

  // Every byte through the C library's `tolower`. Options are parsed before any locale is set, so only the 26 ASCII
  // letters change and the bytes of a multi-byte character stay as they are.
  std::string ToLowerCase(std::string s);

  std::string zel_url;             // the sign-in page
  std::string redirect_url;        // the address that ends a sign-in, lower-cased
  std::string pipe_name;           // the launcher's named pipe
  std::string redirect_type3_url;  // the address that starts an enterprise sign-in, lower-cased
  std::string app_name;            // the window's title
  std::string type3_window_title;  // its title from the first enterprise page on
};
