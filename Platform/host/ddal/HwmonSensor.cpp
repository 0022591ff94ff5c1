#include "HwmonSensor.h"

#include "Hwmon.h"
#include "Sysfs.h"
#include "ddal_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace hwapi::ddal {

int HwmonSensor::Read(int* thousandths) {
  const int fd = m_fd.load(std::memory_order_acquire);
  if (fd >= 0) {
    const ReadResult result = ReadNumber(fd, thousandths);
    if (result == ReadResult::Ok) return DDAL_OK;
    if (result == ReadResult::Failed) return DDAL_ERR_IO;
  }
  if (const int error = Find(nullptr)) return error;
  return ReadNumber(m_fd.load(std::memory_order_acquire), thousandths) == ReadResult::Ok ? DDAL_OK : DDAL_ERR_IO;
}

std::string HwmonSensor::Check() {
  std::string problem;
  if (Find(&problem) != DDAL_OK) return problem;
  int thousandths = 0;
  if (ReadNumber(m_fd.load(std::memory_order_acquire), &thousandths) == ReadResult::Ok) return {};
  return "chip \"" + m_binding.chip + "\" does not tell a temperature at \"" + m_binding.input +
         "\"; check its wiring, or write optional = true";
}

int HwmonSensor::Find(std::string* problem) {
  const std::lock_guard lock(m_finding);
  FoundAttribute found = OpenTemperature(m_binding, problem != nullptr);
  if (problem != nullptr) *problem = std::move(found.problem);
  if (found.fd < 0) return found.absent ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
  const int fd = m_fd.load(std::memory_order_relaxed);
  if (fd < 0) {
    m_fd.store(found.fd, std::memory_order_release);
    return DDAL_OK;
  }
  const int placed = dup3(found.fd, fd, O_CLOEXEC);
  close(found.fd);
  return placed >= 0 ? DDAL_OK : DDAL_ERR_IO;
}

}  // namespace hwapi::ddal
