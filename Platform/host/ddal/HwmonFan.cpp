#include "HwmonFan.h"

#include "FanGuard.h"
#include "Hwmon.h"
#include "ddal_error.h"

#include <cerrno>
#include <string_view>
#include <utility>

namespace hwapi::ddal {
namespace {

constexpr int kFullPercent = 100;
constexpr int kFullPwm = 255;  // what drivers take for full speed, and most of them show

/// A driver whose pwm* does not show what it takes.
struct ShownScale {
  std::string_view chip;
  int full;  ///< what it shows at full speed
};
constexpr ShownScale kShownScales[] = {
    {.chip = "max31785", .full = kFullPercent},
};

int ShownFullOf(std::string_view chip) {
  for (const ShownScale& scale : kShownScales) {
    if (scale.chip == chip) return scale.full;
  }
  return kFullPwm;
}

/// Rounds to the nearest. As there are at least as many steps as per cents, a value that was set is read as it was set.
int Scaled(int value, int full, int newFull) { return (value * newFull + full / 2) / full; }

int ErrorOfRead(ReadResult result) {
  switch (result) {
    case ReadResult::Ok:
      return DDAL_OK;
    case ReadResult::Absent:
      return DDAL_ERR_NOT_SUPPORTED;
    case ReadResult::Gone:
    case ReadResult::Failed:
      break;
  }
  return DDAL_ERR_IO;
}

int ErrorOfWrite(int error) {
  if (error == 0) return DDAL_OK;
  return error == ENODEV ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
}

}  // namespace

HwmonFan::HwmonFan(u32 id, const board::HwmonFan& binding)
    : m_binding(binding), m_shownFull(ShownFullOf(binding.chip)) {
  m_found.fan = id;
}

int HwmonFan::Read(const Attribute& attribute, int* value) {
  const ReadResult result = attribute.Read(value);
  if (result != ReadResult::Gone) return ErrorOfRead(result);
  const std::lock_guard lock(FanGuard::Own().Mutex());
  return ReadAlone(attribute, value);
}

int HwmonFan::ReadAlone(const Attribute& attribute, int* value) {
  const ReadResult result = attribute.Read(value);
  if (result != ReadResult::Gone) return ErrorOfRead(result);
  if (const int error = Find(nullptr)) return error;
  return ErrorOfRead(attribute.Read(value));
}

int HwmonFan::ReadControl(int* percent) {
  int shown = 0;
  if (const int error = Read(m_pwm, &shown)) return error;
  if (shown < 0 || shown > m_shownFull) return DDAL_ERR_IO;
  *percent = Scaled(shown, m_shownFull, kFullPercent);
  return DDAL_OK;
}

int HwmonFan::SetControl(u32 percent) {
  if (percent > kFullPercent) return DDAL_ERR_INVALID;
  const std::lock_guard lock(FanGuard::Own().Mutex());
  int present = 0;
  if (const int error = ReadAlone(m_pwm, &present)) return error;
  if (const int error = KeepForHandBack(&FanRecord::changesControl)) return error;
  if (const int error = TakeOver()) return error;
  return ErrorOfWrite(m_pwm.Write(Scaled(static_cast<int>(percent), kFullPercent, kFullPwm)));
}

int HwmonFan::SetFrequency(int hertz) {
  if (hertz <= 0) return DDAL_ERR_INVALID;
  const std::lock_guard lock(FanGuard::Own().Mutex());
  int present = 0;
  if (const int error = ReadAlone(m_frequency, &present)) return error;
  if (!m_frequency.Writable()) return DDAL_ERR_NOT_SUPPORTED;
  if (const int error = KeepForHandBack(&FanRecord::changesFrequency)) return error;
  return ErrorOfWrite(m_frequency.Write(hertz));
}

int HwmonFan::RememberAsFound() {
  if (m_found.Changes()) return DDAL_OK;
  for (const auto& [attribute, index] :
       {std::pair{&m_pwm, kFanControl}, std::pair{&m_mode, kFanMode}, std::pair{&m_frequency, kFanFrequency}}) {
    int value = kNoValue;
    const ReadResult result = attribute->Read(&value);
    if (result != ReadResult::Ok && result != ReadResult::Absent) return ErrorOfRead(result);
    m_found.found[index] = value;
  }
  int target = kNoValue;
  m_target.Read(&target);  // a chip that does not control the speed itself just now need not tell it
  m_found.found[kFanTarget] = target;
  i32& control = m_found.found[kFanControl];
  if (control < 0 || control > m_shownFull) return DDAL_ERR_IO;
  control = Scaled(control, m_shownFull, kFullPwm);
  return DDAL_OK;
}

int HwmonFan::KeepForHandBack(u32 FanRecord::*what) {
  // Only who has the fans may believe what they show: before that, somebody else may be handing them back.
  if (const int error = FanGuard::Own().Start()) return error;
  if (const int error = RememberAsFound()) return error;
  if (m_found.*what != 0) return DDAL_OK;
  FanRecord record = m_found;
  record.*what = 1;
  if (const int error = FanGuard::Own().Keep(record, Descriptors())) return error;
  m_found = record;
  return DDAL_OK;
}

int HwmonFan::TakeOver() {
  int mode = 0;
  switch (m_mode.Read(&mode)) {
    case ReadResult::Absent:
      return DDAL_OK;
    case ReadResult::Ok:
      return mode == kManualMode ? DDAL_OK : ErrorOfWrite(m_mode.Write(kManualMode));
    case ReadResult::Gone:
    case ReadResult::Failed:
      break;
  }
  return DDAL_ERR_IO;
}

int HwmonFan::Find(std::string* problem) {
  FoundFan found = OpenFan(m_binding, problem != nullptr);
  if (problem != nullptr) *problem = std::move(found.problem);
  if (!found.Complete()) return found.absent ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
  const bool placed = m_rpm.Place(std::move(found.rpm)) && m_pwm.Place(std::move(found.pwm)) &&
                      m_mode.Place(std::move(found.mode)) && m_frequency.Place(std::move(found.frequency)) &&
                      m_target.Place(std::move(found.target));
  if (!placed) return DDAL_ERR_IO;
  // The guard has the attributes of the chip that went away. Should it be lost, the next change tells.
  if (m_found.Changes()) FanGuard::Own().Keep(m_found, Descriptors());
  return DDAL_OK;
}

std::string HwmonFan::Check() {
  const std::lock_guard lock(FanGuard::Own().Mutex());
  std::string problem;
  if (Find(&problem) != DDAL_OK) return problem;
  int value = 0;
  for (const auto& [attribute, what] : {std::pair{&m_rpm, &m_binding.fan}, std::pair{&m_pwm, &m_binding.pwm}}) {
    if (attribute->Read(&value) == ReadResult::Ok) continue;
    return "chip \"" + m_binding.chip + "\" does not tell the value of \"" + *what +
           "\"; check its wiring, or write optional = true";
  }
  return {};
}

}  // namespace hwapi::ddal
