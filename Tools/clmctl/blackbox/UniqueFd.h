/// @file
/// A file descriptor that is closed at the end.
#pragma once

#include <unistd.h>

#include <utility>

namespace clmctl {

class UniqueFd {
 public:
  explicit UniqueFd(int fd = -1) : m_fd(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~UniqueFd() {
    if (m_fd >= 0) close(m_fd);
  }

  /// @return the descriptor; negative when there is none
  int Get() const { return m_fd; }

 private:
  int m_fd;
};

}  // namespace clmctl
