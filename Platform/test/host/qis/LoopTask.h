/// @file
/// Test code on the thread for connections.
#pragma once

#include "EventLoop.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <semaphore>
#include <utility>

namespace hwapi::test {

/// Something that is ready at once, and runs a function on the thread for connections.
class LoopTask : public qis::EventHandler {
 public:
  explicit LoopTask(std::function<void()> function) : m_function(std::move(function)) {}
  /// @return once it is watched
  static std::shared_ptr<LoopTask> Start(std::function<void()> function) {
    auto task = std::make_shared<LoopTask>(std::move(function));
    EXPECT_NE(qis::EventLoop::Own().Watch(task->m_ready.Get(), task), 0u);
    return task;
  }
  void OnReady(std::uint64_t key) override {
    qis::EventLoop::Own().Forget(key, m_ready.Get());
    m_function();
    m_done.release();
  }
  /// @return false when it did not run in a generous time
  bool AwaitEnd() { return m_done.try_acquire_for(std::chrono::seconds(20)); }

 private:
  const qis::Fd m_ready{::eventfd(1, EFD_CLOEXEC)};
  const std::function<void()> m_function;
  std::binary_semaphore m_done{0};
};

}  // namespace hwapi::test
