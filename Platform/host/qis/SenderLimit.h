/// @file
/// How many senders of other processes this process is connected to.
#pragma once

#include "Channel.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace hwapi::qis {

class Acceptor;

/// The senders that are connected, within OwnBounds. When one more comes than there is room for, the one that has been
/// silent for longest goes; it finds its way again with its next message. A user that has all its connections only
/// displaces itself. Every operation may be called from every thread.
class SenderLimit {
 public:
  struct Sender {
    uid_t user;
    std::weak_ptr<Acceptor> acceptor;
    std::weak_ptr<Channel> channel;  ///< none of a sender that is refused: such go first
  };

  static SenderLimit& Own();

  /// Ends a connection where that is needed. Called without the lock of any acceptor.
  /// @return false when there is no room: every sender's messages are still unread
  bool MakeRoomFor(uid_t user);
  /// @param key names it; differs from that of every other connection
  void Enter(std::uint64_t key, Sender sender);
  void Leave(std::uint64_t key);

 private:
  using Senders = std::map<std::uint64_t, Sender>;
  bool IsFull(uid_t user, uid_t& crowd) const;
  Senders::iterator FindSilent(uid_t user);

  std::mutex m_mutex;
  Senders m_senders;
  std::map<uid_t, std::size_t> m_perUser;
};

}  // namespace hwapi::qis
