/// @file
/// Who may send messages to this process and ask it for files.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace hwapi::qis {

/// What the kernel says about the process at the other end of a connection.
struct Peer {
  pid_t pid = 0;
  uid_t uid = 0;
  std::vector<gid_t> groups;  ///< first and supplementary ones
  bool isKnown = true;        ///< false: one of the users that this process cannot tell from each other
};

/// What the kernel shows instead of users and groups that the own user namespace does not know, such as that of a board
/// which an ordinary user brought up.
inline constexpr uid_t kOverflowUser = 65534;

/// @param uidMap path of a user namespace's /proc/PID/uid_map
/// @return whether that namespace knows every user of the host; true where the kernel has no such map
bool KnowsAllUsers(const char* uidMap);

/// Users and groups that may send, beside root and the receiver's own user.
struct AccessRules {
  std::vector<uid_t> users;
  std::vector<gid_t> groups;

  /// Looks up the names of a board description ("NAME", "group:NAME"). A name that this host does not know is told at
  /// Warning and allows nobody.
  static AccessRules FromNames(const std::vector<std::string>& names);
};

/// @param ownUser the receiver's effective user
/// @return false also for a user that is not known, whatever the rules name
bool MaySend(const Peer& peer, const AccessRules& rules, uid_t ownUser);

/// @return whether the rules of the own board's description let a peer send to this process
bool IsAllowed(const Peer& peer);

/// Tells at Error, once a process, that a peer is refused, and what would allow it.
/// @param what a literal, e.g. "Messages of"; the process follows
void TellRefusal(const char* what, const Peer& peer);

/// @return who is at the other end of a connected socket; nobody (the overflow user) when the kernel does not tell
Peer PeerOf(int socket);

}  // namespace hwapi::qis
