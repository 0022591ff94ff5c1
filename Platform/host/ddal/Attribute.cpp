#include "Attribute.h"

#include "ddal_error.h"

#include <fcntl.h>
#include <unistd.h>

namespace hwapi::ddal {

ReadResult Attribute::Read(int* number) const {
  if (m_absent) return ReadResult::Absent;
  const int fd = Get();
  return fd >= 0 ? ReadNumber(m_thread, fd, m_deadline, number) : ReadResult::Gone;
}

int Attribute::Write(int number) const { return WriteNumber(m_thread, Get(), m_deadline, number); }

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

int ErrorOfRead(ReadResult result) {
  switch (result) {
    case ReadResult::Ok:
      return DDAL_OK;
    case ReadResult::Absent:
      return DDAL_ERR_NOT_SUPPORTED;
    case ReadResult::Late:
      return DDAL_ERR_TIMEOUT;
    case ReadResult::Busy:
      return DDAL_ERR_PENDING;
    case ReadResult::Gone:
    case ReadResult::Failed:
      break;
  }
  return DDAL_ERR_IO;
}

}  // namespace hwapi::ddal
