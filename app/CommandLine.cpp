#include "app/CommandLine.h"

#include <algorithm>
#include <cctype>

const char* const CommandLine::zel_url_param = "--zelURL";
const char* const CommandLine::app_name_param = "--productName";
const char* const CommandLine::redirect_url_param = "--redirectURL";
const char* const CommandLine::redirect_type3_url_param = "--redirectType3URL";
const char* const CommandLine::pipe_name_param = "--pipeName";
const char* const CommandLine::type3_window_title_param = "--type3WindowTitle";

namespace {

std::string GetCommandLineValueForA(const char* option, unsigned long argc, const char** argv) {
  for (unsigned long i = 1; i < argc; ++i) {
    if (argv[i] == nullptr) continue;
    const std::string argument = argv[i];
    if (argument.rfind(option, 0) != 0) continue;

    const std::string::size_type equals = argument.find('=');
    if (equals != std::string::npos) return argument.substr(equals + 1);
  }
  return {};
}

}  // namespace

CommandLine* CommandLine::GetInstance() {
  static CommandLine parsedCommandLine;
  return &parsedCommandLine;
}

bool CommandLine::InitCommandLine(unsigned long argc, const char** argv) {
  zel_url = GetCommandLineValueForA(zel_url_param, argc, argv);
  app_name = GetCommandLineValueForA(app_name_param, argc, argv);
  redirect_url = GetCommandLineValueForA(redirect_url_param, argc, argv);
  redirect_type3_url = GetCommandLineValueForA(redirect_type3_url_param, argc, argv);
  pipe_name = GetCommandLineValueForA(pipe_name_param, argc, argv);
  type3_window_title = GetCommandLineValueForA(type3_window_title_param, argc, argv);

  redirect_url = ToLowerCase(redirect_url);
  redirect_type3_url = ToLowerCase(redirect_type3_url);
  return true;
}

std::string CommandLine::ToLowerCase(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}
