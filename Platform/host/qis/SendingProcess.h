/// @file
/// A process that sends, seen by an execution unit that receives.
#pragma once

#include "FairOrder.h"

namespace hwapi::qis {

class Channel;

/// All channels of one process share one turn: it does not get more by connecting more often. Holds those of them that
/// have something to be received, in the order in which it came. Used by the receiving execution unit.
class SendingProcess : public Turn {
 public:
  /// Notes that something can be received from a channel, unless it is noted.
  void AddReady(Channel& channel);
  /// @return the channel that is noted for longest, taken out; null when none is
  Channel* TakeReady();
  /// Forgets a channel.
  void RemoveReady(Channel& channel);
  bool HasReady() const { return m_first != nullptr; }

 private:
  Channel* m_first = nullptr;
  Channel* m_last = nullptr;
};

}  // namespace hwapi::qis
