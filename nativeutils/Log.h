/// @file
/// Starts the log of a program that uses this library, and sets its level.
///
/// - The log is the file "Kelvo.log" in the console user's "Library/Logs" folder. All programs of the
///   product family share it.
/// - The other functions of this library log with the component "Native-Utils".
/// - Nothing is written before `utilSetLogLevel` is called, but the first function with a message creates the file.

#pragma once

/// Starts the log, or changes its level.
///
/// - Call it once at the start of the program, before other threads use the library.
/// - Enabled levels stay enabled. After a change to a less verbose level the log drops the other messages.
///
/// @param level      1 fatal, 2 error, 3 warning, 4 info, 5 debug, 6 trace. Each level includes the levels before it.
///                   Another number leaves the level unchanged.
/// @param component  the program's name, which is written in every line from now on; null leaves it unchanged
/// @param context    another text for every line, such as the product's name; null leaves it unchanged
void utilSetLogLevel(int level, const char* component, const char* context);

/// @file
/// ## Logs
///
/// `utilSetLogLevel` logs with the component that it sets, level info, if `component` is not null.
///
/// | message | value |
/// |---|---|
/// | "Build Version - %s" | the version of the library |
/// | "Logging Level verbosity Set  to %d" | `level` |
