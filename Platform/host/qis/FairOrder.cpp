#include "FairOrder.h"

#include <algorithm>

namespace hwapi::qis {
namespace {

/// The heap's order: whether @p left is served later.
bool IsLater(const Turn* left, const Turn* right) {
  return left->usedNs != right->usedNs ? left->usedNs > right->usedNs : left->arrival > right->arrival;
}

}  // namespace

void FairOrder::Add(Turn& turn) {
  if (turn.waits) {
    return;
  }
  m_waiting.push_back(&turn);
  turn.usedNs = std::max(turn.usedNs, m_nowNs);
  turn.arrival = m_arrivals++;
  turn.waits = true;
  std::push_heap(m_waiting.begin(), m_waiting.end(), IsLater);
}

Turn* FairOrder::Take() {
  if (m_waiting.empty()) {
    return nullptr;
  }
  std::pop_heap(m_waiting.begin(), m_waiting.end(), IsLater);
  Turn* const next = m_waiting.back();
  m_waiting.pop_back();
  next->waits = false;
  m_nowNs = std::max(m_nowNs, next->usedNs);
  m_maxUsedNs = std::max(m_maxUsedNs, m_nowNs);
  return next;
}

void FairOrder::Remove(Turn& turn) {
  if (!turn.waits) {
    return;
  }
  std::erase(m_waiting, &turn);
  std::make_heap(m_waiting.begin(), m_waiting.end(), IsLater);
  turn.waits = false;
}

void FairOrder::Charge(Turn& turn, std::int64_t ns) {
  turn.usedNs += ns;
  m_maxUsedNs = std::max(m_maxUsedNs, turn.usedNs);
}

}  // namespace hwapi::qis
