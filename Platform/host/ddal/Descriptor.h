/// @file
/// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace hwapi::ddal {

/// Owns a descriptor; -1 is none.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : m_fd(fd) {}
  Descriptor(Descriptor&& other) noexcept : m_fd(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    Descriptor old(std::exchange(m_fd, other.Release()));
    return *this;
  }
  ~Descriptor() {
    if (m_fd >= 0) close(m_fd);
  }

  int Get() const { return m_fd; }
  bool Open() const { return m_fd >= 0; }
  /// @return the descriptor, the caller's from now on
  int Release() { return std::exchange(m_fd, -1); }

 private:
  int m_fd;
};

}  // namespace hwapi::ddal
