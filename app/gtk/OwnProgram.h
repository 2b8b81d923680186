// Finds the programs that the window runs.

#pragma once

#include <glib.h>

#include <string>

#include "platform/Machine.h"

// Returns the path of a program of this project: beside the running one, or where the package installs it.
inline std::string ownProgram(const std::string& name) {
  const std::string folder = platform::bundlePath();
  const std::string beside = folder + "/" + name;
  return g_file_test(beside.c_str(), G_FILE_TEST_IS_EXECUTABLE) != FALSE ? beside : folder + "/../libexec/" + name;
}
