#include "OwnMessages.h"

#include <utility>

namespace hwapi::qis {
namespace {

std::size_t RoomOf(const Message& message) { return message.WireSize() + kSlack; }

}  // namespace

bool OwnMessages::Post(MessagePtr message, WhenFull whenFull) {
  const std::lock_guard lock(m_mutex);
  const std::size_t room = RoomOf(*message);
  if (whenFull == WhenFull::Drop && m_bytes + room > kRoomBytes) {
    return false;
  }
  m_messages.Append(std::move(message));
  m_bytes += room;
  ++m_count;
  ++m_posts;
  return true;
}

MessagePtr OwnMessages::Take(const u16* filter) {
  const std::lock_guard lock(m_mutex);
  MessagePtr message = m_messages.Take(filter);
  if (message) {
    m_bytes -= RoomOf(*message);
    --m_count;
  }
  return message;
}

}  // namespace hwapi::qis
