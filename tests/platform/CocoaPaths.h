// The path methods of NSString in GNUstep, as plain functions.

#pragma once

#include <optional>
#include <string>

namespace cocoa {

// Paths are UTF-8.
std::string lastPathComponent(const std::string& path);
std::string appendingPathComponent(const std::string& path, const std::string& component);
std::string deletingLastPathComponent(const std::string& path);
std::string pathExtension(const std::string& path);
std::string deletingPathExtension(const std::string& path);
std::optional<std::string> appendingPathExtension(const std::string& path, const std::string& extension);

}  // namespace cocoa
