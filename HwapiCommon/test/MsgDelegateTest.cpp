#include "MsgDelegate.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace ps::hwapi::common {
namespace {

/// Writes down what it is given.
class Handler {
 public:
  void Take(void* msg) { m_taken.push_back(msg); }
  void TakeOther(void* msg) { m_takenByOther.push_back(msg); }
  void Refuse(void* /*msg*/) { throw std::runtime_error("refused"); }

  std::vector<void*> m_taken;
  std::vector<void*> m_takenByOther;
};

/// Tells when it is destroyed.
class WatchedDelegate : public MsgDelegateBase {
 public:
  explicit WatchedDelegate(bool& destroyed) : MsgDelegateBase(1), m_destroyed(destroyed) {}
  ~WatchedDelegate() override { m_destroyed = true; }
  void HandleMsg(void* /*msg*/) override {}

 private:
  bool& m_destroyed;
};

TEST(MsgDelegateBase, IsAbstract) { EXPECT_TRUE(std::is_abstract_v<MsgDelegateBase>); }

TEST(MsgDelegateBase, IsDestroyedThroughItsBase) {
  bool destroyed = false;
  std::unique_ptr<MsgDelegateBase>(std::make_unique<WatchedDelegate>(destroyed)).reset();
  EXPECT_TRUE(destroyed);
}

TEST(MsgMethodDelegate, KnowsItsMessageId) {
  Handler handler;
  EXPECT_EQ(MsgMethodDelegate<Handler>(&handler, &Handler::Take, 0x2CF1).MsgId(), 0x2CF1u);
}

TEST(MsgMethodDelegate, CallsTheMethodWithTheMessage) {
  Handler handler;
  MsgMethodDelegate<Handler> delegate(&handler, &Handler::Take, 0x2CF1);
  int message = 0;
  MsgDelegateBase& base = delegate;
  base.HandleMsg(&message);
  EXPECT_EQ(handler.m_taken, std::vector<void*>{&message});
}

TEST(MsgMethodDelegate, CallsOnlyItsOwnMethod) {
  Handler handler;
  MsgMethodDelegate<Handler>(&handler, &Handler::TakeOther, 0x2CF1).HandleMsg(nullptr);
  EXPECT_EQ(handler.m_takenByOther.size(), 1u);
  EXPECT_TRUE(handler.m_taken.empty());
}

TEST(MsgMethodDelegate, CallsOnlyItsOwnObject) {
  Handler handler;
  Handler other;
  MsgMethodDelegate<Handler>(&other, &Handler::Take, 0x2CF1).HandleMsg(nullptr);
  EXPECT_TRUE(handler.m_taken.empty());
  EXPECT_EQ(other.m_taken.size(), 1u);
}

TEST(MsgMethodDelegate, ConstructionCallsNothing) {
  Handler handler;
  const MsgMethodDelegate<Handler> delegate(&handler, &Handler::Take, 0x2CF1);
  EXPECT_TRUE(handler.m_taken.empty());
}

TEST(MsgMethodDelegate, WhatTheMethodThrowsReachesTheCaller) {
  Handler handler;
  MsgMethodDelegate<Handler> delegate(&handler, &Handler::Refuse, 0x2CF1);
  EXPECT_THROW(delegate.HandleMsg(nullptr), std::runtime_error);
}

}  // namespace
}  // namespace ps::hwapi::common
