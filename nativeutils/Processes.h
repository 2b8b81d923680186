/// @file
/// Starts programs, opens addresses, and ends the update notifier before work that must not run beside it.
///
/// A program is given by its path; no PATH is searched, and no shell takes part, so arguments need no quotes. A path or
/// an argument ends at its first NUL. A started process has this process's environment, every signal at its default,
/// and no open file but its standard input, output and error. It is not tracked after the call. On Linux nothing is
/// left of it in the process table once it has ended: a sleeping thread of this library waits for it, and for no other
/// child, except where a function says that the process is left to a watcher. A program that itself waits for all its
/// children (`wait`, SIGCHLD ignored) may get there first; an exit status is then not known.
///
/// On macOS Foundation starts the processes and collects their ends itself, also that of a process left to a watcher,
/// whose `waitpid` may find it taken. Paths and arguments have to be UTF-8 there.
///
/// No function throws. Messages go to the application's log with the component "Native-Utils"; what is logged at which
/// level stands with each function. All may be used in a program without windows and without a main loop.

#pragma once

#include <string>
#include <vector>

/// Starts a program in the folder that holds it, its output and errors discarded, and waits for its end if asked to.
/// May be called from any thread; no events are served while it waits, except on macOS, where Foundation waits in the
/// thread's run loop.
///
/// Logged are at debug level "Launch Process at path %s" and for each argument "Launch Process With Arg %d : %s" with
/// its number from 0, then at info level "Launch Process With Task " (which ends in a blank). Errors are "CreateProcess
/// failed. PathToProcess does not exist." (an empty path), "File doesnot exists at: '%s'" (nothing is there) and
/// "Launch Process With Task " (it cannot be started: a folder, a file that may not be executed, a script without its
/// "#!" line, a folder that may not be entered); each gives false, with `status` and `returnCode` unchanged.
///
///     utilCreateProcessWithReturnCode("/bin/false", {}, status, true, returnCode, false)  => true, returnCode is 1
///
/// @param path       the program
/// @param args       its arguments, without the path
/// @param status     0 when the call does not wait, else unchanged
/// @param wait       whether to return only when the program has ended
/// @param returnCode 0 when the call does not wait; else the program's exit status, or the number of the signal that
///                   ended it. An end of which the status is not known gives -1, sign-extended.
/// @param unused     has no meaning
/// @return whether the program was started
bool utilCreateProcessWithReturnCode(const std::string& path, const std::vector<std::string>& args,
                                     unsigned long& status, bool wait, unsigned long& returnCode, bool unused);

/// Starts a program with this process's working folder, output and errors, and brings it to the front or has a thread
/// watch it, if asked to.
///
/// Logs as `utilCreateProcessWithReturnCode` at debug and info level. Every failure is false without a further message:
/// an empty path, one where nothing is, or a program that cannot be started.
///
/// To the front: the program is started through the application launcher where there is one, and no more is done.
/// Without (Linux has none) it is started as any other; "Launching process .... %d" is logged at info level with the
/// number of the process. Then, for at most 10 seconds, its window is awaited, while the calling thread's run loop
/// serves events; so call it from the thread that has one, usually the first. On Linux that is GLib's default main
/// context, and the window is one on the X display that says the process's number (`_NET_WM_PID`); the window manager
/// is asked to activate it. "Bring to front process .... %d" at info level tells that it was, the warning "Failed bring
/// front... took much time to Launch Process %s" with the path that it was not, in time or at all; without a display
/// that is said at once, with one that does not answer after two seconds. The warning "Launch Process get FSRef
/// ErrorString (%s:%s), For file %s" (two blanks before "ErrorString"; error, its meaning, path) tells that the
/// launcher could not refer to the file.
///
/// The watcher: without `bringToFront`, the function runs in a new thread, with the number of the process as its
/// argument, cast to a pointer. The thread is neither joined nor detached, and the process is left for it to wait for:
///
///     void* watch(void* process) {
///       int status = 0;
///       waitpid(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process)), &status, 0);
///       pthread_detach(pthread_self());
///       return nullptr;
///     }
///
/// @param path         the program; a relative one is looked for from the working folder
/// @param args         its arguments, without the path
/// @param bringToFront whether to bring it to the front; `watcher` is not used then
/// @param watcher      runs in a thread of its own; null: none
/// @return whether the program was started
bool utilCreateProcess(const std::string& path, const std::vector<std::string>& args, bool bringToFront,
                       void* (*watcher)(void*));

/// Starts a program without arguments, with this process's working folder, output and errors. Logs nothing. May be
/// called from any thread.
///
/// @return whether the program was started
bool utilLaunchApplication(const std::string& path);

/// Opens an address in the user's default program for it. Logs nothing. May be called from any thread.
///
/// On Linux the program is the one that the desktop's settings name for the scheme (`x-scheme-handler/…`), and for
/// files the one for their type. A bus of the session that does not answer is given up after two seconds, and the
/// program is started without it.
///
/// @param url an absolute URL by RFC 3986: "http://h/a b", "h/a" and "" are none; on macOS brackets need no escape
/// @return whether such a program was started; on Linux always false without a display
bool utilOpenURL(const std::string& url);

/// Asks the update notifier's workflows to end, and kills the notifier when they do not.
///
/// They hold slots of a lock of the whole machine (an `OVNSemaphoreLock` of type `SystemLock` with the number 77445459
/// and 255 slots), which is only looked at here. While nobody holds one, the answer is true at once. Otherwise the
/// notification "com.orvane.orvane_application_manager.VormNotifier.TerminateInstance_Notification" is posted to all
/// sessions with the object "com.orvane.orvane_application_manager.VormNotifier": on Linux the D-Bus signal
/// "TerminateInstance_Notification" of the interface that the object names, from the path
/// "/com/orvane/orvane_application_manager/VormNotifier", on the session's bus and on the system's. The slots have 30
/// seconds to come back; then every process whose program's path contains "Vorm Updates Notifier" is killed by "kill
/// -9", and the slots have 2 more. Meanwhile the calling thread's run loop serves events in turns of half a second; see
/// `utilCreateProcess`.
///
/// Warnings are "Error Failed to close Notification Workflows. Trying to kill update notifier." and "Error Failed to
/// kill update notifier."; "Error Failed to Create GlobalNonDeploymentWorkflowLock Object ..." is fatal.
///
/// @return whether no workflow holds a slot any more; false too when the lock could not be looked at for want of memory
bool utilCloseAllNotificationWorkflows();
