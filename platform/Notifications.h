// Short messages to whoever listens in the user's session and in those of others.

#pragma once

#include <string>

namespace platform {

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
