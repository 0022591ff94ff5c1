/// @file
/// The simulated hardware: registers in a file that the drivers and the simulator map.
#pragma once

#include "SimRegisters.h"

#include <mutex>
#include <string>

namespace hwapi::ddal {

/// The simulated hardware of this board. Every operation may be called from every thread.
class SimHardware {
 public:
  SimHardware(const SimHardware&) = delete;
  SimHardware& operator=(const SimHardware&) = delete;

  /// @return the own board's hardware, opened or created at the first call and kept for ever
  static SimHardware& Own();

  /// @return the registers; null when the file cannot be used
  SimRegisters* Registers() const { return m_registers; }
  /// @return why Registers() is null, and what to do
  const std::string& Problem() const { return m_problem; }

  /// @return whether a living process simulates; one system call
  bool Running() const;
  /// Makes this process the simulator. @return 0, or DDAL_ERR_IO (the file cannot be used, or another one simulates)
  int Start();
  /// Ends that; harmless when this process does not simulate.
  void Stop();

 private:
  SimHardware();
  void Open();
  void SetUp();
  void Refuse(const char* what, const char* why);

  std::string m_path;
  std::string m_problem;
  SimRegisters* m_registers = nullptr;
  int m_fd = -1;
  std::mutex m_starting;
  int m_simulatorFd = -1;  ///< holds the simulator's lock
};

/// @return the registers when somebody simulates; otherwise null and the driver error code in *error
SimRegisters* RunningRegisters(int* error);

/// @return registers of a simulated fan, whether somebody simulates or not; otherwise null and the driver error code in
/// *error
SimFanRegisters* FindSimFan(u32 id, int* error);

}  // namespace hwapi::ddal
