// The six options of the launcher. Parsed once, before the application loop starts.
//
// - An option is one argument: name, "=", value. A value in the next argument is not recognized.
// - An option that is missing is the same as an option with an empty value. Other arguments are ignored.
//   --pipeName=/tmp/x              => pipe_name "/tmp/x"
//   --pipeName /tmp/x              => pipe_name ""
//   --zelURL=cb:/host/a?b=c&d=e    => zel_url "cb:/host/a?b=c&d=e"
//   --redirectURL=cb:/Host/Done    => redirect_url "cb:/host/done"
// - Written on the main thread before the loop starts, only read afterward.
// - Parsing does not fail. Readers decide what an empty value means.

#pragma once

#include <string>

class CommandLine {  // names fixed by the interface
 public:
  static const char* const zel_url_param;
  static const char* const app_name_param;
  static const char* const redirect_url_param;
  static const char* const redirect_type3_url_param;
  static const char* const pipe_name_param;
  static const char* const type3_window_title_param;

  // Returns the process's instance, created on the first call. The caller does not own it.
  static CommandLine* GetInstance();

  // Sets all six fields from `argv[1]` to `argv[argc - 1]`. Null elements are skipped. The value of an option comes
  // from the first argument that begins with the option's name and contains "=". Returns true.
  bool InitCommandLine(unsigned long argc, const char** argv);

  // Applies the C library's `tolower` to every byte. Options are parsed before a locale is set, so only the 26 ASCII
  // letters change.
  std::string ToLowerCase(std::string s);

  std::string zel_url;             // the sign-in page
  std::string redirect_url;        // the address that ends a sign-in, in lower case
  std::string pipe_name;           // the launcher's named pipe
  std::string redirect_type3_url;  // the address that starts an enterprise sign-in, in lower case
  std::string app_name;            // the window's title
  std::string type3_window_title;  // its title from the first enterprise page on
};
