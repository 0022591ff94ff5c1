#include "MsgRouter.h"

#include <algorithm>
#include <utility>

namespace hwapi::nub {
namespace {

bool Before(const MsgRouter::Delegate& delegate, u32 msgId) { return delegate->MsgId() < msgId; }

}  // namespace

void MsgRouter::Add(Delegate delegate) {
  const std::lock_guard lock(m_lock);
  const auto place = std::lower_bound(m_delegates.begin(), m_delegates.end(), delegate->MsgId(), Before);
  if (place != m_delegates.end() && (*place)->MsgId() == delegate->MsgId()) {
    place->swap(delegate);
  } else {
    m_delegates.insert(place, std::move(delegate));
  }
}

MsgRouter::Delegate MsgRouter::Find(u32 msgId) const {
  const std::lock_guard lock(m_lock);
  const auto place = std::lower_bound(m_delegates.begin(), m_delegates.end(), msgId, Before);
  return place != m_delegates.end() && (*place)->MsgId() == msgId ? *place : nullptr;
}

}  // namespace hwapi::nub
