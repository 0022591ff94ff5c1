/// @file
/// Reads and writes attributes of a device on a thread of its own: a device that does not answer keeps nobody waiting
/// longer than a deadline.
#pragma once

#include "AccessState.h"
#include "Descriptor.h"

#include <sys/types.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace hwapi::ddal {

/// The thread starts at the first access and stays. Nobody can end a thread that the kernel holds in a driver, so the
/// object is never destroyed: whoever makes one keeps it for ever. Every operation may be called from every thread;
/// those of one device take turns.
class DeviceThread {
 public:
  using Duration = std::chrono::milliseconds;
  static constexpr std::size_t kMaxSize = 256;  ///< bytes of an access

  /// @param name of the thread, a literal
  explicit DeviceThread(const char* name) : m_name(name) {}
  DeviceThread(const DeviceThread&) = delete;
  DeviceThread& operator=(const DeviceThread&) = delete;

  /// As pread and pwrite at offset 0, cut to kMaxSize bytes, and with two more errors, which no driver answers: ETIME,
  /// no answer before the deadline (it is dropped should it ever come; what is to be written may still be), and
  /// EALREADY, at once, as long as an access from before that is late has not returned. Time in which the machine has
  /// no processor for the thread does not count, up to 20 deadlines. One descriptor stays open to see that, taken when
  /// the thread starts: later there may be none.
  ssize_t Read(int fd, char* buffer, std::size_t size, Duration deadline);
  ssize_t Write(int fd, std::string_view text, Duration deadline);
  /// Reads, and closes the file also where the answer comes too late.
  ssize_t ReadOnce(Descriptor fd, char* buffer, std::size_t size, Duration deadline);

  /// @return whether an access is late and has not returned yet
  bool Hangs() const { return m_state.load(std::memory_order_acquire) == kLate; }

 private:
  static constexpr int kNotBegun = -2;
  enum class Kind { Read, ReadAndClose, Write };
  enum class Outcome { Answered, NotBegun, Late };

  static void* Main(void* self);
  [[noreturn]] void Serve();
  void RunAccess();
  bool Start();
  bool Claim();
  Outcome Post(Duration deadline);
  bool LacksProcessor() const;
  ssize_t Result(Outcome outcome, char* buffer);
  bool Change(std::uint32_t from, AccessState to);
  void Enter(AccessState state);
  void Wake();
  template <typename Condition>
  bool Await(Condition reached, Duration deadline);

  std::atomic<std::uint32_t> m_state{kIdle};
  std::atomic<int> m_stat{kNotBegun};        ///< descriptor of what the kernel says on the thread; -1: there is none
  std::atomic<std::uint32_t> m_sleepers{0};  ///< who waits for a change of the state in the kernel
  // The access and its answer: of the caller or of the thread, as the state says.
  Kind m_kind = Kind::Read;
  int m_fd = -1;
  int m_error = 0;
  std::uint32_t m_size = 0;
  ssize_t m_result = 0;
  std::array<char, kMaxSize> m_text{};
  const char* const m_name;
  bool m_started = false;  ///< whoever claimed
};

}  // namespace hwapi::ddal
