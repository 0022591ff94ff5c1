/// @file
/// What the processes of a board share of its clock: one record in the file "clock" of the run directory.
///
/// The file is read and written, not mapped: whoever may write it may also cut it. A record carries a check sum, by
/// which a reader notices that it read in the middle of a write, or that the file was damaged. The last good record is
/// kept then, and put back into the file. Writers hold the file's lock.
#pragma once

#include "Fd.h"

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace hwapi::qis {

/// Identity of the running kernel: the monotonic clock means nothing after the next boot. All zero where it is not
/// known: a service may see nothing of /proc but processes.
using BootId = std::array<char, 40>;

/// What a clock was made from; another board needs another one.
struct ClockOrigin {
  BootId boot{};
  std::int64_t speed = 0;
  std::int64_t startMs = 0;

  friend bool operator==(const ClockOrigin&, const ClockOrigin&) = default;
  /// @return whether a clock made from this is another one's, too. A boot that is not known is taken for the same:
  /// otherwise a process that does not know it and those that do would replace each other's clock at every start.
  bool Fits(const ClockOrigin& other) const {
    return speed == other.speed && startMs == other.startMs &&
           (boot == other.boot || boot == BootId{} || other.boot == BootId{});
  }
};

/// A clock. Times are microseconds.
struct ClockState {
  ClockOrigin origin;
  std::int64_t monotonicEpochUs = 0;
  std::int64_t boardEpochUs = 0;
  std::int64_t offsetUs = 0;
  std::int64_t passedUs = 0;  ///< since the epoch, of a clock that stands still
};

/// The file. May be used from every thread.
class ClockFile {
 public:
  /// Opens the file, and sets it up unless it has a clock of an origin that fits. When that fails, the process has a
  /// clock of its own; that is reported.
  /// @param fresh the clock at its beginning
  explicit ClockFile(const ClockState& fresh);

  /// @return the clock as it is now; one whose origin fits that of the beginning
  ClockState Read() const;
  /// Changes the clock for all processes.
  /// @return 0, else an errno value: it is as it was (ETIMEDOUT: a process that was stopped keeps it locked)
  int Change(const std::function<void(ClockState&)>& change);

  /// @return the open file; -1 when this process has a clock of its own
  int Descriptor() const { return m_file.Get(); }

 private:
  bool Load() const;
  void Restore() const;
  int Write(const ClockState& state) const;

  const ClockOrigin m_origin;  ///< as this process knows it
  Fd m_file;
  std::string m_path;             ///< for people
  mutable std::mutex m_changing;  ///< taken before m_mutex, with the lock of the file
  mutable std::mutex m_mutex;
  mutable ClockState m_state;  ///< the last good one
};

}  // namespace hwapi::qis
