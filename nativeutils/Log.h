/// @file
/// How much a program that uses these functions writes into the application's log.
///
/// The log is the file "Kelvo.log" in the log folder of the user at the machine, shared by every program of the family;
/// the functions of this library write there with the component "Native-Utils". Nothing is written before
/// utilSetLogLevel has been called, though the first function with something to say makes the file.

#pragma once

/// Starts the log, or changes how much is written to it from now on.
///
/// Call it once at the start of the program, before other threads use the library. Levels that have been enabled stay
/// enabled; a less talkative level is kept by the log file itself.
///
/// @param level      1 fatal, 2 error, 3 warning, 4 info, 5 debug, 6 trace; each level all of the former and more.
///                   Another number leaves the level as it is.
/// @param component  the program's name, which every line carries from now on; null leaves it as it is.
/// @param context    a further word for every line, such as the product's name; null leaves it as it is.
void utilSetLogLevel(int level, const char* component, const char* context);
