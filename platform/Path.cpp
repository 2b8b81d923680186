#include "platform/Path.h"

#include <cstddef>

namespace platform {
namespace {

std::string withoutExtraSlashes(std::string_view path) {
  std::string plain;
  plain.reserve(path.size());
  for (const char c : path) {
    if (c != '/' || plain.empty() || plain.back() != '/') plain.push_back(c);
  }
  if (plain.size() > 1 && plain.back() == '/') plain.pop_back();
  return plain;
}

// The path has no extra slashes. "/" is a component.
std::size_t startOfLastComponent(const std::string& path) {
  if (path == "/") return 0;
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? 0 : slash + 1;
}

// Returns the position of the extension's "."; npos if there is no extension. The path has no extra slashes.
std::size_t extensionDot(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot <= startOfLastComponent(path)) return std::string::npos;
  return dot;
}

}  // namespace

std::string untilNul(std::string_view path) {
  return std::string(path.substr(0, path.find('\0')));
}

std::string withoutTrailingSlashes(const std::string& path) {
  return path.substr(0, path.find_last_not_of('/') + 1);
}

std::string lastPathComponent(std::string_view path) {
  const std::string plain = withoutExtraSlashes(path);
  return plain.substr(startOfLastComponent(plain));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  std::string joined(path);
  if (!path.empty() && !component.empty()) joined += '/';
  joined += component;
  return withoutExtraSlashes(joined);
}

std::string deletingLastPathComponent(std::string_view path) {
  const std::string plain = withoutExtraSlashes(path);
  const std::size_t last = startOfLastComponent(plain);
  if (plain == "/" || last == 1) return "/";
  return last == 0 ? std::string() : plain.substr(0, last - 1);
}

bool cutLastComponent(std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  if (end == std::string::npos) return false;
  const std::size_t slash = path.rfind('/', end);
  const std::size_t parentEnd = slash == std::string::npos ? slash : path.find_last_not_of('/', slash);
  if (parentEnd != std::string::npos)
    path.erase(parentEnd + 1);
  else
    path.erase(slash == std::string::npos ? 0 : 1);
  return true;
}

std::string parentFolder(std::string_view path) {
  path = path.substr(0, path.find('\0'));
  if (path.empty()) return ".";
  const std::size_t slash = path.rfind('/', path.find_last_not_of('/'));
  if (slash == std::string_view::npos) return ".";
  const std::size_t end = path.find_last_not_of('/', slash);
  return end == std::string_view::npos ? "/" : std::string(path.substr(0, end + 1));
}

std::string baseName(std::string_view path) {
  path = path.substr(0, path.find('\0'));
  return path.empty() ? "." : lastPathComponent(path);
}

std::string pathExtension(std::string_view path) {
  const std::string plain = withoutExtraSlashes(path);
  const std::size_t dot = extensionDot(plain);
  return dot == std::string::npos ? std::string() : plain.substr(dot + 1);
}

std::string deletingPathExtension(std::string_view path) {
  const std::string plain = withoutExtraSlashes(path);
  return plain.substr(0, extensionDot(plain));
}

std::optional<std::string> appendingPathExtension(std::string_view path, std::string_view extension) {
  const std::string plain = withoutExtraSlashes(path);
  if (plain.empty() || plain == "/") return std::nullopt;
  if (extension.find('/') != std::string_view::npos) return std::nullopt;
  return plain + "." + std::string(extension);
}

}  // namespace platform
