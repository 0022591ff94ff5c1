#include "HwmonFan.h"

#include "FanGuard.h"
#include "Hwmon.h"
#include "LateProblem.h"
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

int ErrorOfWrite(int error) {
  if (error == 0) return DDAL_OK;
  if (error == ETIME) return DDAL_ERR_TIMEOUT;
  if (error == EALREADY) return DDAL_ERR_PENDING;
  return error == ENODEV ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
}

}  // namespace

HwmonFan::HwmonFan(u32 id, const board::HwmonFan& binding)
    : m_binding(binding),
      m_shownFull(ShownFullOf(binding.chip)),
      m_thread(ThreadOfChip(binding.chip, binding.at)),
      m_rpm(m_thread, DeviceThread::Duration(binding.deadlineMs)),
      m_pwm(m_thread, DeviceThread::Duration(binding.deadlineMs)),
      m_mode(m_thread, DeviceThread::Duration(binding.deadlineMs)),
      m_frequency(m_thread, DeviceThread::Duration(binding.deadlineMs)),
      m_target(m_thread, DeviceThread::Duration(binding.deadlineMs)) {
  m_found.record.fan = id;
  m_found.chip = binding.chip;
  m_found.fan = binding.fan;
  m_found.pwm = binding.pwm;
}

int HwmonFan::Read(const Attribute& attribute, int* value) {
  const ReadResult result = attribute.Read(value);
  if (result != ReadResult::Gone) return ErrorOfRead(result);
  const std::lock_guard lock(m_changing);
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
  const std::lock_guard lock(m_changing);
  int present = 0;
  if (const int error = ReadAlone(m_pwm, &present)) return error;
  if (const int error = KeepForHandBack(&FanRecord::changesControl)) return error;
  const FanGuard::Change change;
  if (!change.Allowed()) return DDAL_ERR_BUSY;
  if (const int error = TakeOver()) return error;
  return ErrorOfWrite(m_pwm.Write(Scaled(static_cast<int>(percent), kFullPercent, kFullPwm)));
}

int HwmonFan::SetFrequency(int hertz) {
  if (hertz <= 0) return DDAL_ERR_INVALID;
  const std::lock_guard lock(m_changing);
  int present = 0;
  if (const int error = ReadAlone(m_frequency, &present)) return error;
  if (!m_frequency.Writable()) return DDAL_ERR_NOT_SUPPORTED;
  if (const int error = KeepForHandBack(&FanRecord::changesFrequency)) return error;
  const FanGuard::Change change;
  if (!change.Allowed()) return DDAL_ERR_BUSY;
  return ErrorOfWrite(m_frequency.Write(hertz));
}

int HwmonFan::RememberAsFound() {
  if (m_found.record.Changes()) return DDAL_OK;
  // What could not be handed back of a process that was killed with its guard shows what that one made of it.
  if (const auto left = ReadNote(m_found.record.fan); left && left->Describes(m_binding)) {
    m_found.record.found = left->record.found;
    return DDAL_OK;
  }
  for (const auto& [attribute, index] :
       {std::pair{&m_pwm, kFanControl}, std::pair{&m_mode, kFanMode}, std::pair{&m_frequency, kFanFrequency}}) {
    int value = kNoValue;
    const ReadResult result = attribute->Read(&value);
    if (result != ReadResult::Ok && result != ReadResult::Absent) return ErrorOfRead(result);
    m_found.record.found[index] = value;
  }
  int target = kNoValue;
  m_target.Read(&target);  // a chip that does not control the speed itself just now need not tell it
  m_found.record.found[kFanTarget] = target;
  i32& control = m_found.record.found[kFanControl];
  if (control < 0 || control > m_shownFull) return DDAL_ERR_IO;
  control = Scaled(control, m_shownFull, kFullPwm);
  return DDAL_OK;
}

int HwmonFan::KeepForHandBack(u32 FanRecord::*what) {
  // Only who has the fans may believe what they show: before that, somebody else may be handing them back.
  if (const int error = FanGuard::Own().Start()) return error;
  if (const int error = RememberAsFound()) return error;
  if (m_found.record.*what != 0) return DDAL_OK;
  FanNote note = m_found;
  note.record.*what = 1;
  if (const int error = FanGuard::Own().Keep(note, Descriptors())) return error;
  m_found = std::move(note);
  return DDAL_OK;
}

int HwmonFan::TakeOver() {
  int mode = 0;
  const ReadResult result = m_mode.Read(&mode);
  switch (result) {
    case ReadResult::Absent:
      return DDAL_OK;
    case ReadResult::Ok:
      return mode == kManualMode ? DDAL_OK : ErrorOfWrite(m_mode.Write(kManualMode));
    default:
      return ErrorOfRead(result);
  }
}

int HwmonFan::Find(std::string* problem) {
  FoundFan found = OpenFan(m_binding, problem != nullptr);
  if (problem != nullptr) *problem = std::move(found.problem);
  if (!found.Complete()) return found.absent ? DDAL_ERR_NO_DEVICE : DDAL_ERR_IO;
  const bool placed = m_rpm.Place(std::move(found.rpm)) && m_pwm.Place(std::move(found.pwm)) &&
                      m_mode.Place(std::move(found.mode)) && m_frequency.Place(std::move(found.frequency)) &&
                      m_target.Place(std::move(found.target));
  if (!placed) return DDAL_ERR_IO;
  m_found.at = std::move(found.device);
  m_found.record.chip = found.chip;
  // The guard has the attributes of the chip that went away. Should it be lost, the next change tells.
  if (m_found.record.Changes()) FanGuard::Own().Keep(m_found, Descriptors());
  return DDAL_OK;
}

std::string HwmonFan::Check(const std::string& name) {
  const std::lock_guard lock(m_changing);
  std::string problem;
  if (Find(&problem) != DDAL_OK) return problem;
  int value = 0;
  for (const auto& [attribute, what] : {std::pair{&m_rpm, &m_binding.fan}, std::pair{&m_pwm, &m_binding.pwm}}) {
    const ReadResult result = attribute->Read(&value);
    if (result == ReadResult::Ok) continue;
    if (IsLate(result)) return LateProblem(name, LateText(m_binding), *what);
    return "chip \"" + m_binding.chip + "\" does not tell the value of \"" + *what +
           "\"; check its wiring, or write optional = true";
  }
  return {};
}

}  // namespace hwapi::ddal
