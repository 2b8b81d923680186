// Takes paths apart and puts them together as text, with the answers of the NSString path methods.
//
// A path is a string parted by "/"; the file system is never asked. Repeated slashes count as one and a trailing
// slash counts for nothing, so every result but "/" comes without them. An extension is what follows the last "."
// of the last component, unless that "." is the component's first character. Bytes are taken as they are, whatever
// their encoding. All functions are pure and thread-safe.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// What the system takes a path for: everything before its first NUL. Cut there, text and system calls speak of one
// path.
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

// Removes the last component in place, with the slashes around it. Returns false, without a change, when there is none.
//   "/a//b/" => "/a"   "/a" => "/"   "a" => ""   "/" => false   "" => false
bool cutLastComponent(std::string& path);

// The folder that a path lies in, as POSIX `dirname` returns it: slashes inside it stay as they are, and two leading
// ones alone are "/". A path ends at its first NUL.
//   "/tmp//a/b/" => "/tmp//a"   "scratch" => "."   "/" => "/"   "" => "."
std::string parentFolder(std::string_view path);

// The last component of a path, as POSIX `basename` returns it. A path ends at its first NUL.
//   "/a/b/" => "b"   "/" => "/"   "" => "."
std::string baseName(std::string_view path);

//   "name.tar.gz" => "gz"   ".hidden" => ""   "a." => ""   "/x.d/name" => ""
std::string pathExtension(std::string_view path);

//   "name.tar.gz" => "name.tar"   ".hidden" => ".hidden"   "a." => "a"   "scratch.bundle/" => "scratch"
std::string deletingPathExtension(std::string_view path);

// Nothing when there is no name to extend ("" and "/") or the extension holds a "/".
//   ("/tmp/", "tiff") => "/tmp.tiff"   ("a.", "b") => "a..b"   ("a", "") => "a."
std::optional<std::string> appendingPathExtension(std::string_view path, std::string_view extension);

}  // namespace platform
