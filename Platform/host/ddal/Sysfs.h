/// @file
/// Reading the kernel's device tree.
#pragma once

#include "Descriptor.h"
#include "DeviceThread.h"

#include <string>
#include <vector>

namespace hwapi::ddal {

/// What became of reading an attribute.
enum class ReadResult {
  Ok,
  Gone,    ///< its device was unbound: this file will never answer again
  Failed,  ///< the device did not answer, or with something else than a number
  Absent,  ///< the device has no such attribute
  Late,    ///< the device did not answer before the deadline
  Busy     ///< the device has not yet answered an earlier access
};

/// @return whether the device did not answer in time, now or earlier
inline bool IsLate(ReadResult result) { return result == ReadResult::Late || result == ReadResult::Busy; }

/// @return root of the kernel's device tree: HWAPI_SYSFS, or /sys
const std::string& SysfsRoot();

/// Opens a file as attributes are opened: without waiting for anybody, and nothing but a regular file.
/// @param access O_RDONLY or O_RDWR
/// @param why    out: what is wrong when none was opened; null: nobody reads it. errno says it too, EINVAL that it is
///               another kind of file
Descriptor OpenAttribute(const std::string& path, int access, std::string* why = nullptr);

/// Reads the number an open attribute shows in its first line, with one system call of the thread.
/// @return anything but Absent
ReadResult ReadNumber(DeviceThread& thread, int fd, DeviceThread::Duration deadline, int* number);

/// Writes a number to an open attribute, with one system call of the thread.
/// @return 0, or an errno value: those of DeviceThread among them
int WriteNumber(DeviceThread& thread, int fd, DeviceThread::Duration deadline, int number);

/// Writes a number to an open attribute, however long that takes. Async-signal-safe.
/// @return 0, or an errno value
int WriteNumberHere(int fd, int number);

/// @param error out: 0, or an errno value: those of DeviceThread among them; null: nobody reads it
/// @return first line of a file; "" when it cannot be read, or not within 100 ms
std::string ReadLine(const std::string& path, int* error = nullptr);

/// @param error out: 0, or an errno value; null: nobody reads it
/// @return names in a folder that begin with @p prefix, sorted; none when it cannot be read
std::vector<std::string> ListFolder(const std::string& path, const std::string& prefix, int* error = nullptr);

}  // namespace hwapi::ddal
