#include "Access.h"

#include "AaSysLog.h"
#include "BoardDescription.h"
#include "ComLog.h"

#include <grp.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>

namespace hwapi::qis {
namespace {

constexpr std::string_view kGroupPrefix = "group:";
constexpr std::size_t kLookupBuffer = 16 * 1024;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::optional<uid_t> UserId(const std::string& name) {
  std::vector<char> buffer(kLookupBuffer);
  passwd entry{};
  passwd* found = nullptr;
  ::getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? std::optional(found->pw_uid) : std::nullopt;
}

std::optional<gid_t> GroupId(const std::string& name) {
  std::vector<char> buffer(kLookupBuffer);
  group entry{};
  group* found = nullptr;
  ::getgrnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? std::optional(found->gr_gid) : std::nullopt;
}

template <typename Id>
void Add(std::vector<Id>& ids, std::optional<Id> id, const std::string& name) {
  if (id) {
    ids.push_back(*id);
    return;
  }
  AaSysLogPrintE(EAaSysLogSeverityLevel_Warning, kPlatformFeature,
                 "access.send of the board description names \"%s\", which this host does not know: it allows nobody",
                 name.c_str());
}

}  // namespace

AccessRules AccessRules::FromNames(const std::vector<std::string>& names) {
  AccessRules rules;
  for (const std::string& name : names) {
    if (name.starts_with(kGroupPrefix)) {
      Add(rules.groups, GroupId(name.substr(kGroupPrefix.size())), name);
    } else {
      Add(rules.users, UserId(name), name);
    }
  }
  return rules;
}

bool KnowsAllUsers(const char* uidMap) {
  constexpr unsigned long kAllUsers = 0xFFFFFFFF;  // the greatest number means none
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(uidMap, "re"));
  if (!file) {
    return errno == ENOENT;
  }
  unsigned long inside = 0;
  unsigned long outside = 0;
  unsigned long count = 0;
  unsigned long known = 0;
  while (std::fscanf(file.get(), "%lu %lu %lu", &inside, &outside, &count) == 3) {
    known += count;
  }
  return known >= kAllUsers;
}

bool MaySend(const Peer& peer, const AccessRules& rules, uid_t ownUser) {
  const auto allowed = [&](gid_t group) { return std::ranges::find(rules.groups, group) != rules.groups.end(); };
  if (!peer.isKnown) {
    return false;
  }
  return peer.uid == 0 || peer.uid == ownUser || std::ranges::find(rules.users, peer.uid) != rules.users.end() ||
         std::ranges::any_of(peer.groups, allowed);
}

bool IsAllowed(const Peer& peer) {
  const uid_t ownUser = ::geteuid();
  if (MaySend(peer, {}, ownUser)) {
    return true;  // names are looked up only when a stranger comes
  }
  static const auto* const rules = new AccessRules(AccessRules::FromNames(board::OwnBoard().access.send));
  return MaySend(peer, *rules, ownUser);
}

void TellRefusal(const char* what, const Peer& peer) {
  constexpr std::size_t kPeersKnown = 256;
  static auto* const mutex = new std::mutex;
  static auto* const told = new std::set<std::tuple<std::string_view, pid_t, uid_t>>;
  const std::lock_guard lock(*mutex);
  if (told->size() >= kPeersKnown) {
    told->clear();
  }
  if (!told->emplace(what, peer.pid, peer.uid).second) {
    return;
  }
  if (peer.isKnown) {
    AaSysLogPrintE(EAaSysLogSeverityLevel_Error, kPlatformFeature,
                   "%s process %d of user %u are refused: name the user or one of its groups in access.send of %s to "
                   "allow them",
                   what, static_cast<int>(peer.pid), static_cast<unsigned>(peer.uid), board::OwnBoard().path.c_str());
  } else {
    AaSysLogPrintE(
        EAaSysLogSeverityLevel_Error, kPlatformFeature,
        "%s process %d are refused: an ordinary user brought this board up, and no other user can be told apart "
        "there; bring it up as root to let those in whom access.send of %s names",
        what, static_cast<int>(peer.pid), board::OwnBoard().path.c_str());
  }
}

Peer PeerOf(int socket) {
  ucred credentials{.pid = 0, .uid = kOverflowUser, .gid = kOverflowUser};
  socklen_t size = sizeof credentials;
  ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size);
  Peer peer{.pid = credentials.pid, .uid = credentials.uid, .groups = {}, .isKnown = true};
  size = 0;
  ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, nullptr, &size);  // tells the size it needs
  peer.groups.resize(size / sizeof(gid_t));
  if (size != 0 && ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, peer.groups.data(), &size) != 0) {
    peer.groups.clear();
  }
  peer.groups.push_back(credentials.gid);
  peer.isKnown = peer.uid != kOverflowUser || KnowsAllUsers("/proc/self/uid_map");
  return peer;
}

}  // namespace hwapi::qis
