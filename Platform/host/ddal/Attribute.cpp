#include "Attribute.h"

#include <fcntl.h>
#include <unistd.h>

namespace hwapi::ddal {

ReadResult Attribute::Read(int* number) const {
  if (m_absent) return ReadResult::Absent;
  const int fd = Get();
  return fd >= 0 ? ReadNumber(fd, number) : ReadResult::Gone;
}

int Attribute::Write(int number) const { return WriteNumber(Get(), number); }

bool Attribute::Place(Descriptor fd) {
  if (!fd.Open()) {
    m_absent = true;
    return true;
  }
  const int placed = m_fd.load(std::memory_order_relaxed);
  if (placed < 0) {
    m_fd.store(fd.Release(), std::memory_order_release);
  } else if (dup3(fd.Get(), placed, O_CLOEXEC) < 0) {
    return false;
  }
  m_absent = false;
  return true;
}

bool Attribute::Writable() const { return Exists() && (fcntl(Get(), F_GETFL) & O_ACCMODE) == O_RDWR; }

}  // namespace hwapi::ddal
