/// @file
/// The threads of this process that have to go on, and where they rest.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace hwapi::qis {

/// Lets the calling thread be watched, and gives it a name, as long as this object lives: on the thread's own stack.
class WatchedThread {
 public:
  /// What depends on a thread.
  enum class Part {
    Other,
    Looks,  ///< nobody looks at the threads while it hangs
  };

  /// @param name cut to 15 characters
  explicit WatchedThread(const char* name, Part part = Part::Other);
  WatchedThread(const WatchedThread&) = delete;
  WatchedThread& operator=(const WatchedThread&) = delete;
  ~WatchedThread();

  /// Lets the calling thread, which looks at the others, be watched until it ends, unless it is.
  static void WatchCaller();

  /// As AaProAllAlive. The thread that looks goes on.
  static bool AllAlive(char* name, std::size_t size);
  /// Looks at the threads that looks depend on.
  /// @param name,size as of AaProAllAlive
  /// @return false when one was at work and has not gone on since the last call
  static bool AllLetLook(char* name, std::size_t size);

 private:
  friend class Rest;

  WatchedThread();
  void Add();
  void BeginRest();
  void EndRest();
  bool Hangs();
  bool StandsStill();
  template <typename IsFound>
  static bool None(IsFound isFound, char* name, std::size_t size);

  const Part m_part;
  std::array<char, 16> m_name{};
  /// Counts beginnings and ends of rests: odd at work, even at rest. Written by the thread alone.
  std::atomic<std::uint32_t> m_steps{1};
  unsigned m_rests = 0;          ///< nested ones that the thread is in
  std::uint32_t m_seen = 0;      ///< steps at the last look
  unsigned m_looks = 0;          ///< in a row at which it had not gone on since the one before
  std::uint32_t m_seenLate = 0;  ///< steps when looks were late
  WatchedThread* m_next = nullptr;
};

/// The calling thread rests as long as this lives. Nothing more than two stores.
class Rest {
 public:
  Rest() { Begin(); }
  Rest(const Rest&) = delete;
  Rest& operator=(const Rest&) = delete;
  ~Rest() { End(); }

  /// As AaProRestBegin.
  static void Begin();
  /// As AaProRestEnd.
  static void End();
  /// The calling thread goes on, although it has no time to rest.
  static void Skip() { const Rest none; }
};

/// Waits at rest. @return what the wait returns
template <typename Wait>
auto AtRest(Wait wait) {
  const Rest rest;
  return wait();
}

}  // namespace hwapi::qis
