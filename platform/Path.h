// Path strings, with the results of the NSString path methods.
//
// - Components are separated by "/". The file system is not accessed.
// - Repeated slashes count as one and trailing slashes are ignored, so no result except "/" ends in a slash.
// - An extension is the text after the last "." of the last component, unless that "." is its first character.
// - Any encoding; no byte except "/", "." and NUL is interpreted.
// - Pure and thread-safe.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Returns the part before the first NUL, which is the path that a system call uses.
//   "/tmp/a\0/b" => "/tmp/a"   "/tmp/a" => "/tmp/a"   "\0" => ""
std::string untilNul(std::string_view path);

//   "/tmp/a//" => "/tmp/a"   "//tmp" => "//tmp"   "/" => ""
std::string withoutTrailingSlashes(const std::string& path);

//   "/tmp/scratch.tiff" => "scratch.tiff"   "scratch///" => "scratch"   "/" => "/"   "" => ""
std::string lastPathComponent(std::string_view path);

//   ("/tmp/", "a") => "/tmp/a"   ("", "a") => "a"   ("/tmp", "/a/") => "/tmp/a"   ("/tmp", "") => "/tmp"
std::string appendingPathComponent(std::string_view path, std::string_view component);

//   "/tmp/lock/" => "/tmp"   "/tmp" => "/"   "/" => "/"   "scratch" => ""
std::string deletingLastPathComponent(std::string_view path);

// Removes the last component and the slashes around it in place. Returns false and changes nothing if there is none.
//   "/a//b/" => "/a"   "/a" => "/"   "a" => ""   "/" => false   "" => false
bool cutLastComponent(std::string& path);

// Returns the parent folder as POSIX `dirname` does: keeps repeated slashes inside it; "//" becomes "/". Ignores
// everything from the first NUL.
//   "/tmp//a/b/" => "/tmp//a"   "scratch" => "."   "/" => "/"   "" => "."
std::string parentFolder(std::string_view path);

// Returns the last component as POSIX `basename` does. Ignores everything from the first NUL.
//   "/a/b/" => "b"   "/" => "/"   "" => "."
std::string baseName(std::string_view path);

//   "name.tar.gz" => "gz"   ".hidden" => ""   "a." => ""   "/x.d/name" => ""
std::string pathExtension(std::string_view path);

//   "name.tar.gz" => "name.tar"   ".hidden" => ".hidden"   "a." => "a"   "scratch.bundle/" => "scratch"
std::string deletingPathExtension(std::string_view path);

// Returns no value if the path has no name ("" and "/") or the extension contains "/".
//   ("/tmp/", "tiff") => "/tmp.tiff"   ("a.", "b") => "a..b"   ("a", "") => "a."
std::optional<std::string> appendingPathExtension(std::string_view path, std::string_view extension);

}  // namespace platform
