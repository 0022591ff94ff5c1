/// @file
/// An attribute of a device that stays open, whichever device is behind it.
#pragma once

#include "Descriptor.h"
#include "Sysfs.h"

#include <atomic>

namespace hwapi::ddal {

/// Reads and writes may be called from every thread, also while one thread places another attribute.
class Attribute {
 public:
  /// @param thread   of its device; outlives it
  /// @param deadline of each read and write
  Attribute(DeviceThread& thread, DeviceThread::Duration deadline) : m_thread(thread), m_deadline(deadline) {}
  Attribute(const Attribute&) = delete;
  Attribute& operator=(const Attribute&) = delete;

  /// Reads the number it shows. The output is untouched unless the result is Ok.
  ReadResult Read(int* number) const;
  /// Writes a number.
  /// @return 0, or an errno value as of WriteNumber
  int Write(int number) const;

  /// Puts an attribute that was opened in the place of the one before. The caller lets no other thread do so meanwhile.
  /// @param fd none: the device has no such attribute
  /// @return whether it could be placed
  bool Place(Descriptor fd);

  /// @return whether the device was found and has the attribute
  bool Exists() const { return m_fd.load(std::memory_order_acquire) >= 0 && !m_absent; }
  /// @return whether it exists and was opened for writing
  bool Writable() const;
  /// @return the descriptor, the same for ever once there is one; -1 before
  int Get() const { return m_fd.load(std::memory_order_acquire); }

 private:
  DeviceThread& m_thread;
  const DeviceThread::Duration m_deadline;
  /// Set once to a descriptor that is never closed: a new attribute takes the place of the old one behind the same
  /// number, so that no reader can meet a descriptor that belongs to something else by now.
  std::atomic<int> m_fd{-1};
  std::atomic<bool> m_absent{false};
};

/// @return the driver's error code
int ErrorOfRead(ReadResult result);

}  // namespace hwapi::ddal
