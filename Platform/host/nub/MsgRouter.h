/// @file
/// Which delegate answers which message id.
#pragma once

#include "MsgDelegate.h"

#include <memory>
#include <mutex>
#include <vector>

namespace hwapi::nub {

/// The delegates of a service. Every operation may be called from every thread.
class MsgRouter {
 public:
  using Delegate = std::shared_ptr<ps::hwapi::common::MsgDelegateBase>;

  /// Lets a delegate answer its id from now on. The one that did so before is destroyed when its last call returns.
  void Add(Delegate delegate);
  /// @return the delegate of an id, null when there is none; the caller's share keeps it alive during the call
  Delegate Find(u32 msgId) const;

 private:
  mutable std::mutex m_lock;
  std::vector<Delegate> m_delegates;  ///< sorted by id
};

}  // namespace hwapi::nub
