/// @file
/// Descriptors that travel with a packet from one process to another.
#pragma once

#include "Fd.h"

#include <sys/types.h>

#include <cstddef>

namespace hwapi::qis {

/// Sends a packet over a local socket without waiting, with a duplicate of a descriptor.
/// @param fd -1: none
/// @return as send
ssize_t SendWithFd(int socket, const void* packet, std::size_t size, int fd);

/// Takes a packet without waiting.
/// @param fd out: the descriptor that came with it, closed on exec; none when there was none
/// @return as recv
ssize_t ReceiveWithFd(int socket, void* packet, std::size_t size, Fd& fd);

/// Lets no descriptor come with packets, to a socket or to those that connect to it: the thread that drops one closes
/// it, and whoever sent the last one of a network connection decides how long that takes (SO_LINGER). Sending one
/// fails.
/// @return false where the kernel does not know this (before Linux 6.16)
bool RefuseFds(int socket);

}  // namespace hwapi::qis
