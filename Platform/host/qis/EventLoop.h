/// @file
/// The platform's thread for connections: one per process, started with the first thing it watches.
#pragma once

#include "Fd.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace hwapi::qis {

/// Something that reacts when a watched descriptor is readable or hung up.
class EventHandler {
 public:
  virtual ~EventHandler() = default;
  /// Runs on the platform's thread, without any lock of the loop. May come once more after Forget.
  /// @param key as Watch gave it
  virtual void OnReady(std::uint64_t key) = 0;
};

class EventLoop {
 public:
  static EventLoop& Own();

  /// Watches a descriptor until Forget.
  /// @return key of the watch, never 0; 0 with errno set when it cannot be watched
  std::uint64_t Watch(int fd, std::shared_ptr<EventHandler> handler);
  /// Watches a descriptor for one event after each call of Arm.
  /// @return as Watch
  std::uint64_t WatchOnce(int fd, std::shared_ptr<EventHandler> handler);
  /// Lets the next event of a watch of WatchOnce be reported. It comes at once if the descriptor is ready.
  void Arm(std::uint64_t key, int fd);
  /// Ends a watch; before the descriptor is closed. Key 0 is ignored.
  void Forget(std::uint64_t key, int fd);

 private:
  EventLoop() = default;
  static void* Run(void* loop);
  std::uint64_t Add(int fd, std::uint32_t events, std::shared_ptr<EventHandler> handler);
  bool Start();
  void Dispatch();

  std::mutex m_mutex;
  Fd m_epoll;
  std::uint64_t m_nextKey = 1;
  std::map<std::uint64_t, std::shared_ptr<EventHandler>> m_handlers;
};

}  // namespace hwapi::qis
