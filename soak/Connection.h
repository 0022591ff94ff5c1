/// @file
/// A connection to a task of the daemon, made by hand.
#pragma once

#include "Acceptor.h"
#include "Fd.h"

#include <string>

namespace soak {

/// Connects to a socket. @return none with errno set
hwapi::qis::Fd Connect(const std::string& path);

/// What the daemon says to a new connection.
struct Greeting {
  bool came = false;
  hwapi::qis::Acknowledgement acknowledgement{};
  hwapi::qis::Fd channel;  ///< sending end of a channel of its own; none when none was passed
};
/// Waits for the next thing that the daemon says over a connection, at most kDeadline.
Greeting ReceiveGreeting(int connection);

}  // namespace soak
