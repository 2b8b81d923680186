/// @file
/// Starts programs, opens URLs, and ends the update notifier.
///
/// - A program is given by its path. PATH is not searched.
/// - No shell is used, so arguments need no quotes.
/// - A path or an argument ends at its first NUL.
/// - A started process inherits the environment, standard input and, unless a function says otherwise, standard output
///   and standard error. It inherits no other descriptor, and its signals have their default actions.
/// - A started process is not tracked after the call. On Linux a sleeping thread of this library waits for it, so that
///   no zombie remains. That thread waits for no other child, and for no process that a watcher waits for.
/// - The exit status is unknown if the program that uses this library waits for all its children or ignores SIGCHLD.
/// - On macOS Foundation starts the processes and waits for them, also for those with a watcher: `waitpid` in a watcher
///   may fail. Paths and arguments must be UTF-8 there.
/// - No function throws.
/// - All functions work in a program without windows and without a main loop.
/// - Log messages: see the table at the end of this file.

#pragma once

#include <string>
#include <vector>

/// Starts a program in the folder that contains it, discards its output and, if `wait` is true, waits until it ends.
///
/// - May be called from any thread.
/// - Serves no events while it waits. On macOS it runs the run loop of the calling thread.
/// - These programs cannot be started: a folder, a file without execute permission, a script without a "#!" line, a
///   program in a folder without search permission.
///
/// Example:
///
///     utilCreateProcessWithReturnCode("/bin/false", {}, status, true, returnCode, false)  => true, returnCode is 1
///
/// @param path        of the program
/// @param args        its arguments, without the path
/// @param status      set to 0 if `wait` is false, else unchanged
/// @param wait        whether to return only when the program has ended
/// @param returnCode  set to 0 if `wait` is false, else to the exit status or to the number of the signal that ended
///                    the program; -1, sign-extended, if the exit status is unknown
/// @param unused      ignored
/// @return whether the program was started; if not, `status` and `returnCode` are unchanged
bool utilCreateProcessWithReturnCode(const std::string& path, const std::vector<std::string>& args,
                                     unsigned long& status, bool wait, unsigned long& returnCode, bool unused);

/// Starts a program with the working folder, output and errors of this process. Can raise its window or run a watcher.
///
/// To raise the window:
///
/// - On macOS the application launcher starts and activates the program. If the launcher fails, and always on Linux,
///   the program is started as a normal process and its window is raised later.
/// - The function waits for the window for at most 10 seconds and serves the events of the calling thread's run loop
///   meanwhile. Call it from the thread that has the run loop, usually the main thread. On Linux the run loop is GLib's
///   default main context.
/// - On Linux the window is found on the X display by its process id (`_NET_WM_PID`), and the window manager is asked
///   to activate it. Without a display this fails at once; with a display that does not reply, after two seconds.
/// - A window that is not raised does not change the result.
///
/// The watcher runs in a new thread. Its argument is the process id, cast to a pointer. The thread is neither joined
/// nor detached. The watcher has to wait for the process:
///
///     void* watch(void* process) {
///       int status = 0;
///       waitpid(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process)), &status, 0);
///       pthread_detach(pthread_self());
///       return nullptr;
///     }
///
/// @param path          of the program; a relative path starts at the working folder
/// @param args          its arguments, without the path
/// @param bringToFront  whether to raise its window; `watcher` is ignored then
/// @param watcher       runs in a thread of its own; may be null
/// @return whether the program was started
bool utilCreateProcess(const std::string& path, const std::vector<std::string>& args, bool bringToFront,
                       void* (*watcher)(void*));

/// Starts a program without arguments, with the working folder, output and errors of this process. May be called from
/// any thread.
///
/// @return whether the program was started
bool utilLaunchApplication(const std::string& path);

/// Opens a URL in the user's default program. May be called from any thread.
///
/// - On Linux the desktop's settings name the program for the scheme (`x-scheme-handler/…`); for files, the program for
///   the file's type.
/// - A session bus that does not reply delays the start by two seconds.
///
/// @param url  an absolute URL (RFC 3986). "http://h/a b", "h/a" and "" are not; macOS accepts unescaped brackets.
/// @return whether a program was started; on Linux always false without a display
bool utilOpenURL(const std::string& url);

/// Asks the workflows of the update notifier to end, and kills the notifier if they do not.
///
/// 1. The workflows hold slots of a lock of the machine: an `OVNSemaphoreLock` of type `SystemLock` with the number
///    77445459 and 255 slots. If no slot is held, the function returns true. It never takes a slot itself.
/// 2. Posts the notification "com.orvane.orvane_application_manager.VormNotifier.TerminateInstance_Notification" with
///    the object "com.orvane.orvane_application_manager.VormNotifier" to all sessions.
///    On Linux this is the D-Bus signal "TerminateInstance_Notification" of the interface that the object names, from
///    the path "/com/orvane/orvane_application_manager/VormNotifier", on the session bus and on the system bus.
/// 3. Waits up to 30 seconds until no slot is held.
/// 4. Runs "kill -9" for every process whose program path contains "Vorm Updates Notifier".
/// 5. Waits up to 2 more seconds.
///
/// While it waits, it serves the events of the calling thread's run loop in steps of half a second; see
/// `utilCreateProcess`.
///
/// @return whether no slot is held; false also if there is no memory for the lock object
bool utilCloseAllNotificationWorkflows();

/// @file
/// ## Logs
///
/// Component "Native-Utils". `utilLaunchApplication` and `utilOpenURL` log nothing. "Launch Process With Task " ends in
/// a blank.
///
/// - P: `utilCreateProcessWithReturnCode`
/// - C: `utilCreateProcess`
/// - W: `utilCloseAllNotificationWorkflows`
///
/// | message | level | function | when |
/// |---|---|---|---|
/// | "CreateProcess failed. PathToProcess does not exist." | error | P | `path` is empty |
/// | "File doesnot exists at: '%s'" | error | P | nothing exists at `path` |
/// | "Launch Process at path %s" | debug | P, C | before the start |
/// | "Launch Process With Arg %d : %s" | debug | P, C | before the start, for each argument; its index from 0 |
/// | "Launch Process With Task " | info | P, C | before the start |
/// | "Launch Process With Task " | error | P | the program cannot be started |
/// | "Launch Process get FSRef  ErrorString (%s:%s), For file %s" | warning | C | `path` cannot be referred to |
/// | "Launching process .... %d" | info | C | before the window is raised; the process id |
/// | "Bring to front process .... %d" | info | C | the window was raised; the process id |
/// | "Failed bring front... took much time to Launch Process %s" | warning | C | the window was not raised |
/// | "Error Failed to Create GlobalNonDeploymentWorkflowLock Object ..." | fatal | W | no memory for the lock |
/// | "Error Failed to close Notification Workflows. Trying to kill update notifier." | warning | W | step 4 |
/// | "Error Failed to kill update notifier." | warning | W | a slot is held after step 5 |
