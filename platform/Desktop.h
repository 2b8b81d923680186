// Desktop services: opens URLs, launches programs in the foreground, raises windows, posts notifications. Thread-safe.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

// Opens a URL in the user's default program for its scheme. Returns whether that program was started.
//
// - Returns false if the text is not a URL, if no program handles the scheme and, on Linux, without a display.
// - Linux: if the session bus does not reply within two seconds, starts the program without it. GIO may start a bus if
//   none is running.
// - macOS: calls the workspace. Square brackets may be anywhere in the URL.
bool openUrl(const std::string& url);

// The error of creating a file reference for the application launcher.
struct ReferenceFailure {
  std::string error;    // the name of the error
  std::string comment;  // its description
};

struct LaunchResult {
  bool launched = false;
  std::optional<ReferenceFailure> failure;  // set only if creating the file reference failed
};

// Starts a new instance of a program in the foreground through the application launcher.
//
// - macOS: Launch Services, with the Apple event that activates an application as the initial event.
// - Linux has no such launcher: launches nothing. Reports a file that `stat` fails on as `failure`.
LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& arguments);

enum class RaiseResult {
  kRaised,
  kNotFound,  // the process has no window (macOS: is not an application) yet
  kFailed,
};

// Raises a window of a process.
//
// - Linux: sends the request of a taskbar (EWMH, `_NET_ACTIVE_WINDOW`) for the topmost window whose `_NET_WM_PID` is
//   the process. Ignores windows of its child processes. Returns `kFailed` without an X display and if the display does
//   not reply within two seconds.
// - macOS: calls the Process Manager.
RaiseResult raiseWindow(pid_t process);

// Posts a notification without user information to all sessions. Reports no errors and returns after at most two
// seconds.
//
// - Linux: a D-Bus signal without arguments on the session bus, and on the system bus for the other sessions. Does not
//   start a bus. The object's name becomes the interface and, with slashes, the path; the last word of the
//   notification's name becomes the member.
//     ("org.x.Stop", "org.x.Agent") => signal org.x.Agent.Stop from /org/x/Agent
// - macOS: a distributed notification with both names unchanged. Posts nothing if one of them is not UTF-8.
void postToAllSessions(const std::string& name, const std::string& object);

}  // namespace platform
