/// @file
/// Keeps a created message from leaking.
#pragma once

#include "AaSysCom.h"

namespace ps::hwapi::common {

/// Destroys a message at the end of the scope unless it was sent: sending sets the handle to null.
class MsgGuard {
 public:
  /// @param msg handle of a created message; outlives the guard
  explicit MsgGuard(void*& msg) : m_msg(msg) {}
  MsgGuard(const MsgGuard&) = delete;
  MsgGuard& operator=(const MsgGuard&) = delete;
  ~MsgGuard() {
    if (m_msg != nullptr) AaSysComMsgDestroy(&m_msg);
  }

 private:
  void*& m_msg;
};

}  // namespace ps::hwapi::common
