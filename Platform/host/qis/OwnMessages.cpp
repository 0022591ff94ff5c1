#include "OwnMessages.h"

#include <bit>
#include <utility>

namespace hwapi::qis {
namespace {

std::size_t RoomOf(const Message& message) { return message.WireSize() + kSlack; }

constexpr unsigned kNone = OwnMessages::kTurns;
/// Turns that threads have, a bit each.
constinit std::atomic<unsigned> g_taken{0};
/// The calling thread's, once it has posted. Outlives its Turn below: what still ends after that may post, too.
constinit thread_local unsigned t_turn = kNone;

/// The lowest free turn, for the thread that makes it, until that ends.
class Turn {
 public:
  Turn() {
    unsigned taken = g_taken;
    do {
      t_turn = static_cast<unsigned>(std::countr_one(taken));
      if (t_turn >= kNone - 1) {  // the last one is everybody else's
        t_turn = kNone - 1;
        return;
      }
    } while (!g_taken.compare_exchange_weak(taken, taken | 1u << t_turn));
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (t_turn != kNone - 1) {
      g_taken &= ~(1u << t_turn);
    }
  }
};

unsigned OwnTurn() {
  if (t_turn == kNone) {
    thread_local const Turn turn;
  }
  return t_turn;
}

}  // namespace

bool OwnMessages::Post(MessagePtr message, WhenFull whenFull) {
  const std::lock_guard lock(m_mutex);
  if (!Append(std::move(message), whenFull)) {
    return false;
  }
  ++m_count;
  ++m_posts;
  return true;
}

bool OwnMessages::Append(MessagePtr message, WhenFull whenFull) {
  if (whenFull == WhenFull::Keep) {
    m_timers.Append(std::move(message));
    return true;
  }
  Source& thread = m_threads[OwnTurn()];
  const std::size_t room = RoomOf(*message);
  if (thread.bytes + room > kRoomBytes) {
    return false;
  }
  thread.messages.Append(std::move(message));
  thread.bytes += room;
  return true;
}

MessagePtr OwnMessages::Take(const u16* filter) {
  const std::lock_guard lock(m_mutex);
  MessagePtr message = m_timers.Take(filter);
  if (!message) {
    message = TakeInTurn(filter);
  }
  if (message) {
    --m_count;
  }
  return message;
}

MessagePtr OwnMessages::TakeInTurn(const u16* filter) {
  for (unsigned i = 0; i < kTurns; ++i) {
    const unsigned turn = (m_next + i) % kTurns;
    Source& thread = m_threads[turn];
    if (MessagePtr message = thread.messages.Take(filter)) {
      thread.bytes -= RoomOf(*message);
      m_next = turn + 1;
      return message;
    }
  }
  return nullptr;
}

}  // namespace hwapi::qis
