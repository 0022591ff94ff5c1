/// @file
/// Reading the kernel's device tree.
#pragma once

#include <string>
#include <vector>

namespace hwapi::ddal {

/// What became of reading an attribute.
enum class ReadResult {
  Ok,
  Gone,    ///< its device was unbound: this file will never answer again
  Failed,  ///< the device did not answer, or with something else than a number
  Absent   ///< the device has no such attribute
};

/// @return root of the kernel's device tree: HWAPI_SYSFS, or /sys
const std::string& SysfsRoot();

/// Reads the number an open attribute shows in its first line, with one system call.
/// @return anything but Absent
ReadResult ReadNumber(int fd, int* number);

/// Writes a number to an open attribute, with one system call. Async-signal-safe.
/// @return 0, or an errno value
int WriteNumber(int fd, int number);

/// @return first line of a file; "" when it cannot be read
std::string ReadLine(const std::string& path);

/// @return names in a folder that begin with @p prefix, sorted; none when it cannot be read
std::vector<std::string> ListFolder(const std::string& path, const std::string& prefix);

}  // namespace hwapi::ddal
