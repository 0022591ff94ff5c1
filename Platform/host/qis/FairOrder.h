/// @file
/// Who is served next when several senders wait.
#pragma once

#include <cstdint>
#include <vector>

namespace hwapi::qis {

/// A sender's place in the order.
struct Turn {
  std::int64_t usedNs = 0;    ///< time of the receiver that its messages took, on the scale of all that wait
  std::uint64_t arrival = 0;  ///< decides between equals
  bool waits = false;         ///< whether it is in the order
};

/// Serves whoever has used least of the receiver's time; equals in the order in which they came. A flood of messages,
/// or of messages that take long, thus only delays itself: who sends little waits for the one handler that runs. A
/// sender that comes back after a pause has no credit for it, and debts are forgotten as soon as nobody waits.
/// Used by one thread. Allocates nothing beyond the largest number of senders that ever waited.
class FairOrder {
 public:
  /// Lets a sender wait, unless it does. It must not go before it was taken or removed.
  void Add(Turn& turn);
  /// @return the next one, taken out; null when nobody waits
  Turn* Take();
  /// Takes a sender out, wherever it is.
  void Remove(Turn& turn);
  /// Notes that a sender, which does not wait, used the receiver for a time.
  void Charge(Turn& turn, std::int64_t ns);
  /// Nobody has anything to be served: whoever comes next finds all equal.
  void ForgetDebts() { m_nowNs = m_maxUsedNs; }
  /// @return whether ForgetDebts would change something
  bool HasDebts() const { return m_nowNs != m_maxUsedNs; }

  bool IsEmpty() const { return m_waiting.empty(); }

 private:
  std::vector<Turn*> m_waiting;  ///< a heap, the next one first
  std::int64_t m_nowNs = 0;      ///< what a newcomer is taken to have used: as much as who was served last
  std::int64_t m_maxUsedNs = 0;
  std::uint64_t m_arrivals = 0;
};

}  // namespace hwapi::qis
