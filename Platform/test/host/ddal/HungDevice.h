/// @file
/// An attribute whose device does not answer.
#pragma once

#include <atomic>
#include <filesystem>

/// Lets reads and writes of one file block until Answer, in this process and in those forked from it later, as a driver
/// does whose device is silent: the test program has the pread and pwrite that the drivers call. One at a time; the
/// drivers' threads may still be in it when it is destroyed.
class HungDevice {
 public:
  /// From now on the file's accesses block. One of a file that does not exist makes ready for those that are made after
  /// a fork.
  /// @param working whether the accesses use the processor meanwhile: to the kernel they look as those do that the
  ///                machine leaves none
  explicit HungDevice(const std::filesystem::path& file, bool working = false);
  HungDevice(const HungDevice&) = delete;
  HungDevice& operator=(const HungDevice&) = delete;
  /// All accesses return.
  ~HungDevice() { Answer(); }

  void Answer();
  /// Waits until an access of somebody blocks.
  void AwaitAccess() const;
};
