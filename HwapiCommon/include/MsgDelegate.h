/// @file
/// Message ids bound to handlers.
#pragma once

#include "GloTypes.h"

namespace ps::hwapi::common {

/// Handles the messages of one id.
class MsgDelegateBase {
 public:
  explicit MsgDelegateBase(u32 msgId) : m_msgId(msgId) {}
  MsgDelegateBase(const MsgDelegateBase&) = delete;
  MsgDelegateBase& operator=(const MsgDelegateBase&) = delete;
  virtual ~MsgDelegateBase() = default;
  /// @param msg the received message; stays the caller's
  virtual void HandleMsg(void* msg) = 0;

  u32 MsgId() const { return m_msgId; }

 private:
  const u32 m_msgId;
};

/// Handles messages with a member function of @p T.
template <typename T>
class MsgMethodDelegate : public MsgDelegateBase {
 public:
  using Method = void (T::*)(void* msg);

  /// @param handler stays the caller's and outlives the delegate
  MsgMethodDelegate(T* handler, Method method, u32 msgId)
      : MsgDelegateBase(msgId), m_handler(handler), m_method(method) {}
  void HandleMsg(void* msg) override { (m_handler->*m_method)(msg); }

 private:
  T* const m_handler;
  const Method m_method;
};

}  // namespace ps::hwapi::common
