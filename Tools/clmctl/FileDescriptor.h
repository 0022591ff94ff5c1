/// @file
/// Files by their descriptors.
#pragma once

#include <unistd.h>

#include <string_view>
#include <utility>

namespace clmctl {

/// A file descriptor that is closed at the end.
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

/// @return whether all of it was written; errno says why not
bool WriteAll(int fd, std::string_view content);

}  // namespace clmctl
