#include "SenderLimit.h"

#include "Acceptor.h"
#include "ConnectionBounds.h"

#include <algorithm>
#include <limits>

namespace hwapi::qis {

SenderLimit& SenderLimit::Own() {
  static auto* const limit = new SenderLimit;  // the platform's thread outlives the end of main
  return *limit;
}

bool SenderLimit::MakeRoomFor(uid_t user) {
  Sender leaving{};
  std::uint64_t key = 0;
  {
    const std::lock_guard lock(m_mutex);
    uid_t crowd = user;
    if (!IsFull(user, crowd)) {
      return true;
    }
    const auto silent = FindSilent(crowd);
    if (silent == m_senders.end()) {
      return false;
    }
    key = silent->first;
    leaving = silent->second;
  }
  if (const auto acceptor = leaving.acceptor.lock()) {
    acceptor->End(key);
  }
  return true;
}

/// @param crowd out: the user of whom one has to go
bool SenderLimit::IsFull(uid_t user, uid_t& crowd) const {
  const auto own = m_perUser.find(user);
  if (own != m_perUser.end() && own->second >= OwnBounds().perUser) {
    return true;
  }
  if (m_senders.size() < OwnBounds().all) {
    return false;
  }
  crowd = std::ranges::max_element(m_perUser, {}, [](const auto& entry) { return entry.second; })->first;
  return true;
}

SenderLimit::Senders::iterator SenderLimit::FindSilent(uid_t user) {
  auto silent = m_senders.end();
  std::int64_t sinceMs = std::numeric_limits<std::int64_t>::max();
  for (auto sender = m_senders.begin(); sender != m_senders.end(); ++sender) {
    if (sender->second.user != user) {
      continue;
    }
    const auto channel = sender->second.channel.lock();
    const std::int64_t lastUsedMs = channel ? channel->LastUsedMs() : 0;
    if (lastUsedMs < sinceMs && (!channel || channel->IsEmpty())) {
      silent = sender;
      sinceMs = lastUsedMs;
    }
  }
  return silent;
}

void SenderLimit::Enter(std::uint64_t key, Sender sender) {
  const std::lock_guard lock(m_mutex);
  ++m_perUser[sender.user];
  m_senders.emplace(key, std::move(sender));
}

void SenderLimit::Leave(std::uint64_t key) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_senders.find(key);
  if (found == m_senders.end()) {
    return;
  }
  if (const auto user = m_perUser.find(found->second.user); --user->second == 0) {
    m_perUser.erase(user);
  }
  m_senders.erase(found);
}

}  // namespace hwapi::qis
