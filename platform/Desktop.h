// What a desktop does for programs: opens addresses, starts programs in front, raises windows, and posts notifications
// to all sessions. Thread-safe.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

// Opens an address in the user's default program for it; true when that has been started. False for a text that is no
// address, without a program for it, and, on Linux, without a display. On Linux a bus of the session that does not
// answer is given up after two seconds, and the program started without it; GIO may start a bus where there is none. On
// macOS the workspace is asked, and brackets may stand anywhere.
bool openUrl(const std::string& url);

// Why the application launcher cannot refer to a file: the name of the error and what it means.
struct ReferenceFailure {
  std::string error;
  std::string comment;
};

struct LaunchResult {
  bool launched = false;
  std::optional<ReferenceFailure> failure;  // when it came to referring to the file, and that failed
};

// Starts a new instance of a program through the application launcher, which brings it to the front. On macOS that is
// Launch Services, told to begin it with the Apple event that activates. Linux has no such launcher: there nothing is
// launched, but a file that cannot be referred to is told.
LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& arguments);

// Brings the windows of a process to the front. `unknown` while the process has not shown up among those with windows;
// `impossible` when nothing can be brought to the front here, or not this.
//
// On Linux asks the window manager of the X display, as a taskbar does (EWMH, `_NET_ACTIVE_WINDOW`), for the process's
// topmost window, known by its `_NET_WM_PID`: processes that it has started are not looked for. Without a display,
// or with one that does not answer within two seconds, `impossible`. On macOS the Process Manager is asked, which knows
// what has become an application.
enum class RaiseResult { kRaised, kNotFound, kFailed };
RaiseResult raiseWindow(pid_t process);

// Posts a notification without further information, for all sessions. Nobody needs to listen, and nobody answers; it
// returns after two seconds at the latest, posted or not.
//
// On Linux a D-Bus signal without arguments on the session bus, and on the system bus for the other sessions: its
// interface is the object's name, its member the last word of the notification's name, its path the object's name with
// slashes. A bus that is not there is not started.
// On macOS a distributed notification under both names as they are; none when one of them is not UTF-8.
//   ("org.x.Stop", "org.x.Agent")  => signal org.x.Agent.Stop from /org/x/Agent
void postToAllSessions(const std::string& name, const std::string& object);

}  // namespace platform
