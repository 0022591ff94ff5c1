/// @file
/// Ownership of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace hwapi::qis {

/// Owns one descriptor, or none (-1).
class Fd {
 public:
  Fd() = default;
  explicit Fd(int fd) : m_fd(fd) {}
  Fd(Fd&& other) noexcept : m_fd(other.Release()) {}
  Fd& operator=(Fd&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  ~Fd() { Reset(); }

  explicit operator bool() const { return m_fd >= 0; }
  int Get() const { return m_fd; }
  int Release() { return std::exchange(m_fd, -1); }
  void Reset(int fd = -1) {
    if (m_fd >= 0) {
      ::close(m_fd);
    }
    m_fd = fd;
  }

 private:
  int m_fd = -1;
};

}  // namespace hwapi::qis
