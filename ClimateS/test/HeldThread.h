/// @file
/// A thread that is held at one of its driver or file calls. Needs HeldPlatform.cpp and the linker's --wrap.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace ps::hwapi::common::climate {

/// Runs on a thread of its own until it comes to a call, and goes on when it may.
class HeldThread {
 public:
  /// Returns when the thread is held, or has ended without being held.
  /// @param work     what the thread does
  /// @param function whose calls count; "" for all driver and file calls
  /// @param nth      the moment at which it is held, from 1: before the first call, after it, before the second one,
  /// ...
  HeldThread(std::function<void()> work, std::string function, unsigned nth);
  HeldThread(const HeldThread&) = delete;
  HeldThread& operator=(const HeldThread&) = delete;
  ~HeldThread() { Finish(); }

  /// @return where it is held: function and moment; "" when it ended without being held
  const std::string& Place() const { return m_place; }
  /// Lets a thread that is held go on until the @p nth moment from here, from 1; returns when it is held there or has
  /// ended.
  void GoOnTo(unsigned nth);
  /// Lets the thread go on, and waits for its end.
  void Finish();
  /// @return whether it went on by itself, since nobody let it for a very long time
  bool GaveUp() const { return m_gaveUp; }

  /// A moment in the calling thread; it stays here if this is the one at which it is to be held.
  static void Moment(const char* function);

 private:
  void Pass(const char* function);

  const std::string m_function;
  unsigned m_momentsLeft;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::string m_place;
  bool m_arrived = false;
  bool m_mayGoOn = false;
  bool m_gaveUp = false;
  std::thread m_thread;
};

}  // namespace ps::hwapi::common::climate
