#include "HwmonSensor.h"

#include "Hwmon.h"
#include "LateProblem.h"
#include "ddal_error.h"

#include <utility>

namespace hwapi::ddal {

HwmonSensor::HwmonSensor(const board::HwmonTemperature& binding)
    : m_binding(binding), m_input(ThreadOfChip(binding.chip, binding.at), DeviceThread::Duration(binding.deadlineMs)) {}

int HwmonSensor::Read(int* thousandths) {
  const ReadResult result = m_input.Read(thousandths);
  if (result != ReadResult::Gone) return ErrorOfRead(result);
  if (const int error = Find(nullptr)) return error;
  return ErrorOfRead(m_input.Read(thousandths));
}

std::string HwmonSensor::Check(const std::string& name) {
  std::string problem;
  if (Find(&problem) != DDAL_OK) return problem;
  int thousandths = 0;
  const ReadResult result = m_input.Read(&thousandths);
  if (result == ReadResult::Ok) return {};
  if (IsLate(result)) return LateProblem(name, LateText(m_binding), m_binding.input);
  return "chip \"" + m_binding.chip + "\" does not tell a temperature at \"" + m_binding.input +
         "\"; check its wiring, or write optional = true";
}

int HwmonSensor::Find(std::string* problem) {
  const std::lock_guard lock(m_finding);
  FoundAttribute found = OpenTemperature(m_binding, problem != nullptr);
  if (problem != nullptr) *problem = std::move(found.problem);
  if (!found.attribute.Open()) return found.absent ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
  return m_input.Place(std::move(found.attribute)) ? DDAL_OK : DDAL_ERR_IO;
}

}  // namespace hwapi::ddal
