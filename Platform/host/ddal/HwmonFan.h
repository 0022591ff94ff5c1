/// @file
/// A fan on a chip of the kernel.
#pragma once

#include "Attribute.h"
#include "BoardDescription.h"
#include "FanNote.h"

#include <mutex>
#include <string>

namespace hwapi::ddal {

/// Keeps the fan's attributes open, finds them again when its chip comes back, and tells the fan guard how the fan was
/// found before it changes it for the first time. Every operation may be called from every thread; results as
/// ddal_fan.h says.
class HwmonFan {
 public:
  /// @param binding outlives the fan
  HwmonFan(u32 id, const board::HwmonFan& binding);
  HwmonFan(const HwmonFan&) = delete;
  HwmonFan& operator=(const HwmonFan&) = delete;

  /// Reads take one system call, of the chip's thread, while the chip is there.
  int ReadRpm(int* rpm) { return Read(m_rpm, rpm); }
  int ReadControl(int* percent);
  int ReadFrequency(int* hertz) { return Read(m_frequency, hertz); }

  int SetControl(u32 percent);
  int SetFrequency(int hertz);

  /// Finds and reads the fan once.
  /// @param name what the description calls it: a chip that is late is a line of the log, at once
  /// @return "", or what is wrong and what would be right
  std::string Check(const std::string& name);

 private:
  int Read(const Attribute& attribute, int* value);
  // The following are called with m_changing held.
  int ReadAlone(const Attribute& attribute, int* value);
  /// Places the attributes. @return 0, or a driver error code
  int Find(std::string* problem);
  /// Fills m_found with what is to be written to hand the fan back. @return 0, or a driver error code
  int RememberAsFound();
  /// Has the guard hand back @p what from now on.
  int KeepForHandBack(u32 FanRecord::*what);
  int TakeOver();

  FanDescriptors Descriptors() const { return {m_pwm.Get(), m_mode.Get(), m_frequency.Get(), m_target.Get()}; }

  const board::HwmonFan& m_binding;
  const int m_shownFull;  ///< what the chip's pwm* shows at full speed
  DeviceThread& m_thread;
  Attribute m_rpm, m_pwm, m_mode, m_frequency, m_target;
  std::mutex m_changing;  ///< held while the fan is looked for or changed; before the guard's
  FanNote m_found;        ///< as the guard has it
};

}  // namespace hwapi::ddal
